#include "services/tools.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

using test::RecordingHost;
using Lines = std::vector<std::string>;

constexpr const char* kAllPrograms = "Applications (*.exe)|*.exe|All files (*.*)|*.*";

class Tools : public testing::Test {
  protected:
    RecordingHost host;
    Settings& settings = gProgram().settings;
};

TEST_F(Tools, SkritPadIsAskedForOnceAndGetsTheFileUnquoted) {
    gProgram().folder = L"/kestrel";
    host.files = {std::nullopt, L"C:\\pad dir\\pad.exe"};
    EXPECT_FALSE(openInSkritPad(L"C:\\my mods\\a.gas"));
    EXPECT_EQ(settings.skritpad, L"");
    EXPECT_TRUE(openInSkritPad(L"C:\\my mods\\a.gas"));
    EXPECT_TRUE(openInSkritPad(L"b.gas"));
    const std::string question =
        "open: Please specify the path to SkritPad.exe (or alternative) | " +
        std::string(kAllPrograms) + " | /kestrel";
    EXPECT_EQ(host.log,
              (Lines{question, question,
                     "run: C:\\pad dir\\pad.exe C:\\my mods\\a.gas | C:\\pad dir\\pad.exe",
                     "run: C:\\pad dir\\pad.exe b.gas | C:\\pad dir\\pad.exe"}));
    EXPECT_EQ(settings.skritpad, L"C:\\pad dir\\pad.exe");
}

TEST_F(Tools, NotepadOrTheDesktopsEditor) {
    openInNotepad(L"/my mods/a.gas");
    host.missingProgram = L"notepad.exe";
    openInNotepad(L"/my mods/a.gas");
    EXPECT_EQ(host.log, (Lines{"run: notepad.exe /my mods/a.gas | notepad.exe",
                               "perform: edit | /my mods/a.gas"}));
}

TEST_F(Tools, OrvaneAndZeltorAreAskedForWhenNotSet) {
    host.files = {L"orvane.exe", L"zeltor.exe"};
    EXPECT_TRUE(runOrvane());
    EXPECT_EQ(zeltorPath(), L"zeltor.exe");
    EXPECT_EQ(zeltorPath(), L"zeltor.exe");
    ASSERT_EQ(host.log.size(), 3U);
    EXPECT_TRUE(host.log[0].starts_with(
        "open: Please specify the path to Orvane.exe (or alternative) | Applications"));
    EXPECT_EQ(host.log[1], "run: orvane.exe | orvane.exe");
    EXPECT_TRUE(host.log[2].starts_with(
        "open: Please specify the path to Zeltor.exe | Rapid Zeltor (Zeltor.exe)|Zeltor.exe|"
        "Applications (*.exe)|*.exe|All files"));
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
    };
    host.missingProgram = L"/gone/";
    for (const auto& c : cases) {
        c.setting = L"/gone/x";
        host.log.clear();
        host.answers = {Answer::no};
        EXPECT_FALSE(c.run());
        EXPECT_EQ(c.setting, L"/gone/x");
        host.files = {L"/gone/y", L"/good/x.exe"};
        EXPECT_TRUE(c.run());
        EXPECT_EQ(c.setting, c.kept);
        EXPECT_EQ(host.logged("ask: ").back(),
                  "ask: File not found\\r\\n\\r\\nDo you wish to choose another program? | "
                  "Kestrel Template Browser | question | yesNo");
    }
}

TEST_F(Tools, UserToolsKeepTheirCaptionAndPath) {
    const struct {
        const wchar_t* path;
        const wchar_t* setting;
    } kCases[] = {
        {L"/opt/my tools/Edit.EXE", L"Edit|/opt/my tools/Edit.EXE"},
        {L"/opt/pack.sh", L"pack.sh|/opt/pack.sh"},
        {L"/opt/.exe", L"|/opt/.exe"},
    };
    for (const auto& c : kCases) EXPECT_EQ(userToolSetting(c.path), c.setting);
}

TEST_F(Tools, AUserToolRunsWithoutAnyFile) {
    EXPECT_EQ(userToolCaption(2), L"Tool3");
    EXPECT_FALSE(runUserTool(2)) << "cancelled";
    host.files = {L"/opt/my tools/Edit.exe"};
    EXPECT_TRUE(runUserTool(2));
    EXPECT_EQ(userToolCaption(2), L"Edit");
    EXPECT_EQ(settings.tools[2], L"Edit|/opt/my tools/Edit.exe");
    EXPECT_EQ(host.log.back(), "run: /opt/my tools/Edit.exe | /opt/my tools/Edit.exe");
    EXPECT_TRUE(host.log[0].starts_with("open: Please specify the path to a user Tool3 | Applic"));
}

TEST_F(Tools, ResetAsksFirst) {
    settings.tools.fill(L"a|/a");
    host.answers = {Answer::no, Answer::yes};
    EXPECT_FALSE(resetUserTools());
    EXPECT_EQ(settings.tools[4], L"a|/a");
    EXPECT_TRUE(resetUserTools());
    EXPECT_EQ(settings.tools[4], L"");
    EXPECT_EQ(host.log.back(),
              "ask: Reset ALL User Tool Settings? | Kestrel Template Browser | question | noYes");
}

}  // namespace
}  // namespace kestrel
