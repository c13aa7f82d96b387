#pragma once

#include <array>
#include <functional>
#include <optional>

#include "ui/common/strings.h"
#include "ui/textpane/textwindow.h"

namespace kestrel {

// Shows a text. The caller sets the caption before it is shown.
class frmView final : public TextWindow {
  public:
    frmView(wxWindow* parent, OpenFile openFile);

    // The text is that block of a file; none: it cannot be changed. The caption is set.
    void Block(const std::optional<FileBlock>& block) {
        commands_.shows(block, fromWx(GetTitle()));
    }
    // Gives the window one more button, which closes it and then does `action`.
    void Offer(const wxString& label, const wxString& tooltip, std::function<void()> action);
    // What an earlier run has left of a text, in place of text, block and caption.
    void Draft(LeftDraft left);

    const std::array<wxButton*, TextCommands::kButtons> cmdCommands;

  private:
    wxSizer* const buttons_;
};

}  // namespace kestrel
