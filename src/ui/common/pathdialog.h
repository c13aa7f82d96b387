#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ui/common/combo.h"
#include "ui/common/dialogend.h"
#include "ui/common/releasedkeys.h"

namespace kestrel {

// A modal dialog around paths that are typed, picked and remembered.
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
    // A row for a path: a label with `text`, a box as addPathBox() makes it, and a button
    // that picks one.
    struct PathRow {
        wxStaticText*& label;
        HistoryCombo*& box;
        wxButton*& picker;
        const char* text;
        const char* name;
        std::wstring_view history;
        const char* pickerName;
    };
    // A frame around such rows.
    wxSizer* addPaths(wxStaticBox*& frame, std::initializer_list<PathRow> rows);
    // A frame for what may be left out, and a grid of two columns for it.
    wxStaticBoxSizer* addOptional(wxStaticBox*& frame);
    wxFlexGridSizer* addGrid(int columns) const;
    // A label with `text` in `labels`, and behind it in `row` a text box.
    static wxTextCtrl* addText(wxSizer& labels, wxSizer& row, wxStaticText*& label,
                               wxWindow* parent, const wxString& text, const wxString& name,
                               const wxSizerFlags& place = wxSizerFlags().CentreVertical());
    // A link, which may be null, and buttons at the other end of the row.
    wxSizer* addButtons(wxWindow* link, std::initializer_list<wxButton*> buttons) const;
    // The labels stand below each other as wide as the widest of them.
    static void alignLabels(std::span<wxStaticText* const> labels);

    static constexpr int kMargin = 12;  // DIP
    static constexpr int kGap = 6;

    // Puts what was chosen into the box and its history; an empty text is no choice.
    void choose(HistoryCombo& box, const std::wstring& text);
    // Asks for a folder, from the one in the box on.
    void chooseFolder(HistoryCombo& box, std::wstring_view title);
    // False for a source that is no folder, which is told, and for a target that is there and
    // that the user wants to keep. An empty target is none.
    static bool mayMake(const std::wstring& source, const std::wstring& target);

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
