#include "view/viewtext.h"
#include "services/files.h"
#include "services/fixture.h"
#include "view/drafts.h"

namespace kestrel::test {
namespace {

TEST(ViewText, FindsWithoutCaseFromTheSelectionsLastCharacter) {
    const std::tuple<std::wstring, std::wstring, std::size_t, std::optional<TextRange>> cases[] = {
        {L"xABx", L"ab", 0, TextRange{1, 3}},
        {L"xABx", L"ab", 4, TextRange{1, 3}},  // wraps
        {L"ab ab ab", L"AB", 5, TextRange{6, 8}},
        {L"ab ab ab", L"AB", 8, TextRange{0, 2}},
        {L"aXbX", L"x", 2, TextRange{1, 2}},  // a match of one character is found again
        {L"aaa", L"aa", 2, TextRange{1, 3}},  // and one that overlaps
        {L"\u00C9t\u00E9", L"\u00E9T", 0, TextRange{0, 3}},
        {L"\u00E9\u00E9b", L"\u00C9", 2, TextRange{0, 2}},  // also one of two bytes
        {L"\u0178\u0160 x", L"\u00FF\u0161", 0, TextRange{0, 4}},
        {L"abc", L"abcd", 0, std::nullopt},
        {L"abc", L"", 0, std::nullopt},
        {L"abc", L"c", 99, TextRange{2, 3}},
    };
    for (const auto& [text, what, selectionEnd, found] : cases) {
        EXPECT_EQ(findText(toUtf8(text), what, selectionEnd), found)
            << text << what << selectionEnd;
    }
}

TEST(ViewText, CutsLongLines) {
    const std::wstring line(kLongestLine, L'x');
    const std::wstring rest(100, L'y');
    EXPECT_FALSE(standIn(line + L"\r\n" + line + rest.substr(1)));
    const std::wstring text = L"a\n" + line + rest + L"\r\nb\n" + line + rest + L"end";
    const auto shown = standIn(text);
    ASSERT_TRUE(shown && shown->cuts.size() == 2);
    EXPECT_EQ(shown->text, L"a\n" + line +
                               L" \u2026 [100 more characters of this line are not shown]\r\nb\n" +
                               line + L" \u2026 [103 more characters of this line are not shown]");
    // What is hidden, and the words in its place, are one place of the other text.
    std::size_t more = 0;
    for (const HiddenPart& cut : shown->cuts) {
        const std::size_t begin = cut.at + more;
        for (std::size_t i = 0; i < cut.words; ++i) EXPECT_EQ(shown->toWhole(cut.at + i), begin);
        for (std::size_t i = 0; i < cut.hidden; ++i) EXPECT_EQ(shown->toShown(begin + i), cut.at);
        EXPECT_EQ(shown->toWhole(cut.at + cut.words), begin + cut.hidden);
        EXPECT_EQ(shown->toShown(begin + cut.hidden), cut.at + cut.words);
        more += cut.hidden - cut.words;
    }
    EXPECT_EQ(shown->toWhole(shown->text.size()), text.size());
    EXPECT_EQ(shown->toShown(text.find(L'b')), shown->text.find(L'b'));
}

TEST(ViewText, CharactersAndCodesThatAreNone) {
    const std::wstring mixed = L"a\r\n\u00E9\u20AC\U0001F600 and some more ASCII \u00FF";
    for (std::size_t length = 0; length <= mixed.size(); ++length) {
        const std::wstring part = mixed.substr(0, length);
        if (standIn(part)) continue;  // ends in half a character
        EXPECT_EQ(characterCount(toUtf8(part)), length);
    }
    EXPECT_FALSE(standIn(std::wstring(L"a\0\r\n", 4) + L"\uD7FF\uE000\uFFFF\U0001F600"));
    for (const wchar_t half : {wchar_t{0xD800}, wchar_t{0xDC80}, wchar_t{0xDFFF}}) {
        EXPECT_EQ(standIn(std::wstring{L'a', half, L'b'}).value_or(StandIn()).text, L"a\uFFFDb");
    }
}

TEST(ViewText, LineEndsReadOutsAndTheMark) {
    for (const char* other : {"", "a\r\nb\nc\nd", "a\rb"}) EXPECT_FALSE(endsLinesInLf(other));
    EXPECT_TRUE(endsLinesInLf("a\nb"));
    using Panels = std::array<std::wstring, 5>;
    EXPECT_EQ(readOutTexts({}),
              (Panels{L"Line: 1", L"Col: 1", L"Char: 0", L"Chars: 0", L"Lines: 1"}));
    EXPECT_EQ(readOutTexts({2, 3, 14, 25, 6}),
              (Panels{L"Line: 2", L"Col: 3", L"Char: 14", L"Chars: 25", L"Lines: 6"}));
    EXPECT_EQ(markedCaption(L"View", true), L"View *");
    EXPECT_EQ(markedCaption(L"View", false), L"View");
}

class ViewedTexts : public ToldServices {
  protected:
    ViewedTexts() {
        setTemporaryFolder(folder.native());
        setSettingsFolder(folder.native());
        folder.put(L"a.gas", "[x]");
    }

    static ViewedText viewed(bool canEdit, bool changed) {
        return {[] { return L"[t:a]\r\n{\r\n}\n"; }, canEdit, changed};
    }

    DraftFile open;
    Draft draft{L"Edit Source: \u0142ukasz",
                {folder.path() + L"/a.gas", 3},
                FileStamp{3, -7},
                L"[x]\r\n{}",
                L"12:\n\u20ac"};
};

TEST_F(ViewedTexts, AreNotLostUnasked) {
    gProgram().settings.skritpad = L"/opt/skrit pad";
    host.answers = {Answer::no, Answer::yes, Answer::cancel, Answer::ok};
    EXPECT_FALSE(mayDiscard(viewed(true, true)));
    EXPECT_TRUE(mayDiscard(viewed(true, true)));
    for (int i = 0; i < 2; ++i) openInScriptEditor(viewed(true, true));
    for (const auto& [canEdit, changed] : {std::pair(false, true), std::pair(true, false)}) {
        EXPECT_TRUE(mayDiscard(viewed(canEdit, changed)));
        openInScriptEditor(viewed(canEdit, changed));
    }
    const std::wstring run = fromUtf8(host.log.back());
    const std::wstring file = run.substr(20, run.find(L" | ") - 20);
    EXPECT_TRUE(fileName(file).starts_with(L"gsv")) << run;
    EXPECT_EQ(gstrReadFile(file), L"[t:a]\r\n{\r\n}\n");
    for (std::string& line : host.log) {
        if (line.starts_with("run: /opt/skrit pad ")) line = "the editor runs";
    }
    gProgram().settings.skritpad.clear();
    openInScriptEditor(viewed(false, false));
}

TEST_F(ViewedTexts, AreSearched) {
    host.prompts = {L"abc", std::nullopt};
    EXPECT_EQ(askForSearchText(L"before"), L"abc");
    EXPECT_EQ(askForSearchText(L"abc", L"Title"), L"");
    tellNotFound(L"abc");
    gProgram().host = {};
    tellNotFound(L"abc");
}

TEST_F(ViewedTexts, DraftsOfEndedRunsAreOfferedOldestFirst) {
    const std::wstring own = draftFolder();
    open.keep(draft);
    EXPECT_TRUE(leftDrafts().empty());
    EXPECT_EQ(filesystem::fileNames(own).size(), 2U) << "a draft and its lock";
    open = {};
    const std::wstring path = joinPath(own, filesystem::fileNames(own).at(0));
    const std::string whole = *filesystem::read(path);
    {
        auto left = leftDrafts();
        ASSERT_EQ(left.size(), 1U);
        EXPECT_EQ(left[0].draft, draft);
        EXPECT_TRUE(leftDrafts().empty()) << "two programs ask";
        left[0].file.drop();
    }
    EXPECT_TRUE(filesystem::fileNames(own).empty());
    std::vector<std::string> bad{whole + "x", whole, whole};
    bad[1][bad[1].find("draft 2") + 6] = '1';
    bad[2].replace(bad[2].find("4:1252"), 6, "3:932");
    // As a crash of the system may leave it.
    for (std::size_t size = 0; size < whole.size(); size += 5) bad.push_back(whole.substr(0, size));
    const std::wstring name = joinPath(own, L"0.draft");
    for (const std::string& bytes : bad) {
        filesystem::replace(name, bytes, {});
        EXPECT_TRUE(leftDrafts().empty()) << bytes;
        EXPECT_EQ(fileExists(name), !bytes.empty()) << "another version may know it";
    }
    filesystem::replace(name, whole, {});
    filesystem::replace(joinPath(own, L"1.draft"), whole.substr(0, whole.size() - 1) + "\xAD", {});
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time(fs::path(name), now - std::chrono::hours(1));
    const auto left = leftDrafts();
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(left[0].draft, draft);
    EXPECT_EQ(left[1].draft.text, L"12:\n\u20ad");
}

TEST_F(ViewedTexts, DraftsAreAskedAboutAndTheirFailureIsToldOnce) {
    host.answers = {Answer::cancel, Answer::yes, Answer::no, Answer::no};
    EXPECT_EQ(askAboutDraft(draft), DraftChoice::later);
    draft.stamp = fileStamp(draft.block.path);
    EXPECT_EQ(askAboutDraft(draft), DraftChoice::open);
    draft.stamp.reset();
    EXPECT_EQ(askAboutDraft(draft), DraftChoice::discard);
    draft.block.path += L"x";
    EXPECT_EQ(askAboutDraft(draft), DraftChoice::discard);
    folder.put(fileName(draftFolder()), "no folder");
    for (const wchar_t* text : {L"x", L"y"}) {
        draft.text = text;
        open.keep(draft);
    }
    // The reason is in the system's words.
    EXPECT_TRUE(host.log.back().ends_with(" in 'keep' | Kestrel | exclamation | ok"));
    host.log.pop_back();
}

}  // namespace
}  // namespace kestrel::test
