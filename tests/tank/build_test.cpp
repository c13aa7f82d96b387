#include "tank/build.h"

#include "base/paths.h"
#include "tank/buildmemory.h"

#include "support/recordinghost.h"
#include "tank/launching.h"

namespace kestrel::test {
namespace {

TEST(BuildCommand, HasEveryItemInItsPlace) {
    const BuildRequest request{.source = L"a b",
                               .target = L"c d.dsres",
                               .copyright = quoted(L"  "),
                               .build = quoted(L" 1 "),
                               .title = quoted(L"a \"b\" -"),
                               .author = quoted(L"Me"),
                               .priority = -7,
                               .devFlag = std::wstring(kFlagDev),
                               .multiPlayerFlag = std::wstring(kFlagMultiPlayer),
                               .protectedFlag = std::wstring(kFlagProtected),
                               .extra = L"-more"};
    EXPECT_EQ(shown(zeltorCommandLine(request, L"z")),
              R"(z -source a b -out c d.dsres -author "Me" -copyright "" -build "1" -flagdev)"
              R"( -flagmpxfer -flagprotected -priority -7 -title "a "b" -" -more)");
    EXPECT_EQ(zeltorWords(request),
              (std::vector<std::wstring>{L"-source", L"a b", L"-out", L"c d.dsres", L"-author",
                                         L"Me", L"-copyright", L"", L"-build", L"1", L"-flagdev",
                                         L"-flagmpxfer", L"-flagprotected", L"-priority", L"-7",
                                         L"-title", L"a \"b\" -", L"-more"}));
    EXPECT_EQ(shown(zeltorCommandLine({}, L"")),
              " -source  -out  -author  -copyright  -build  -priority 0 -title ");
}

using Build = Launching;

TEST_F(Build, StartsTheConfiguredBuilderOrAnother) {
    RecordingHost host;
    BuildRequest request;
    // Blanks would cut it in a line.
    request.source = kWindowsPaths ? L"S" : L"My Mod - Copy -x";
    request.target = target;
    request.title = L"words";
    request.author = request.copyright = request.build = quoted(L"");
    request.extra = L"-left";
    fs::copy_file(builder, folder.native(L"my builder.exe"));
    gProgram().settings.zeltor = folder.path(L"my builder.exe");
    const bool isCut = !valuesToBeCut(request, gProgram().settings.zeltor).empty();
    EXPECT_EQ(isCut, kWindowsPaths);
    gExecZeltor(request, *launcher);
    reader.emplace(launcher->log());
    // Windows hands over the line as it stands: to the program, its own name ends at the blank.
    const std::string name = sizeof(wchar_t) == 2 ? R"(<builder.exe>\n)" : "";
    EXPECT_EQ(written(), name + R"(<-source>\n<)" + shown(request.source) + R"(>\n<-out>\n<)" +
                             shown(target) +
                             R"(>\n<-author>\n<>\n<-copyright>\n<>\n<-build>\n<>\n)"
                             R"(<-priority>\n<0>\n<-title>\n<words>\n)");
    EXPECT_EQ(state(), "failed with exit code 7");
    EXPECT_EQ(request.extra, L"");
    request.title = L"wait";
    const std::wstring missing = gProgram().settings.zeltor = folder.path(L"missing");
    gExecZeltor(request, *launcher);
    host.files = {missing, builder};
    gExecZeltor(request, *launcher);
    const std::string refused = "ask: " + shown(launcher->errorText()) +
                                R"(\r\n\r\nDo you wish to choose another program? | )"
                                "Kestrel Template Browser | question | yesNo";
    gExecZeltor(request, *launcher);
    EXPECT_EQ(
        host.logged("ask: "),
        (Lines{refused, refused, refused,
               "ask: Error (-2147219504): App is already running! in 'gExecZeltor' | Kestrel | "
               "exclamation | ok"}));
    folder.put(L"archive.dsres.go", "");
    reader.emplace(launcher->log());
    EXPECT_TRUE(written().starts_with("waiting"));
}

TEST(BuildMemory, KeepsTheFieldsOfTheLastTargets) {
    RecordingHost host;
    const TempFolder folder;
    gProgram().folder = folder.path();
    const std::wstring target = L"C:\\new\\tank.dsres";
    const BuildFields fields{L"a \"b\"\t\\t", L"\r\n\u0436", L"1", L"", L"-7", true, false, true};
    const BuildFields plain{L"T", L"", L"", L"", L"", false, true, false};
    // Lines that are none, one of too few fields, and one whose values end early.
    folder.put(L"zeltor3.his", "\x01\n\tx\t\r\nold\tx\r\nodd\t\\\ta\\q\tb\tc\td\tm?\r\n");
    BuildMemory memory;
    EXPECT_FALSE(memory.find(L"old") || memory.find(L""));
    EXPECT_EQ(memory.find(L"odd"), (BuildFields{L"\\", L"aq", L"b", L"c", L"d", false, true}));
    memory.keep(target, plain);
    memory.keep(target, fields);
    memory.keep(std::wstring(40'000, L'x'), plain);
    memory.save();
    EXPECT_EQ(BuildMemory().find(target), fields);
    EXPECT_FALSE(BuildMemory().find(L"C:\\new\\tank"));
    for (int i = 0; i < 15; ++i) memory.keep(std::to_wstring(i), plain);
    memory.save();
    EXPECT_EQ(BuildMemory().find(L"0"), plain);
    EXPECT_EQ(BuildMemory().find(target), fields);
    EXPECT_FALSE(BuildMemory().find(L"odd")) << "more than 16";
    memory.keep(target, plain);
    memory.save();
    EXPECT_EQ(BuildMemory().find(target), plain);
    EXPECT_EQ(BuildMemory().find(L"14"), plain);
    EXPECT_EQ(host.logged("ask: "), Lines{});
}

}  // namespace
}  // namespace kestrel::test
