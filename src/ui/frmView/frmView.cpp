#include "ui/frmView/frmView.h"

#include "services/errors.h"
#include "ui/common/twips.h"

namespace kestrel {
namespace {

constexpr long kStyle = wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER | wxMAXIMIZE_BOX;
constexpr int kLeastTwips = 5000;
constexpr int kFirstWidth = 760;
constexpr int kFirstHeight = 560;

}  // namespace

frmView::frmView(wxWindow* parent, OpenFile openFile)
    : wxDialog(parent, wxID_ANY, "View Definition", wxDefaultPosition, wxDefaultSize, kStyle,
               "frmView"),
      commands_(*this, std::move(openFile)),
      txtView(commands_.txtView),
      cmdCommands(commands_.cmdCommands),
      stbMain(commands_.stbMain) {
    // Esc is one of the commands' keys, on its release.
    SetEscapeId(wxID_NONE);
    layOut();
    Bind(wxEVT_CLOSE_WINDOW, &frmView::closing, this);
    txtView->SetFocus();
}

void frmView::layOut() {
    const int margin = commands_.margin();
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(txtView, wxSizerFlags(1).Expand().Border(wxALL, margin));
    column->Add(commands_.buttonRow(),
                wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(stbMain, wxSizerFlags().Expand());
    SetSizer(column);
    SetMinSize(wxSize(fromTwips(*this, kLeastTwips), fromTwips(*this, kLeastTwips)));
    SetSize(wxSize(scaled(*this, kFirstWidth), scaled(*this, kFirstHeight)));
    CentreOnParent();
}

void frmView::TextBlock(std::wstring_view text) {
    guarded(L"TextBlock", [&] { txtView->setText(text); });
    commands_.refresh();
}

void frmView::Draft(LeftDraft left) {
    SetTitle(shownLine(left.draft.caption));
    commands_.takeCaption();
    commands_.restore(std::move(left));
}

bool frmView::Show(bool show) {
    if (show) commands_.takeCaption();
    return wxDialog::Show(show);
}

void frmView::closing(wxCloseEvent& event) {
    if (!commands_.mayClose(event.CanVeto())) return event.Veto();
    endDialog(*this);
}

}  // namespace kestrel
