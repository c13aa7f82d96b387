#include "tank/build.h"

#include <gtest/gtest.h>

#include "services/errors.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

using test::RecordingHost;
using test::shown;
using Lines = std::vector<std::string>;

BuildRequest exampleRequest() {
    BuildRequest request;
    request.source = L"S";
    request.target = L"T";
    request.author = quoted(L"Me");
    request.title = quoted(L"");
    request.build = quoted(L" 1 ");
    request.copyright = quoted(L"  ");
    request.priority = 5;
    request.protectedFlag = kFlagProtected;
    return request;
}

TEST(BuildCommand, HasEveryItemInItsPlace) {
    BuildRequest request = exampleRequest();
    request.source = L"a b";
    request.target = L"c d.dsres";
    request.devFlag = kFlagDev;
    request.multiPlayerFlag = kFlagMultiPlayer;
    request.priority = -7;
    request.title = quoted(L"a \"b\" -");
    request.extra = L"-more";
    EXPECT_EQ(shown(zeltorCommandLine(request, L"z")),
              R"(z -source a b -out c d.dsres -author "Me" -copyright "" -build "1" -flagdev)"
              R"( -flagmpxfer -flagprotected -priority -7 -title "a "b" -" -more)");
    EXPECT_EQ(shown(zeltorCommandLine({}, L"")),
              " -source  -out  -author  -copyright  -build  -priority 0 -title ");
}

TEST(BuildCommand, OptionsCloseUpAndLoseADanglingDash) {
    const struct {
        std::vector<std::wstring> options;
        const char* joined;
    } cases[] = {
        {{L"a", L"", L"", L"b", L"", L"c", L""}, "a b c"},
        {{L"", L"", L"a"}, "a"},
        {{}, ""},
        {{L"a", L"-"}, "a "},
        {{L"a", L"--"}, "a -"},
        {{L"-a", L"b"}, "-a b"},
        {{L"-"}, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(shown(joinOptions(c.options)), c.joined);
}

TEST(BuildCommand, PriorityIsAnyNumberOfSixteenBits) {
    const struct {
        const wchar_t* text;
        bool number;
        int priority;
    } cases[] = {
        {L"5", true, 5},         {L" 12 ", true, 12}, {L"007", true, 7},  {L"-32768", true, -32768},
        {L"32767", true, 32767}, {L"+3", true, 3},    {L"2.5", true, 2},  {L"3.5", true, 4},
        {L"1e2", true, 100},     {L"", false, 0},     {L"  ", false, 0},  {L"five", false, 0},
        {L"5x", false, 0},       {L"1 2", false, 0},  {L"+-3", false, 0}, {L"-", false, 0},
        {L".", false, 0},        {L"inf", false, 0},  {L"nan", false, 0}, {L"0x10", false, 0},
        {L"\x0661", false, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isNumber(c.text), c.number) << shown(c.text);
        EXPECT_EQ(priorityOf(c.text), c.priority) << shown(c.text);
    }
    for (const wchar_t* text : {L"32768", L"-32769", L"99999999999999999999", L"1e999"}) {
        EXPECT_TRUE(isNumber(text));
        EXPECT_THROW(priorityOf(text), RunTimeError) << shown(text);
    }
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
    RecordingHost host;
    gProgram().settings.zeltor = L"/my dir/zeltor";
    ScriptedLauncher launcher;
    BuildRequest request = exampleRequest();
    request.extra = L"-left";
    gExecZeltor(request, launcher);
    EXPECT_EQ(launcher.started,
              (Lines{R"(/my dir/zeltor -source S -out T -author "Me" -copyright "" -build "1")"
                     R"( -flagprotected -priority 5 -title "" | /my dir/zeltor)"}));
    EXPECT_EQ(host.log, Lines{});
    EXPECT_EQ(request.extra, L"");
    launcher.result = Launcher::kStillRunning;
    gExecZeltor(request, launcher);
    launcher.result = Launcher::kRefused;
    gExecZeltor(request, launcher);
    const auto log = host.logged("ask: ");
    ASSERT_EQ(log.size(), 2U);
    EXPECT_NE(log[0].find("Error (-2147219504): App is already running! in 'gExecZeltor'"),
              std::string::npos)
        << log[0];
    EXPECT_TRUE(log[1].starts_with("ask: Cannot start 'x': no such file\\r\\n\\r\\nDo you wish"))
        << log[1];
    launcher.started.clear();
    host.files = {L"/other"};
    gExecZeltor(request, launcher);
    ASSERT_EQ(launcher.started.size(), 2U);
    EXPECT_TRUE(launcher.started[1].starts_with("/other -source S"));
}

}  // namespace
}  // namespace kestrel
