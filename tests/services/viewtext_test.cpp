#include "services/viewtext.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>

#include "services/bytes.h"
#include "services/files.h"
#include "services/program.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {

void PrintTo(const TextRange& range, std::ostream* out) {
    *out << range.begin << " to " << range.end;
}

namespace {

using Lines = std::vector<std::string>;

TEST(ViewText, FindsWithoutCaseFromTheSelectionsLastCharacter) {
    const struct {
        const wchar_t* text;
        const wchar_t* what;
        std::size_t selectionEnd;
        std::optional<TextRange> found;
    } cases[] = {
        {L"xABx", L"ab", 0, TextRange{1, 3}},
        {L"xABx", L"ab", 4, TextRange{1, 3}},  // wraps
        {L"ab ab ab", L"AB", 5, TextRange{6, 8}},
        {L"ab ab ab", L"AB", 8, TextRange{0, 2}},
        {L"aXbX", L"x", 2, TextRange{1, 2}},  // a match of one character is found again
        {L"aaa", L"aa", 2, TextRange{1, 3}},  // and one that overlaps
        {L"\u00C9t\u00E9", L"\u00E9T", 0, TextRange{0, 3}},
        {L"a\u00E9b", L"B", 3, TextRange{3, 4}},  // the last character has two bytes
        {L"\u0178\u0160 x", L"\u00FF\u0161", 0, TextRange{0, 4}},
        {L"a.*b", L".*", 0, TextRange{1, 3}},
        {L"abc", L"abcd", 0, std::nullopt},
        {L"abc", L"", 0, std::nullopt},
        {L"abc", L"c", 99, TextRange{2, 3}},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(findText(toUtf8(one.text), one.what, one.selectionEnd), one.found)
            << toUtf8(one.text) << " | " << toUtf8(one.what) << " | " << one.selectionEnd;
    }
    const std::string nul("a\0B", 3);
    EXPECT_EQ(findText(nul, std::wstring(L"\0b", 2), 0), (TextRange{1, 3}));
}

TEST(ViewText, CutsLongLines) {
    const std::wstring line(kLongestLine + 150, L'x');
    EXPECT_FALSE(
        standIn(line.substr(0, kLongestLine) + L"\r\n" + line.substr(0, kLongestLine + 9)));
    const std::wstring text = L"a\n" + line + L"\r\nb\n" + line + line + L"end";
    const auto shown = standIn(text);
    ASSERT_TRUE(shown && shown->cuts.size() == 2);
    EXPECT_EQ(shown->text.substr(kLongestLine, 59),
              L"xx \u2026 [150 more characters of this line are not shown]\r\nb\nxx");
    // Each place of the one is a place of the other, and what is hidden is its begin.
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t there = shown->toShown(at);
        ASSERT_LE(shown->toWhole(there), at);
        if (shown->toWhole(there) == at && shown->text[there] != L' ') {
            ASSERT_EQ(shown->text[there], text[at]) << at;
        }
    }
    EXPECT_EQ(shown->toWhole(shown->text.size()), text.size());
    EXPECT_EQ(shown->toShown(text.find(L'b')), shown->text.find(L'b'));
}

TEST(ViewText, CountsCharacters) {
    const std::wstring mixed = L"a\r\n\u00E9\u20AC\U0001F600 and some more ASCII \u00FF";
    EXPECT_EQ(characterCount(""), 0U);
    for (std::size_t length = 0; length <= mixed.size(); ++length) {
        const std::wstring part = mixed.substr(0, length);
        if (standIn(part)) continue;  // ends in half a character
        EXPECT_EQ(characterCount(toUtf8(part)), length);
    }
}

TEST(ViewText, OnlyCodesThatAreNoCharactersNeedAStandIn) {
    EXPECT_EQ(standIn(std::wstring(L"a\0\r\n", 4) + L"\uFFFF\U0001F600"), std::nullopt);
    const auto lone = [](unsigned code) { return std::wstring{L'a', static_cast<wchar_t>(code)}; };
    EXPECT_EQ(standIn(lone(0xD800))->text, L"a\uFFFD");
    EXPECT_EQ(standIn(lone(0xDC80) + L"b")->text, L"a\uFFFDb");
}

TEST(ViewText, LineEndsReadOutsAndTheMark) {
    for (const char* other : {"", "a\r\nb\nc\nd", "a\rb"}) EXPECT_FALSE(endsLinesInLf(other));
    EXPECT_TRUE(endsLinesInLf("a\nb"));
    using Texts = std::array<std::wstring, 5>;
    EXPECT_EQ(readOutTexts({}),
              (Texts{L"Line: 1", L"Col: 1", L"Char: 0", L"Chars: 0", L"Lines: 1"}));
    EXPECT_EQ(readOutTexts({2, 3, 14, 25, 6}),
              (Texts{L"Line: 2", L"Col: 3", L"Char: 14", L"Chars: 25", L"Lines: 6"}));
    EXPECT_EQ(markedCaption(L"View", true), L"View *");
    EXPECT_EQ(markedCaption(L"View", false), L"View");
}

class ViewedTexts : public testing::Test {
  protected:
    ViewedTexts() {
        gProgram().version.fileDescription = L"Kestrel";
        gProgram().folder = folder.path();
        test::setTemporaryFolder(folder.native());
    }
    ~ViewedTexts() override { test::setTemporaryFolder({}); }

    ViewedText viewed(bool canEdit = true, bool changed = true) {
        return {[this] { return text; }, canEdit, changed};
    }

    std::wstring path(const wchar_t* name) const { return joinPath(folder.path(), name); }

    test::RecordingHost host;
    test::TempFolder folder;
    std::wstring text = L"[t:a]\r\n{\r\n}\n";
    std::wstring openPath = path(L"open.gas");
};

TEST_F(ViewedTexts, ClosingAsksOnlyForAChangedEditableText) {
    EXPECT_TRUE(mayDiscard(viewed(false, true)));
    EXPECT_TRUE(mayDiscard(viewed(true, false)));
    EXPECT_EQ(host.log, Lines{});
    host.answers = {Answer::no, Answer::yes};
    EXPECT_FALSE(mayDiscard(viewed(true, true)));
    EXPECT_TRUE(mayDiscard(viewed(true, true)));
    EXPECT_EQ(host.log.at(0),
              "ask: Source has been changed. Exit anyway and discard changes? | Kestrel | question "
              "| noYes");
}

TEST_F(ViewedTexts, SkritPadGetsATemporaryFileWithTheText) {
    gProgram().settings.skritpad = L"/opt/skrit pad";
    openInScriptEditor(viewed(true, true));
    ASSERT_EQ(host.log.size(), 2U);
    EXPECT_EQ(host.log[0],
              "ask: Source has been changed. ScritPad will open with the original file loaded. | "
              "Kestrel | question | okCancel");
    const std::string start = "run: /opt/skrit pad ";
    ASSERT_TRUE(host.log[1].starts_with(start)) << host.log[1];
    const std::string file =
        host.log[1].substr(start.size(), host.log[1].find(" | ") - start.size());
    EXPECT_TRUE(fileName(fromUtf8(file)).starts_with(L"gsv")) << file;
    EXPECT_EQ(gstrReadFile(fromUtf8(file)), text);
    std::filesystem::remove(file);
}

TEST_F(ViewedTexts, SkritPadIsNotStarted) {
    host.answers = {Answer::cancel};
    gProgram().settings.skritpad = L"/opt/pad";
    openInScriptEditor(viewed(true, true));  // cancelled
    gProgram().settings.skritpad.clear();
    openInScriptEditor(viewed(false, false));  // no program chosen
    EXPECT_EQ(host.logged("run"), Lines{});
    EXPECT_EQ(host.logged("open").size(), 1U);
}

TEST_F(ViewedTexts, AsksForTheTextToFind) {
    host.prompts = {L"abc", std::nullopt};
    EXPECT_EQ(askForSearchText(L"before"), L"abc");
    EXPECT_EQ(askForSearchText(L"abc"), L"");
    EXPECT_EQ(
        host.log[0],
        "prompt: Please enter the text to search for:\\r\\n\\r\\nNote: This sub-string search "
        "is not case sensitive and does not support regular expressions or wildcards. | Find "
        "Text | before");
    tellNotFound(L"abc");
    EXPECT_EQ(host.log.back(), "ask: Substring not found: abc | Find Text | exclamation | ok");
}

}  // namespace
}  // namespace kestrel
