#include "ui/app.h"

#include <wx/log.h>
#include <wx/uilocale.h>

#include "services/files.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/codepage.h"
#include "system/filesystem.h"
#include "system/plainpath.h"
#include "system/process.h"
#include "ui/common/strings.h"
#include "ui/common/style.h"
#include "ui/frmMain/frmMain.h"
#include "ui/host/session.h"

namespace kestrel {
bool App::OnInit() {
    started() = true;
    wxLog::EnableLogging(true);
    settleProcess();
    // Made absolute before anything can change the current folder.
    const std::optional<std::wstring> named = commandFile();
    const std::wstring file = named ? filesystem::absolutePath(plainPath(*named)) : std::wstring();
    const std::wstring noSuchPage = settleCodePage();
    SetAppName("kestrel");
    SetAppDisplayName(toWx(gProgram().version.title));
    SetClassName("kestrel");
    wxUILocale::UseDefault();
    settleStyle();
    gProgram().folder = chooseProgramFolder();
    removeOldTempFiles();
    gProgram().host = host_.interfaces();
    auto* window = new frmMain;
    SetTopWindow(window);
    settleSize(*window);
    const wxWeakRef<frmMain> main(window);
    watchSession({[main] {
                      if (main) main->keepAll();
                  },
                  [main] {
                      if (main) main->Close(true);
                  }});
    if (!noSuchPage.empty()) tellUser(noSuchPage, Icon::exclamation);
    window->start(file);
    return true;
}

int App::OnExit() {
    host_.clipboard.keep();
    return wxApp::OnExit();
}

bool App::OnExceptionInMainLoop() {
    reportCurrentException(gProgram().routine);
    return true;
}

}  // namespace kestrel
