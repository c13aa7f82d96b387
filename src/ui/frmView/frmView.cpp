#include "ui/frmView/frmView.h"

#include <utility>

namespace kestrel {

frmView::frmView(wxWindow* parent, OpenFile openFile)
    : TextWindow(parent, "View Definition", "frmView", std::move(openFile)),
      cmdCommands(commands_.cmdCommands),
      buttons_(commands_.buttonRow()) {
    auto* content = new wxBoxSizer(wxVERTICAL);
    content->Add(txtView, wxSizerFlags(1).Expand());
    layOut(content, buttons_, wxSize(760, 560));
    txtView->SetFocus();
}

void frmView::Offer(const wxString& label, const wxString& tooltip, std::function<void()> action) {
    auto* button = new wxButton(this, wxID_ANY, label);
    button->SetToolTip(tooltip);
    button->MoveBeforeInTabOrder(cmdCommands[TextCommands::kScriptEditor]);
    button->Bind(wxEVT_BUTTON, [this, action = std::move(action)](wxCommandEvent&) {
        Close();
        action();
    });
    buttons_->Insert(1, button, wxSizerFlags().Expand().Border(wxLEFT, commands_.margin()));
    Layout();
}

void frmView::Draft(LeftDraft left) {
    SetTitle(shownLine(left.draft.caption));
    commands_.takeCaption();
    commands_.restore(std::move(left));
}

}  // namespace kestrel
