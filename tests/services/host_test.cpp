#include <stdexcept>

#include "services/fixture.h"
#include "services/guard.h"
#include "services/pickers.h"
#include "services/progress.h"
#include "services/shell.h"
#include "services/tools.h"
#include "system/process.h"

namespace kestrel::test {
namespace {

class Hosts : public ToldServices {
  protected:
    Settings& settings = gProgram().settings;
};

TEST_F(Hosts, NobodyToAskAgreesToNothing) {
    tellUser(L"Done.", Icon::information);
    gProgram().host = {};
    tellUser(L"Done.", Icon::information);
    EXPECT_EQ(promptUser(L"Which?", L"Title", L"before"), L"");
    const std::pair<Buttons, Answer> cases[] = {
        {Buttons::ok, Answer::ok},
        {Buttons::okCancel, Answer::cancel},
        {Buttons::yesNo, Answer::no},
        {Buttons::yesNoCancel, Answer::cancel},
        {Buttons::noYes, Answer::no},
        {Buttons::openDiscardLater, Answer::cancel},
        {Buttons::leaveStopCancel, Answer::cancel},
    };
    for (const auto& [buttons, answer] : cases) {
        EXPECT_EQ(askUser(L"?", Icon::question, buttons), answer);
    }
}

TEST_F(Hosts, AGuardReportsOnceAndReturnsADefault) {
    const std::pair<std::function<int()>, std::string> cases[] = {
        {[]() -> int { throw RunTimeError(kDiskFull, L"Cannot write 'caf\u00E9'"); },
         "Error (61): Cannot write 'caf\xC3\xA9'"},
        {[]() -> int { throw std::bad_alloc(); }, "Error (7): Out of memory"},
        {[]() -> int { throw std::length_error("long"); }, "Error (7): Out of memory"},
        {[]() -> int { throw 3; }, "Error (51): Internal error"},
        {[]() -> int {
             guarded(L"gInner", [] {});
             throw std::runtime_error("odd state");
         },
         "Error (51): odd state"},
    };
    reportError(5, L"What", L"Source");
    EXPECT_EQ(told(), Lines{"ask: Error (5): What in 'Source' | Kestrel | exclamation | ok"});
    for (const auto& [body, report] : cases) {
        EXPECT_EQ(guarded(L"gTried", body), 0);
        EXPECT_EQ(told(), Lines{"ask: " + report + " in 'gTried' | Kestrel | exclamation | ok"});
    }
    EXPECT_EQ(guarded(L"gTried", [] { return 9; }), 9);
    gProgram().host = {};
    EXPECT_EQ(guarded(L"gTried", cases[0].first), 0) << "nobody to tell";
}

TEST_F(Hosts, ProgressEndsWhenItsOwnerFailsAndAnInnerOneLeavesTheOuters) {
    class Failing final : public Owner {
      public:
        void enable(bool) override { throw 1; }
        void focus() override { ++focused; }
        int focused = 0;
    } owner;
    EXPECT_THROW(ProgressScope(nullptr, &owner, L"Work"), int);
    EXPECT_EQ(owner.focused, 1);
    EXPECT_EQ(host.liveDialogs, 0U);
    EXPECT_EQ(gProgram().progress, nullptr);
    const ProgressScope outer(nullptr, nullptr, L"Outer");
    ProgressScope(nullptr, nullptr, L"Inner");
    EXPECT_NE(gProgram().progress, nullptr);
    gProgram().host = {};
    ProgressScope scope(nullptr, nullptr, L"Work");
    scope.process(L"More");
    scope.show(1, L"one");
    scope.overall(L"one");
    EXPECT_TRUE(scope.goesOn());
    EXPECT_EQ(told().size(), 8U);
    // Halves go to the even neighbour.
    const std::array<std::size_t, 3> cases[] = {{0, 0, 0},  {1, 3, 33}, {2, 3, 67},
                                                {1, 8, 12}, {3, 8, 38}, {9, 9, 100}};
    for (const auto& [index, count, whole] : cases) {
        EXPECT_EQ(percentage(index, count), static_cast<int>(whole)) << index << " of " << count;
    }
}

TEST_F(Hosts, FilesAreAskedForFromTheFolderOfTheLastOneOn) {
    host.files = {std::nullopt, L"/other/b.gas"};
    EXPECT_EQ(askForFile(L"Where?", L"", true), L"");
    EXPECT_EQ(askForFile(L"Where?", L"Text|*.txt", false, L"/start"), L"/other/b.gas");
    EXPECT_EQ(askForFile(L"Where?", L"", false), L"");
    class Broken final : public FileDialog {
        bool show(const FileQuestion&) override { throw RunTimeError(kInvalidCall, L"No display"); }
        std::wstring path() const override { return L"/last/a.gas"; }
        std::unique_ptr<FileDialog> another() const override { return std::make_unique<Broken>(); }
    } broken;
    gProgram().host.fileDialog = &broken;
    EXPECT_EQ(askForFile(L"Title", L"", false), L"/last/a.gas");
    gProgram().host = {};
    EXPECT_EQ(askForFile(L"Where?", L"", false), L"");
}

TEST_F(Hosts, FoldersAndRequestsToTheDesktop) {
    host.folders = {L"/some/folder", std::wstring(L"/cut\0here", 9), std::nullopt};
    EXPECT_EQ(gBrowseFolder(L"Where?", &host, L"/start"), L"/some/folder");
    EXPECT_EQ(gProgram().routine, L"gBrowseFolder");
    EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L"/"), L"/cut");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L"/"), std::nullopt);
        gShellExec(L"mailto:someone", L"open");
        EXPECT_EQ(gProgram().routine, L"gShellExec");
        gShowProps(L"/some/a.gas", &host);
        EXPECT_EQ(gProgram().routine, L"gShowProps");
        gProgram().host = {};
    }
}

TEST_F(Hosts, ToolsAreAskedForOnceAndRunWithoutQuotes) {
    host.files = {{}, L"/pad dir/pad.exe",   L"/o/orvane.exe", L"/z/zeltor.exe",
                  {}, L"/my tools/Edit.exe", L"/z/another.exe"};
    EXPECT_FALSE(openInSkritPad(L"C:\\my mods\\a.gas"));
    EXPECT_TRUE(openInSkritPad(L"C:\\my mods\\a.gas"));
    EXPECT_TRUE(openInSkritPad(L"b.gas"));
    EXPECT_TRUE(runOrvane());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(zeltorPath(), L"/z/zeltor.exe");
    EXPECT_FALSE(runUserTool(2));
    EXPECT_TRUE(runUserTool(2));
    EXPECT_TRUE(replaceZeltor(L"It is old."));
    openInNotepad(L"/my mods/a.gas");
    host.missingProgram = L"notepad.exe";
    openInNotepad(L"/my mods/a.gas");
    EXPECT_EQ(settings, (Settings{L"/o/orvane.exe",
                                  L"/z/another.exe",
                                  L"/pad dir/pad.exe",
                                  {L"", L"", L"Edit|/my tools/Edit.exe"}}));
}

TEST_F(Hosts, AnotherToolIsOfferedForOneThatCannotBeStarted) {
    const std::tuple<std::function<bool()>, std::wstring&, std::wstring> cases[] = {
        {[] { return openInSkritPad(L"a.gas"); }, settings.skritpad, L"/good/x.exe"},
        {runOrvane, settings.orvane, L"/good/x.exe"},
        {[] { return runUserTool(1); }, settings.tools[1], L"x|/good/x.exe"},
        {[] { return replaceZeltor(L"File not found"); }, settings.zeltor, L"/gone/y"},
    };
    host.missingProgram = L"/gone/";
    for (const auto& [run, setting, kept] : cases) {
        setting = L"/gone/x";
        host.answers = {Answer::no};
        host.files = {L"/gone/y", L"/good/x.exe"};
        EXPECT_FALSE(run());
        EXPECT_EQ(setting, L"/gone/x");
        EXPECT_TRUE(run());
        EXPECT_EQ(setting, kept);
    }
}

TEST_F(Hosts, UserToolsKeepTheirCaptionAndPathUntilAYes) {
    const std::array<std::wstring, 3> cases[] = {
        {L"/opt/my tools/Edit.EXE", L"Edit|/opt/my tools/Edit.EXE", L"Edit"},
        {L"/opt/old.com", L"old|/opt/old.com", L"old"},
        {L"/opt/pack.sh", L"pack.sh|/opt/pack.sh", L"pack.sh"},
        {L"/opt/.exe", L"|/opt/.exe", L""},
    };
    EXPECT_EQ(userToolCaption(4), L"Tool5");
    for (const auto& [path, setting, caption] : cases) {
        settings.tools[4] = userToolSetting(path);
        EXPECT_EQ(settings.tools[4], setting);
        EXPECT_EQ(userToolCaption(4), caption);
    }
    settings.tools.fill(L"no bar");
    EXPECT_EQ(userToolCaption(4), L"no bar");
    host.answers = {Answer::no, Answer::yes};
    EXPECT_FALSE(resetUserTools());
    EXPECT_EQ(settings.tools[4], L"no bar");
    EXPECT_TRUE(resetUserTools());
    EXPECT_EQ(settings, Settings());
}

TEST_F(Hosts, AConfiguredPathAndTheFileAtTheEndAreTakenWhole) {
    const std::array<std::wstring, 4> cases[] = {
        {L"/opt/my pad/run /a b.gas", L"/opt/my pad/run", L"/opt/my pad/run", L"/a b.gas"},
        {L"/opt/my pad/run -x", L"/opt/my pad/run -x", L"/opt/my pad/run -x", L""},
        {L"/opt/my pad/run", L"", L"/opt/my pad/run", L""},
        {L"notepad.exe /a b.gas", L"notepad.exe", L"notepad.exe", L"/a b.gas"},
        {L"wine /opt/my pad.exe a", L"wine /opt/my pad.exe", L"wine", L"/opt/my pad.exe a"},
        {L"  tool  ", L"", L"tool", L""},
        {L"", L"", L"", L""},
    };
    for (const auto& [line, configured, program, words] : cases) {
        EXPECT_EQ(splitCommandLine(line, configured), (CommandParts{program, words})) << line;
    }
    const auto isFile = [](std::wstring_view name) { return name == L"/a b" || name == L"b"; };
    EXPECT_EQ(splitArguments(L" --wide  -x /a b", isFile), (Texts{L"--wide", L"-x", L"/a b"}));
    EXPECT_EQ(splitArguments(L"/c b", isFile), (Texts{L"/c", L"b"}));
    EXPECT_EQ(splitArguments(L"  ", isFile), Texts{});
}

TEST_F(Hosts, ProgramsFailWithTheSystemsReason) {
    const std::wstring text = folder.put(L"plain.txt", "no program\n");
    fs::permissions(folder.native(L"plain.txt"), fs::perms::owner_all);
    const std::pair<std::wstring, const char*> cases[] = {{folder.path(L"missing"), "53"},
                                                          {L"no-such-program-anywhere", "53"},
                                                          {folder.path(), "70"},
                                                          {text, "75"}};
    for (const auto& [program, number] : cases) {
        const std::string error = errorOf([&line = program] { startProgram(line); });
        const std::string start = number + (": Cannot start '" + shown(program)) + "': ";
        EXPECT_EQ(error.substr(0, start.size()), start);
    }
}

}  // namespace
}  // namespace kestrel::test
