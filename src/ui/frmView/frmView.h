#pragma once

#include <wx/dialog.h>

#include <array>
#include <string>
#include <string_view>

#include "ui/common/dialogend.h"
#include "ui/common/strings.h"
#include "ui/common/textcommands.h"

namespace kestrel {

// Shows a text: the caller makes it, hands it the text, sets its caption and
// shows it, modal or not. One that is shown modeless destroys itself when it
// closes.
class frmView final : public wxDialog, public FileKeeper {
  public:
    frmView(wxWindow* parent, OpenFile openFile);

    // Whether the user may change the text; at first he may.
    void CanEdit(bool can) { txtView->canEdit(can); }
    // The text is that block of a file; none: it cannot be changed. The caption is set.
    void Block(const std::optional<FileBlock>& block) {
        commands_.shows(block, fromWx(GetTitle()));
    }
    // What an earlier run has left of a text, in place of text, block and caption.
    void Draft(LeftDraft left);
    // Other than 0 for tab-delimited text.
    void TextFormat(int format) { txtView->textFormat(format); }
    // The text that is shown. Setting it makes it what changes are told against.
    void TextBlock(std::wstring_view text);
    std::wstring TextBlock() const { return txtView->text(); }
    bool TextBlockChanged() const { return txtView->changed(); }

    bool Show(bool show = true) override;
    void saveFiles() override { commands_.keepDraft(); }

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
