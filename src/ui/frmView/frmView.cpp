#include "ui/frmView/frmView.h"

#include <utility>

namespace kestrel {

frmView::frmView(wxWindow* parent, OpenFile openFile)
    : TextWindow(parent, "View Definition", "frmView", std::move(openFile)),
      cmdCommands(commands_.cmdCommands) {
    auto* content = new wxBoxSizer(wxVERTICAL);
    content->Add(txtView, wxSizerFlags(1).Expand());
    layOut(content, commands_.buttonRow(), wxSize(760, 560));
    txtView->SetFocus();
}

void frmView::Draft(LeftDraft left) {
    SetTitle(shownLine(left.draft.caption));
    commands_.takeCaption();
    commands_.restore(std::move(left));
}

}  // namespace kestrel
