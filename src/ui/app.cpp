#include "ui/app.h"

#include <wx/log.h>
#include <wx/uilocale.h>

#include "services/commandfile.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/process.h"
#include "ui/common/session.h"
#include "ui/common/strings.h"
#include "ui/common/style.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel {
namespace {

// The file of the command line as an absolute path, before anything can change
// the current folder; empty when there is none.
std::wstring commandFile(const wxArrayString& arguments) {
    std::vector<std::wstring> words;
    for (std::size_t i = 1; i < arguments.size(); ++i) words.push_back(fromWx(arguments[i]));
    const std::optional<std::wstring> file = gvarCommandFile(words);
    return file ? filesystem::absolutePath(*file) : std::wstring();
}

}  // namespace

bool App::OnInit() {
    started() = true;
    wxLog::EnableLogging(true);
    settleProcess();
    // The program has no options, so the toolkit reads none of its own.
    const std::wstring file = commandFile(argv.GetArguments());
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
