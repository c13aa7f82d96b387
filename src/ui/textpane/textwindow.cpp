#include "ui/textpane/textwindow.h"

#include <algorithm>
#include <utility>

#include "services/guard.h"
#include "ui/common/twips.h"

namespace kestrel {
namespace {

constexpr long kStyle = wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER | wxMAXIMIZE_BOX;
constexpr int kLeastTwips = 5000;

}  // namespace

TextWindow::TextWindow(wxWindow* parent, const wxString& title, const wxString& name,
                       OpenFile openFile, int share)
    : wxDialog(parent, wxID_ANY, title, wxDefaultPosition, wxDefaultSize, kStyle, name),
      commands_(*this, std::move(openFile), share),
      txtView(commands_.txtView),
      stbMain(commands_.stbMain) {
    // Esc is one of the commands' keys, on its release.
    SetEscapeId(wxID_NONE);
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
        if (!commands_.mayClose(event.CanVeto())) return event.Veto();
        endDialog(*this);
    });
}

void TextWindow::layOut(wxSizer* content, wxSizer* buttons, wxSize first) {
    const int margin = commands_.margin();
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(content, wxSizerFlags(1).Expand().Border(wxALL, margin));
    column->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(stbMain, wxSizerFlags().Expand());
    SetSizer(column);
    const int least = fromTwips(*this, kLeastTwips);
    SetMinSize(wxSize(std::max(least, buttons->CalcMin().x + 2 * margin), least));
    SetSize(scaled(*this, first.x), scaled(*this, first.y));
    CentreOnParent();
}

void TextWindow::TextBlock(std::wstring_view text) {
    guarded(L"TextBlock", [&] { txtView->setText(text); });
    commands_.refresh();
}

bool TextWindow::Show(bool show) {
    if (show) commands_.takeCaption();
    return wxDialog::Show(show);
}

}  // namespace kestrel
