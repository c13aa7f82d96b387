#include "gas/saving.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "gas/load.h"
#include "services/bytes.h"
#include "services/files.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

class Saving : public testing::Test {
  protected:
    Saving() {
        gProgram().version.fileDescription = L"Kestrel";
        gProgram().folder = folder.path();
    }

    ViewedText viewed(bool canEdit = true) {
        return {[this] { return text; }, canEdit, true};
    }

    void save(bool canEdit, const std::wstring& target) {
        host.files = {target};
        ViewedText shown = viewed(canEdit);
        saveViewedText(shown,
                       {[this] { return openPath; }, [this] { host.log.push_back("reload"); }});
    }

    std::wstring path(const wchar_t* name) const { return joinPath(folder.path(), name); }

    test::RecordingHost host;
    test::TempFolder folder;
    std::wstring text = L"[t:a]\r\n{\r\n}\n";
    std::wstring openPath = path(L"open.gas");
};

const std::string kReplace =
    "ask: File already exists. Replace existing file? | Kestrel | "
    "question | noYes";

TEST_F(Saving, AnotherFileIsWrittenWithoutReload) {
    const struct {
        const wchar_t* name;
        const wchar_t* before;
        const wchar_t* backup;
    } cases[] = {{L"new.txt", L"", L""},
                 {L"other.gas", L"before", L"before"},
                 {L"LOUD.GAS", L"before", L"before"},
                 {L"other.txt", L"before", L""}};
    for (const auto& one : cases) {
        const std::wstring target = path(one.name);
        Lines log{
            "save: Select Save As Filename and Location | Text File (*.txt)|*.txt|GAS File "
            "(*.gas)|*.gas|All files (*.*)|*.* | " +
            toUtf8(folder.path())};
        if (*one.before != L'\0') {
            gWriteFile(target, one.before);
            log.push_back(kReplace);
        }
        host.log.clear();
        save(false, target);
        EXPECT_EQ(gstrReadFile(target), text);
        EXPECT_EQ(gstrReadFile(backupPath(target)), one.backup);
        EXPECT_EQ(host.log, log);
    }
}

TEST_F(Saving, AnEditedTextStartsAtTheOpenFileAndReloadsIt) {
    gWriteFile(openPath, L"before");
    save(true, openPath);
    EXPECT_EQ(gstrReadFile(openPath), text);
    EXPECT_EQ(gstrReadFile(path(L"open.gas.bak")), L"before");
    EXPECT_EQ(host.log, (Lines{"save: Select Save As Filename and Location | GAS File "
                               "(*.gas)|*.gas|Text File (*.txt)|*.txt|All files (*.*)|*.* | " +
                                   toUtf8(openPath),
                               kReplace, "reload"}));
}

TEST_F(Saving, AnotherProgramsChangeIsReplacedOnlyOnASecondYes) {
    const std::string changed =
        "ask: The file has been changed by another program since it was loaded. Overwrite it? | "
        "Kestrel | question | noYes";
    const auto loaded = [this] {
        gWriteFile(openPath, L"before");
        return fileStamp(openPath);
    };
    const auto later = [this] {
        const auto written = std::filesystem::last_write_time(folder.native(L"open.gas"));
        std::filesystem::last_write_time(folder.native(L"open.gas"),
                                         written + std::chrono::seconds(2));
    };
    const struct {
        const char* what;
        std::function<void()> change;
        std::deque<Answer> answers;
        bool asked;
        bool written;
    } cases[] = {
        {"unchanged", [] {}, {}, false, true},
        {"longer", [this] { folder.put(L"open.gas", "before+"); }, {}, true, true},
        {"declined",
         [this] { folder.put(L"open.gas", "before+"); },
         {Answer::yes, Answer::no},
         true,
         false},
        {"as long", later, {}, true, true},
        {"gone", [this] { std::filesystem::remove(folder.native(L"open.gas")); }, {}, false, true},
    };
    for (const auto& c : cases) {
        const auto stamp = loaded();
        ASSERT_TRUE(stamp);
        c.change();
        const std::string before = folder.bytes(L"open.gas");
        host.log.clear();
        host.answers = c.answers;
        host.files = {openPath};
        ViewedText shown = viewed();
        saveViewedText(shown, {[this] { return openPath; }, {}, [&] { return stamp; }});
        EXPECT_EQ(host.logged(changed), c.asked ? Lines{changed} : Lines{}) << c.what;
        EXPECT_EQ(folder.bytes(L"open.gas"), c.written ? toUtf8(text) : before) << c.what;
    }
    // A file that was never loaded, or whose state nobody knows, has one question.
    folder.put(L"other.gas", "other");
    for (const auto& stamp : {fileStamp(folder.path(L"other.gas")), fileStamp(L"")}) {
        host.log.clear();
        host.files = {folder.path(stamp ? L"other.gas" : L"open.gas")};
        ViewedText shown = viewed();
        saveViewedText(shown, {[this] { return openPath; }, {}, [&] { return stamp; }});
        EXPECT_EQ(host.logged("ask"), Lines{kReplace});
    }
}

TEST_F(Saving, NothingIsWrittenWhenTheUserDeclines) {
    gWriteFile(openPath, L"before");
    host.answers = {Answer::no};
    save(true, openPath);
    EXPECT_EQ(gstrReadFile(openPath), L"before");
    EXPECT_FALSE(fileExists(backupPath(openPath)));
    EXPECT_EQ(host.logged("reload"), Lines{});
    host.files = {std::nullopt};
    host.log.clear();
    ViewedText shown = viewed();
    saveViewedText(shown, {});
    EXPECT_EQ(host.log.size(), 1U);
}

TEST_F(Saving, TextThatHasNoByteIsRefusedAndTheFileStays) {
    folder.put(L"open.gas", "before");
    const auto untouched = std::filesystem::last_write_time(folder.native());
    text = L"one\r\ntwo \u0416";
    save(true, openPath);
    EXPECT_EQ(folder.bytes(L"open.gas"), "before");
    EXPECT_EQ(folder.names(), Lines{"open.gas"});
    EXPECT_EQ(std::filesystem::last_write_time(folder.native()), untouched);
    EXPECT_EQ(host.logged("reload"), Lines{});
    EXPECT_EQ(
        host.log.back(),
        "ask: Error (5): Cannot write '" + test::shown(openPath) +
            "': The character '\u0416' (U+0416) in line 2 cannot be stored in code page 1252. "
            "Replace it, or save the text as a text file in 'saveViewedText' | Kestrel | "
            "exclamation | ok");
    // Which may hold it.
    save(true, folder.path(L"new.txt"));
    EXPECT_EQ(folder.bytes(L"new.txt"), "\xEF\xBB\xBFone\r\ntwo \xD0\x96");
}

constexpr const char* kThree =
    "[t:sed,n:a]\r\n{\r\n\tx = 1;\r\n}\r\n\r\n[t:sed,n:b]\r\n{\r\n}\r\n[t:sed,n:c]\r\n{\r\n}\r\n";

std::string with(std::string text, std::string_view from, std::string_view to) {
    return text.replace(text.find(from), from.size(), to);
}

TEST_F(Saving, ABlockGoesToItsPlace) {
    const std::string inPlace =
        "ask: This text is one of the 3 blocks of this file. Put it in its place and keep the "
        "others? | Kestrel | question | yesNoCancel";
    const std::string odd =
        "ask: This text is no longer one block of the file. A brace is open at its end. Put it in "
        "its place all the same? | Kestrel | question | noYes";
    const std::string mark(kUtf8Mark);
    const std::string gone = "ask: Nothing was written: ";
    const struct {
        const char* what;
        const wchar_t* edited;
        std::deque<Answer> answers;
        std::string before;
        std::string after;
        Lines log;
    } cases[] = {
        {"in its place",
         L"x = 2;",
         {},
         kThree,
         with(kThree, "\tx = 1", "    x = 2"),
         {kReplace, inPlace}},
        {"alone",
         L"x = 2;",
         {Answer::yes, Answer::no},
         kThree,
         "[t:sed,n:a]\r\n{\r\n    x = 2;\r\n}\r\n",
         {kReplace, inPlace}},
        {"cancelled",
         L"x = 2;",
         {Answer::yes, Answer::cancel},
         kThree,
         kThree,
         {kReplace, inPlace}},
        {"not one block",
         L"{",
         {Answer::yes, Answer::yes, Answer::no},
         kThree,
         kThree,
         {kReplace, inPlace, odd}},
        {"not one block, but wanted",
         L"{",
         {},
         kThree,
         with(kThree, "\tx = 1;", "    {"),
         {kReplace, inPlace, odd}},
        {"changed by another",
         L"x = 2;",
         {},
         with(kThree, "1", "7"),
         with(kThree, "1", "7"),
         {kReplace, inPlace, gone}},
        {"moved by another",
         L"x = 2;",
         {},
         std::string("[t:sed,n:0]\r\n{\r\n}\r\n") + kThree,
         "[t:sed,n:0]\r\n{\r\n}\r\n" + with(kThree, "\tx = 1", "    x = 2"),
         {kReplace}},
        {"of UTF-8",
         L"x = \u0416;",
         {},
         mark + kThree,
         mark + with(kThree, "\tx = 1", "    x = \xD0\x96"),
         {kReplace, inPlace}},
        {"of UTF-8, alone",
         L"x = \u0416;",
         {Answer::yes, Answer::no},
         mark + kThree,
         mark + "[t:sed,n:a]\r\n{\r\n    x = \xD0\x96;\r\n}\r\n",
         {kReplace, inPlace}},
    };
    std::vector<GasTemplate> templates;
    loadGasText(widen(kThree), templates);
    for (const auto& c : cases) {
        gProgram().kept.clear();
        folder.put(L"open.gas", c.before);
        ViewedText shown = viewed();
        shown.loaded = templates.at(0).Text;
        shown.block = {openPath, templates.at(0).Place};
        text = shown.loaded;
        text.replace(text.find(L"x = 1;"), 6, c.edited);
        host.log.clear();
        host.answers = c.answers;
        host.files = {openPath};
        const bool saved = saveViewedText(shown, {});
        EXPECT_EQ(folder.bytes(L"open.gas"), c.after) << c.what;
        EXPECT_EQ(saved, c.before != c.after) << c.what;
        EXPECT_EQ(shown.loaded == text, saved) << c.what;
        const Lines asked = host.logged("ask");
        for (std::size_t i = 0; i < c.log.size(); ++i) {
            EXPECT_TRUE(i < asked.size() && asked[i].starts_with(c.log[i])) << c.what << i;
        }
        // Once more, and what was there before this run is still in the copy.
        if (!saved) continue;
        host.files = {openPath};
        EXPECT_TRUE(saveViewedText(shown, {})) << c.what;
        EXPECT_EQ(folder.bytes(L"open.gas"), c.after) << c.what;
        EXPECT_EQ(folder.bytes(L"open.gas.bak"), c.before) << c.what;
    }
}

TEST_F(Saving, AProtectedFileIsAskedFor) {
    folder.put(L"open.gas", "before");
    const auto file = folder.native(L"open.gas");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    host.answers = {Answer::yes, Answer::no};
    save(true, openPath);
    EXPECT_EQ(folder.bytes(L"open.gas"), "before");
    EXPECT_TRUE(host.log.back().find("is write-protected. Replace it anyway?") !=
                std::string::npos);
    save(true, openPath);
    EXPECT_EQ(folder.bytes(L"open.gas"), toUtf8(text));
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace kestrel
