// How the window goes, whatever is open in front of it.
#include <wx/app.h>
#include <wx/evtloop.h>

#include "services/program.h"
#include "ui/common/dialogend.h"
#include "ui/frmMain/frmMain.h"
#include "ui/host/desktop.h"

namespace kestrel {
namespace {

constexpr int kLeaveMilliseconds = 50;  // between two looks at what still has to end

}  // namespace

void frmMain::closing(wxCloseEvent& event) {
    if (busy() && event.CanVeto()) {
        event.Veto();
        return;
    }
    if (event.CanVeto() && !mayLeaveBuilder()) return event.Veto();
    shutDown();
    Hide();
    closing_.begin();
    leave();
}

// A builder that was told to stop is waited for when its launcher goes.
bool frmMain::mayLeaveBuilder() {
    const auto log = redLauncher_.log();
    if (!redLauncher_.running() || log->stopping) return true;
    const Answer answer = askUser(L"The builder is still making this archive:\r\n\r\n" + log->name +
                                      L"\r\n\r\nLeave it running without its log, or stop it and "
                                      L"leave the archive unfinished?",
                                  Icon::question, Buttons::leaveStopCancel);
    if (answer == Answer::no) redLauncher_.stop();
    return answer != Answer::cancel;
}

void frmMain::leave() {
    const wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    switch (closing_.next({.yields = loop != nullptr && loop->IsYielding(),
                           .inDialog = loop != nullptr && !loop->IsMain(),
                           .dialogEnds = ending_.get() != nullptr})) {
        case Closing::Step::go:
            Destroy();
            // A window that is told to go while nothing happens goes when something does.
            wxWakeUpIdle();
            break;
        case Closing::Step::endDialog:
            endFrontDialog();
            break;
        case Closing::Step::none:
            break;
    }
}

void frmMain::endFrontDialog() {
    // One of the system's is in no list of the toolkit's.
    const bool cancelled = cancelSystemDialog();
    for (wxWindow* window : wxTopLevelWindows) {
        wxDialog* dialog = asModal(window);
        if (!cancelled && dialog != nullptr) ending_ = dialog;
    }
    if (!ending_) {
        leaving_.StartOnce(kLeaveMilliseconds);
        return;
    }
    ending_->Close(true);
    wxWakeUpIdle();
}

void frmMain::shutDown() {
    keepAll();
    std::vector<wxWindow*> others;
    for (wxWindow* window : wxTopLevelWindows) {
        if (asModal(window) != nullptr) continue;
        if (auto* other = dynamic_cast<wxTopLevelWindow*>(window);
            other != nullptr && other != this && other->IsShown()) {
            // Not what the toolkit hides for itself: the notification icon has one.
            others.push_back(window);
        }
    }
    for (wxWindow* window : others) {
        if (wxTopLevelWindows.Find(window) != nullptr) window->Close(true);
    }
    tray_->remove();
}

}  // namespace kestrel
