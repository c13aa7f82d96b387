#include "services/tools.h"

#include "services/fixture.h"
#include "services/pickers.h"
#include "services/process.h"
#include "services/shell.h"

namespace kestrel::test {
namespace {

class Tools : public Services {
  protected:
    Tools() { gProgram().folder = L"/own"; }

    Settings& settings = gProgram().settings;
};

TEST_F(Tools, FilesAreAskedForFromTheFolderOfTheLastOneOn) {
    host.files = {std::nullopt, L"/other/b.gas"};
    EXPECT_EQ(askForFile(L"Where?", L"", true), L"");
    EXPECT_EQ(askForFile(L"Where?", L"Text|*.txt", false, L"/start"), L"/other/b.gas");
    EXPECT_EQ(askForFile(L"Where?", L"", false), L"");
    EXPECT_EQ(host.log, (Lines{"save: Where? | All files (*.*)|*.* | /own",
                               "open: Where? | Text|*.txt|All files (*.*)|*.* | /start",
                               "open: Where? | All files (*.*)|*.* | /other"}));
    host.log.clear();
    class Broken final : public FileDialog {
        bool show(const FileQuestion&) override { throw RunTimeError(kInvalidCall, L"No display"); }
        std::wstring path() const override { return L"/last/a.gas"; }
        std::unique_ptr<FileDialog> another() const override { return nullptr; }
    } broken;
    gProgram().host.fileDialog = &broken;
    FileDialog* dialog = nullptr;
    std::wstring file, title, start;
    // The second time the file has a name already.
    for (int i = 0; i < 2; ++i) gSelectFile(file, L"Title", L"", false, title, dialog, start);
    EXPECT_EQ((Texts{file, title, start}), (Texts{L"/last/a.gas", L"a.gas", L"/own"}));
    EXPECT_EQ(host.log, Lines{"ask: Error (5): No display in 'gSelectFile' | Kestrel | "
                              "exclamation | ok"});
    gProgram().host = {};
    EXPECT_EQ(askForFile(L"Where?", L"", false), L"");
}

TEST_F(Tools, FoldersAndRequestsToTheDesktop) {
    host.folders = {L"/some/folder", std::wstring(L"/cut\0here", 9), std::nullopt};
    EXPECT_EQ(gBrowseFolder(L"Where?", &host, L"/start"), L"/some/folder");
    EXPECT_EQ(gProgram().routine, L"gBrowseFolder");
    EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L""), L"/cut");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L""), std::nullopt);
        gShellExec(L"mailto:someone", L"open");
        EXPECT_EQ(gProgram().routine, L"gShellExec");
        gShowProps(L"/some/a.gas", &host);
        EXPECT_EQ(gProgram().routine, L"gShowProps");
        gProgram().host = {};
    }
    EXPECT_EQ(host.log, (Lines{"folder: Where? | owner | /start", "folder: Where? | none | ",
                               "folder: Where? | none | ", "perform: open | mailto:someone",
                               "properties: /some/a.gas | owner"}));
}

TEST_F(Tools, AreAskedForOnceAndRunWithoutQuotes) {
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
    EXPECT_EQ(settings.skritpad, L"/pad dir/pad.exe");
    EXPECT_EQ(settings.orvane, L"/o/orvane.exe");
    EXPECT_EQ(settings.zeltor, L"/z/another.exe");
    EXPECT_EQ(settings.tools[2], L"Edit|/my tools/Edit.exe");
    const std::string programs = "Applications (*.exe)|*.exe|All files (*.*)|*.* | ";
    const std::string path = "open: Please specify the path to ";
    const std::string pad = path + "SkritPad.exe (or alternative) | " + programs + "/own";
    const std::string zeltor = path + "Zeltor.exe | Rapid Zeltor (Zeltor.exe)|Zeltor.exe|";
    const std::string tool = path + "a user Tool3 | " + programs + "/z";
    EXPECT_EQ(
        host.log,
        (Lines{pad, pad, "run: /pad dir/pad.exe C:\\my mods\\a.gas | /pad dir/pad.exe",
               "run: /pad dir/pad.exe b.gas | /pad dir/pad.exe",
               path + "Orvane.exe (or alternative) | " + programs + "/pad dir",
               "run: /o/orvane.exe | /o/orvane.exe", zeltor + programs + "/o", tool, tool,
               "run: /my tools/Edit.exe | /my tools/Edit.exe",
               "ask: It is old.\\r\\n\\r\\nDo you wish to choose another program? | "
               "Kestrel Template Browser | question | yesNo",
               zeltor + programs + "/my tools", "run: notepad.exe /my mods/a.gas | notepad.exe",
               "perform: edit | /my mods/a.gas"}));
}

TEST_F(Tools, AnotherIsOfferedForOneThatCannotBeStarted) {
    const struct {
        std::function<bool()> run;
        std::wstring& setting;
        const wchar_t* kept;
    } cases[] = {
        {[] { return openInSkritPad(L"a.gas"); }, settings.skritpad, L"/good/x.exe"},
        {[] { return runOrvane(); }, settings.orvane, L"/good/x.exe"},
        {[] { return runUserTool(1); }, settings.tools[1], L"x|/good/x.exe"},
        {[] { return replaceZeltor(L"File not found"); }, settings.zeltor, L"/gone/y"},
    };
    host.missingProgram = L"/gone/";
    for (const auto& c : cases) {
        c.setting = L"/gone/x";
        host.answers = {Answer::no};
        host.files = {L"/gone/y", L"/good/x.exe"};
        EXPECT_FALSE(c.run());
        EXPECT_EQ(c.setting, L"/gone/x");
        EXPECT_TRUE(c.run());
        EXPECT_EQ(c.setting, c.kept);
        EXPECT_EQ(host.logged("ask: ").back(),
                  "ask: File not found\\r\\n\\r\\nDo you wish to choose another program? | "
                  "Kestrel Template Browser | question | yesNo");
    }
}

TEST_F(Tools, OfTheUserKeepTheirCaptionAndPathUntilAYes) {
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
    EXPECT_EQ(settings.tools, Settings().tools);
    EXPECT_EQ(host.log.back(),
              "ask: Reset ALL User Tool Settings? | Kestrel Template Browser | question | noYes");
}

TEST(Process, AConfiguredPathAndTheFileAtTheEndAreTakenWhole) {
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

TEST(Process, FailsWithTheSystemsReason) {
    const TempFolder folder;
    const std::wstring text = folder.put(L"plain.txt", "no program\n");
    std::filesystem::permissions(folder.native(L"plain.txt"), std::filesystem::perms::owner_all);
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
