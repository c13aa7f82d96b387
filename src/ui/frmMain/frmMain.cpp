#include "ui/frmMain/frmMain.h"

#include <wx/app.h>
#include <wx/dnd.h>
#include <wx/stdpaths.h>

#include "base/paths.h"
#include "base/text.h"
#include "gas/gasnames.h"
#include "services/histories.h"
#include "services/program.h"
#include "services/settings.h"
#include "system/filesystem.h"
#include "ui/common/dialogend.h"
#include "ui/common/listen.h"
#include "ui/common/mousecapture.h"
#include "ui/common/strings.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/host/desktop.h"
#include "ui/icons/icons.h"
#include "view/browse.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kHistoryFile = L"info.his";

// Opens a dropped `.gas` file.
class GasDropTarget final : public wxFileDropTarget {
  public:
    explicit GasDropTarget(frmMain& window) : window_(window) {}

    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& files) override {
        for (const wxString& file : files) {
            if (!isGasName(fromWx(file))) continue;
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
              wxDefaultSize, wxDEFAULT_FRAME_STYLE, "frmMain"),
      tray_(makeTrayIcon()),
      // Esc closes its open list, or the window.
      released_(
          *this,
          [this](const KeyPress& key) { return key.code == WXK_ESCAPE && !cboHistory->isOpen(); },
          [this](const KeyPress&) { run(mainCommand(Command::Place::button, "Done")); }) {
    SetIcons(programIcon());
    buildControls();
    buildToolBar();
    buildStatusBar();
    buildMenus();
    bindBrowsing();
    bindContextMenus();
    bindWindow();
    cmdCommands[kTest]->Hide();
    refreshCommands();
}

frmMain::~frmMain() {
    tray_->remove();
    releaseMouse(*this);
    // The lists ask this window for their texts until they are gone.
    DestroyChildren();
}

void frmMain::start(const std::wstring& commandFile) {
    gReadSettings();
    showToolCaptions();
    gLoadHistory(*cboHistory, kHistoryFile);
    loadLayout();
    Show();
    gProgram().lastFolder = fromWx(wxStandardPaths::Get().GetDocumentsDir());
    if (commandFile.empty()) {
        cboHistory->SetFocus();
    } else {
        cboHistory->setText(commandFile);
        historyChanged();
        reload();
    }
    CallAfter([this] { offerDrafts(); });
}

void frmMain::keepAll() {
    gSaveHistory(*cboHistory, kHistoryFile);
    gWriteSettings();
    saveLayout();
    for (wxWindow* window : wxTopLevelWindows) {
        if (auto* keeper = dynamic_cast<FileKeeper*>(window)) keeper->saveFiles();
    }
}

void frmMain::bindWindow() {
    SetDropTarget(new GasDropTarget(*this));
    Bind(wxEVT_CLOSE_WINDOW, &frmMain::closing, this);
    listen(*this, wxEVT_IDLE, [this] { leave(); });
    leaving_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { leave(); });
    Bind(wxEVT_CHAR_HOOK, &frmMain::keyPressed, this);
    listen(*this, wxEVT_SYS_COLOUR_CHANGED, [this] { refreshIcons(); });
    listen(*this, wxEVT_ICONIZE,
           [this](const wxIconizeEvent& event) { iconized(event.IsIconized()); });
    // A window that comes back gives the keyboard to its first control, until it is active.
    listen(*this, wxEVT_ACTIVATE, [this](const wxActivateEvent& event) {
        if (!event.GetActive()) return;
        if (returning_) {
            CallAfter([this] {
                if (returning_) returning_->SetFocus();
                returning_ = nullptr;
            });
        }
        frmProgress* progress = frmProgress::current();
        if (progress != nullptr && gProgram().progress != nullptr) progress->Raise();
    });
    listen(*this, wxEVT_CHILD_FOCUS, [this](const wxChildFocusEvent& event) {
        // The toolkit takes the keyboard from a window that goes.
        if (IsShown() && !IsIconized()) keyboard_ = event.GetWindow();
    });
    listen(*this, wxEVT_MOVE, [this] { keepPlace(); });
    listen(*this, wxEVT_SIZE, [this] { keepPlace(); });
    cboHistory->onChange = [this] { historyChanged(); };
    cboHistory->onChoose = [this] { reload(); };
    cboHistory->onEnter = [this] { reload(); };
    tray_->onShown = [this] {
        if (IsIconized()) Hide();
    };
    // Nothing else would bring it back.
    tray_->onLost = [this] {
        if (!IsShown() && !closing_.begun()) restore();
    };
    tray_->onRestore = [this] { restore(); };
    tray_->onMenu = [this] { showTrayMenu(); };
}

void frmMain::keepPlace() {
    if (!IsMaximized() && !IsIconized()) placed_ = GetRect();
}

void frmMain::historyChanged() {
    cmdCommands[kReload]->Enable(!cboHistory->isBlank());
}

bool frmMain::reload() {
    const std::wstring text = cboHistory->text();
    const std::wstring_view path = trim(text);
    return !path.empty() && openFile(std::wstring(path));
}

// Where the next file is likely to be.
std::wstring frmMain::startOfPickers() const {
    if (isOpen()) return std::wstring(folderOf(document_.path));
    const std::wstring text = cboHistory->text();
    const std::wstring_view typed = trim(text);
    if (filesystem::isFolder(typed)) return std::wstring(typed);
    if (filesystem::isFolder(folderOf(typed))) return std::wstring(folderOf(typed));
    if (cboHistory->count() > 0 && filesystem::isFolder(folderOf(cboHistory->at(0)))) {
        return std::wstring(folderOf(cboHistory->at(0)));
    }
    return {};
}

bool frmMain::busy() const {
    return closing_.begun() || gProgram().progress != nullptr;
}

// A dialog in front could not come back with a window that hides. The two go and come
// back together.
void frmMain::iconized(bool now) {
    bool inFront = systemDialogIsOpen();
    for (wxWindow* window : wxTopLevelWindows) {
        wxDialog* dialog = asModal(window);
        inFront |= dialog != nullptr;
        if (dialog != nullptr && !now) dialog->Iconize(false);
    }
    if (!now) restoreSystemDialog();
    if (now && !inFront && !busy()) tray_->add(GetIcon(), GetTitle());
}

bool frmMain::restore() {
    // A double click on the icon says it twice.
    if (!IsShown() || IsIconized()) returning_ = keyboard_;
    // Whatever it says of itself: hiding made it forget that it is minimised.
    Iconize(false);
    Show();
    Raise();
    return true;
}

void frmMain::showTrayMenu() {
    const std::unique_ptr<wxMenu> menu(makeMenu(mainMenus().front().items));
    tray_->popUp(*this, *menu);
}

}  // namespace kestrel
