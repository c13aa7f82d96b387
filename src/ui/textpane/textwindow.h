#pragma once

#include <wx/dialog.h>

#include <string>
#include <string_view>

#include "ui/common/dialogend.h"
#include "ui/textpane/textcommands.h"

namespace kestrel {

// A window that shows a text. The caller makes it, hands it the text, and shows it modal.
class TextWindow : public wxDialog, public FileKeeper {
  public:
    // Whether the user may change the text; at first he may.
    void CanEdit(bool can) { txtView->canEdit(can); }
    // Other than 0 for tab-delimited text.
    void TextFormat(int format) { txtView->textFormat(format); }
    // The text that is shown. Setting it makes it what changes are told against.
    void TextBlock(std::wstring_view text);
    std::wstring TextBlock() const { return txtView->text(); }
    bool TextBlockChanged() const { return txtView->changed(); }

    bool Show(bool show = true) override;
    void saveFiles() override { commands_.keepDraft(); }

  protected:
    // With `share` the status bar has a panel pnlMore.
    TextWindow(wxWindow* parent, const wxString& title, const wxString& name, OpenFile openFile,
               int share = 0);

    // Puts the buttons and the status bar below `content`; the first size is in DIP.
    void layOut(wxSizer* content, wxSizer* buttons, wxSize first);

    TextCommands commands_;

  public:
    TextPane* const txtView;
    StatusPanels* const stbMain;
};

}  // namespace kestrel
