#include "ui/frmProgress/frmProgress.h"

#include <wx/evtloop.h>
#include <wx/sizer.h>

#include <algorithm>

#include "ui/common/accessible.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/host/desktop.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

using namespace std::chrono_literals;

// A worker steps far more often than a person can see or a desktop can paint.
constexpr auto kPumpInterval = 33ms;

// How long a window that the desktop does not paint is waited for.
constexpr auto kPaintLimit = 300ms;

constexpr int kWidth = 420;
constexpr int kMargin = 12;

frmProgress*& shownDialog() {
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): there is one screen.
    static frmProgress* dialog = nullptr;
    return dialog;
}

}  // namespace

frmProgress::frmProgress(wxWindow* parent)
    : wxDialog(parent, wxID_ANY, "Please wait...", wxDefaultPosition, wxDefaultSize, wxCAPTION) {
    const long oneLine = wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE;
    lblProces = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, oneLine,
                                 "lblProces");
    lblSubProcess = new wxStaticText(this, wxID_ANY, "Sub-process", wxDefaultPosition,
                                     wxDefaultSize, oneLine, "lblSubProcess");
    lblOverall = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, oneLine,
                                  "lblOverall");
    lblOverall->Hide();
    prbMain = new wxGauge(this, wxID_ANY, 100, wxDefaultPosition, wxDefaultSize,
                          wxGA_HORIZONTAL | wxGA_SMOOTH, wxDefaultValidator, "prbMain");
    setAccessibleName(*prbMain, "Progress");
    cmdCommands[0] = new wxButton(this, wxID_ANY, "&Cancel");
    layOut();
    cmdCommands[0]->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cancel(); });
    // Closing it is its owner's: Esc and the window manager only ask to cancel.
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
        if (event.CanVeto()) event.Veto();
        cancel();
    });
    Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
        if (event.GetKeyCode() == WXK_ESCAPE) {
            cancel();
        } else {
            event.Skip();
        }
    });
    listen(*this, wxEVT_PAINT, [this] { painted_ = true; });
    shownDialog() = this;
}

frmProgress::~frmProgress() {
    forget();
}

void frmProgress::forget() {
    if (shownDialog() == this) shownDialog() = nullptr;
}

void frmProgress::unload() {
    // The toolkit deletes it later, when nothing in it is at work any more.
    forget();
    takeInput(*this, false);
    Hide();
    Destroy();
}

frmProgress* frmProgress::current() {
    return shownDialog();
}

void frmProgress::layOut() {
    const int margin = scaled(*this, kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(lblProces, wxSizerFlags().Expand().Border(wxALL, margin));
    column->Add(lblSubProcess, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(lblOverall, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(prbMain, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    column->Add(cmdCommands[0], wxSizerFlags().Right().Border(wxALL, margin));
    column->SetMinSize(scaled(*this, kWidth), -1);
    SetSizerAndFit(column);
    CentreOnParent();
    cmdCommands[0]->SetFocus();
}

void frmProgress::cancel() {
    if (canCancel_) didCancel_ = true;
}

void frmProgress::showPainted() {
    Show();
    takeInput(*this, true);
    const auto limit = Time::now() + kPaintLimit;
    // A window that is only shown stays an empty frame until events run.
    while (!painted_ && Time::now() < limit) pump();
    Update();
    pump();
}

void frmProgress::setProcess(std::wstring_view text) {
    // Kept: an empty text is shown as the answer to whether it is "Working...".
    lblProces->SetLabelText(text.empty() ? wxString("False") : shownLine(text));
}

void frmProgress::setSubProcess(std::wstring_view text) {
    lblSubProcess->SetLabelText(shownLine(text));
}

void frmProgress::showProgress(int percentage, std::wstring_view message) {
    const int value = std::clamp(percentage, 0, prbMain->GetRange());
    if (prbMain->GetValue() != value) prbMain->SetValue(value);
    if (percentage % 2 == 0 || !isDue()) return;
    setSubProcess(message);
    pump();
}

void frmProgress::breathe() {
    if (isDue()) pump();
}

bool frmProgress::isDue() const {
    return Time::now() - pumped_ >= kPumpInterval;
}

void frmProgress::setOverall(std::wstring_view text) {
    lblOverall->SetLabelText(shownLine(text));
    if (lblOverall->Show(!text.empty())) Fit();
}

void frmProgress::setCanCancel(bool can) {
    canCancel_ = can;
    cmdCommands[0]->Enable(can);
}

void frmProgress::pump() {
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    // Nothing may come in while something that came in is still at work.
    if (pumping_ || loop == nullptr || loop->IsYielding()) return;
    pumping_ = true;
    loop->Yield();
    pumping_ = false;
    pumped_ = Time::now();
}

ProgressWindow::ProgressWindow() : window_(new frmProgress(frontWindow())) {}

ProgressWindow::~ProgressWindow() {
    window_->unload();
}

void ProgressWindow::show(Owner*) {
    window_->showPainted();
}

}  // namespace kestrel
