#include "ui/frmMain/frmMain.h"

#include <wx/app.h>
#include <wx/dnd.h>
#include <wx/evtloop.h>

#include "gas/browse.h"
#include "services/histories.h"
#include "services/program.h"
#include "services/settings.h"
#include "services/text.h"
#include "ui/common/dialogend.h"
#include "ui/common/mousecapture.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/icons/icons.h"

namespace kestrel {
namespace {

constexpr int kWidthTwips = 9000;
constexpr int kHeightTwips = 6250;
constexpr std::wstring_view kHistoryFile = L"info.his";

// The window as a dialog that is shown modal; null when it is none.
wxDialog* asModal(wxWindow* window) {
    auto* dialog = dynamic_cast<wxDialog*>(window);
    return dialog != nullptr && dialog->IsModal() ? dialog : nullptr;
}

// Opens a dropped `.gas` file.
class GasDropTarget final : public wxFileDropTarget {
  public:
    explicit GasDropTarget(frmMain& window) : window_(window) {}

    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& files) override {
        for (const wxString& file : files) {
            if (!file.Lower().EndsWith(".gas")) continue;
            // Opened after the drop has ended, so that a message does not hold up
            // the program that the file came from.
            window_.CallAfter([&window = window_, file] { window.openFile(fromWx(file)); });
            return true;
        }
        return false;
    }

  private:
    frmMain& window_;
};

}  // namespace

frmMain::frmMain()
    : wxFrame(nullptr, wxID_ANY, toWx(mainCaption(gProgram().version)), wxDefaultPosition,
              wxDefaultSize, wxDEFAULT_FRAME_STYLE, "frmMain") {
    SetIcons(programIcon());
    buildMenu();
    buildToolBar();
    buildControls();
    buildStatusBar();
    bindBrowsing();
    bindWindow();
    cmdCommands[kTest]->Hide();
    const wxSize size(fromTwips(*this, kWidthTwips), fromTwips(*this, kHeightTwips));
    SetMinSize(size);
    SetSize(size);
    tray_ = std::make_unique<TrayIcon>([this] { restore(); }, [this] { return makeFileMenu(); });
    historyChanged();
}

frmMain::~frmMain() {
    tray_->RemoveIcon();
    releaseMouse(*this);
    // The lists ask this window for their texts until they are gone.
    DestroyChildren();
}

void frmMain::start(const std::wstring& commandFile) {
    gReadSettings();
    showToolCaptions();
    gLoadHistory(*cboHistory, kHistoryFile);
    if (commandFile.empty()) {
        cboHistory->SetFocus();
    } else {
        cboHistory->setText(commandFile);
        historyChanged();
        reload();
        lvwTemplates->SetFocus();
    }
}

void frmMain::buildMenu() {
    auto* bar = new wxMenuBar;
    mnuFile = makeFileMenu();
    bar->Append(mnuFile, "&File");
    SetMenuBar(bar);
}

void frmMain::bindWindow() {
    SetDropTarget(new GasDropTarget(*this));
    Bind(wxEVT_CLOSE_WINDOW, &frmMain::closing, this);
    Bind(wxEVT_IDLE, [this](wxIdleEvent& event) {
        leave();
        event.Skip();
    });
    Bind(wxEVT_CHAR_HOOK, &frmMain::keyPressed, this);
    Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
        refreshIcons();
        event.Skip();
    });
    Bind(wxEVT_ICONIZE, [this](wxIconizeEvent& event) {
        iconized(event.IsIconized());
        event.Skip();
    });
    Bind(wxEVT_ACTIVATE, [](wxActivateEvent& event) {
        frmProgress* progress = frmProgress::current();
        if (event.GetActive() && progress != nullptr && gProgram().progressShowing) {
            progress->Raise();
        }
        event.Skip();
    });
    cboHistory->onChange = [this] { historyChanged(); };
    cboHistory->onChoose = [this] { reload(); };
    cboHistory->onEnter = [this] { reload(); };
}

void frmMain::historyChanged() {
    cmdCommands[kReload]->Enable(!trim(cboHistory->text()).empty());
}

bool frmMain::reload() {
    const std::wstring text = cboHistory->text();
    const std::wstring_view path = trim(text);
    return !path.empty() && openFile(std::wstring(path));
}

bool frmMain::busy() const {
    return left_ || gProgram().progressShowing;
}

void frmMain::iconized(bool now) {
    if (!now || busy()) return;
    // Without an icon to bring it back the window must not vanish.
    if (tray_->add(GetIcon(), GetTitle())) Hide();
}

void frmMain::restore() {
    if (IsIconized()) Iconize(false);
    Show();
    Raise();
}

void frmMain::closing(wxCloseEvent& event) {
    if (busy() && event.CanVeto()) {
        event.Veto();
        return;
    }
    shutDown();
    Hide();
    left_ = true;
    leave();
}

// Logging out closes the window in the midst of anything. Nothing of it may be at work
// any more when it goes: no dialog, and nothing that shows its progress.
void frmMain::leave() {
    if (!left_) return;
    const wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    if (loop != nullptr && loop->IsYielding()) return;
    if (loop == nullptr || loop->IsMain()) {
        Destroy();
    } else if (!ending_) {
        endFrontDialog();
    }
}

// Dialogs end one by one: the toolkit leaves one for ever that was told to end behind
// another. They are gone soon after their end.
void frmMain::endFrontDialog() {
    for (wxWindow* window : wxTopLevelWindows) {
        if (wxDialog* dialog = asModal(window)) ending_ = dialog;
    }
    if (!ending_) return;
    ending_->Close(true);
    wxWakeUpIdle();
}

void frmMain::shutDown() {
    gSaveHistory(*cboHistory, kHistoryFile);
    gWriteSettings();
    std::vector<wxWindow*> others;
    for (wxWindow* window : wxTopLevelWindows) {
        if (wxDialog* dialog = asModal(window)) {
            if (auto* keeper = dynamic_cast<FileKeeper*>(dialog)) keeper->saveFiles();
        } else if (window != this) {
            others.push_back(window);
        }
    }
    for (wxWindow* window : others) {
        if (wxTopLevelWindows.Find(window) != nullptr) window->Close(true);
    }
    tray_->RemoveIcon();
}

}  // namespace kestrel
