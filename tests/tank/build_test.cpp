#include "tank/build.h"

#include <gtest/gtest.h>

#include "services/errors.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

using test::shown;
using Lines = std::vector<std::string>;

TEST(BuildCommand, HasEveryItemInItsPlace) {
    BuildRequest request;
    request.source = L"a b";
    request.target = L"c d.dsres";
    request.author = quoted(L"Me");
    request.copyright = quoted(L"  ");
    request.build = quoted(L" 1 ");
    request.title = quoted(L"a \"b\" -");
    request.priority = -7;
    request.protectedFlag = kFlagProtected;
    request.devFlag = kFlagDev;
    request.multiPlayerFlag = kFlagMultiPlayer;
    request.extra = L"-more";
    EXPECT_EQ(shown(zeltorCommandLine(request, L"z")),
              R"(z -source a b -out c d.dsres -author "Me" -copyright "" -build "1" -flagdev)"
              R"( -flagmpxfer -flagprotected -priority -7 -title "a "b" -" -more)");
    EXPECT_EQ(shown(zeltorCommandLine({}, L"")),
              " -source  -out  -author  -copyright  -build  -priority 0 -title ");
}

class ScriptedLauncher final : public Launcher {
  public:
    Result start(std::wstring_view commandLine, std::wstring_view configured) override {
        started.push_back(shown(commandLine) + " | " + shown(configured));
        return result;
    }
    std::wstring errorText() const override { return L"Cannot start 'x': no such file"; }
    ProgramOutput poll() override { return {}; }

    Result result = kStarted;
    Lines started;
};

TEST(Build, StartsTheConfiguredBuilderOrReportsWhatKeepsItFromStarting) {
    test::RecordingHost host;
    gProgram().settings.zeltor = L"/my dir/zeltor";
    ScriptedLauncher launcher;
    BuildRequest request;
    request.source = L"S";
    request.extra = L"-left";
    const std::string line = " -source S -out  -author  -copyright  -build  -priority 0 -title ";
    const std::string mine = "/my dir/zeltor" + line + " | /my dir/zeltor";
    gExecZeltor(request, launcher);
    EXPECT_EQ(request.extra, L"");
    launcher.result = Launcher::kStillRunning;
    gExecZeltor(request, launcher);
    launcher.result = Launcher::kRefused;
    gExecZeltor(request, launcher);
    host.files = {L"/other"};
    gExecZeltor(request, launcher);
    EXPECT_EQ(launcher.started, (Lines{mine, mine, mine, mine, "/other" + line + " | /other"}));
    const std::string refused =
        R"(ask: Cannot start 'x': no such file\r\n\r\nDo you wish to choose another program? | )"
        "Kestrel Template Browser | question | yesNo";
    EXPECT_EQ(
        host.logged("ask: "),
        (Lines{"ask: Error (-2147219504): App is already running! in 'gExecZeltor' | Kestrel | "
               "exclamation | ok",
               refused, refused, refused}));
}

}  // namespace
}  // namespace kestrel
