#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ui/common/combo.h"
#include "ui/common/dialogend.h"
#include "ui/common/releasedkeys.h"

namespace kestrel {

// A dialog, modal as a rule, around paths that are typed, picked and remembered.
// It grows in width alone, closes when Esc is let go but not while something works, and
// is minimised with the main window.
class PathDialog : public wxDialog, public FileKeeper {
  public:
    void saveFiles() override;

  protected:
    PathDialog(wxWindow* parent, const wxString& title, const wxString& name);

    // What the paths allow is to be enabled: after each change, and each command.
    virtual void pathsChanged() = 0;
    // Enter was pressed in a path box.
    virtual void entered() = 0;

    // A box with the history of the file `history`, written back when the dialog
    // closes; `spoken` is what assistive programs call it.
    HistoryCombo* addPathBox(wxWindow* parent, const wxString& name, const wxString& spoken,
                             std::wstring_view history);
    struct PathRow {
        wxStaticText*& label;
        HistoryCombo*& box;
        wxButton*& picker;
    };
    // A row of a grid of three columns for a path: a label with `text`, a box as
    // addPathBox() makes it, and a button that picks one.
    void addPathRow(wxFlexGridSizer& grid, wxWindow* parent, const PathRow& row,
                    const wxString& text, const wxString& name, std::wstring_view history,
                    const wxString& pickerName);
    // Puts what was chosen into the box and its history; an empty text is no choice.
    void choose(HistoryCombo& box, const std::wstring& text);

    // Lets a press of the button do `command`, whose failures are reported.
    void onPress(wxButton& button, std::function<void()> command);
    // Does it as the button would, if that can be pressed.
    void press(wxButton& button);

    // Offers the files and folders that are dropped on the dialog to `takes`, which
    // tells whether it wants that one.
    void acceptDrops(const std::function<bool(const std::wstring& path)>& takes);

    // Gives the dialog its controls and its first size; `width` in DIP.
    void fitTo(wxSizer* column, int width);

  private:
    void keepHeight();
    void keyPressed(wxKeyEvent& event);
    void closing(wxCloseEvent& event);
    bool listIsOpen() const;

    std::vector<std::pair<HistoryCombo*, std::wstring_view>> boxes_;
    bool unsaved_ = true;
    ReleasedKeys released_;
};

}  // namespace kestrel
