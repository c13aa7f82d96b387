#pragma once

#include <wx/dialog.h>

#include <array>
#include <string>
#include <string_view>

#include "ui/common/textcommands.h"

namespace kestrel {

// Shows a text: the caller makes it, hands it the text, sets its caption and
// shows it, modal or not. One that is shown modeless destroys itself when it
// closes.
class frmView final : public wxDialog {
  public:
    frmView(wxWindow* parent, OpenFile openFile);

    // Whether the user may change the text; at first he may.
    void CanEdit(bool can) { txtView->canEdit(can); }
    // The text is that block of a file; none: it cannot be changed.
    void Block(const std::optional<FileBlock>& block) { commands_.shows(block); }
    // Other than 0 for tab-delimited text.
    void TextFormat(int format) { txtView->textFormat(format); }
    // The text that is shown. Setting it makes it what changes are told against.
    void TextBlock(std::wstring_view text);
    std::wstring TextBlock() const { return txtView->text(); }
    bool TextBlockChanged() const { return txtView->changed(); }

    bool Show(bool show = true) override;

  private:
    void layOut();
    void closing(wxCloseEvent& event);

    TextCommands commands_;

  public:
    TextPane* const txtView;
    const std::array<wxButton*, TextCommands::kButtons> cmdCommands;
    StatusPanels* const stbMain;
};

}  // namespace kestrel
