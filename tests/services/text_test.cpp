#include "services/text.h"

#include <gtest/gtest.h>

#include "services/bytes.h"

namespace kestrel {
namespace {

using Pieces = std::vector<std::wstring>;

Pieces pieces(std::wstring_view text, std::wstring_view separator) {
    const auto views = split(text, separator);
    return {views.begin(), views.end()};
}

TEST(Text, TrimTakesSpacesAlone) {
    EXPECT_EQ(trim(L"  a b  "), L"a b");
    EXPECT_EQ(trim(L"\t a\r\n "), L"\t a\r\n");
    EXPECT_EQ(trim(L"   "), L"");
    EXPECT_EQ(trim(L"\u00A0a"), L"\u00A0a");
}

TEST(Text, Split) {
    EXPECT_EQ(pieces(L"", L"\r\n"), Pieces{});
    EXPECT_EQ(pieces(L"a", L"\r\n"), Pieces{L"a"});
    EXPECT_EQ(pieces(L"\r\n", L"\r\n"), (Pieces{L"", L""}));
    EXPECT_EQ(pieces(L"a\r\n\r\nb\r", L"\r\n"), (Pieces{L"a", L"", L"b\r"}));
    EXPECT_EQ(pieces(L"aaa", L"aa"), (Pieces{L"", L"a"}));
}

TEST(Text, CaseOfEveryLetterOfTheCodePage) {
    const std::wstring_view upper = L"AZ\u00C0\u00DE\u0160\u0152\u017D\u0178";
    const std::wstring_view lower = L"az\u00E0\u00FE\u0161\u0153\u017E\u00FF";
    EXPECT_EQ(lowerCase(upper), lower);
    EXPECT_EQ(lowerCase(lower), lower);
    const std::wstring_view others = L"@[`{\u00D7\u00F7\u00DF\u20AC\u0416";
    EXPECT_EQ(lowerCase(others), others);
    int letters = 0;
    for (wchar_t c : kWideOfByte) letters += foldCase(c) != c ? 1 : 0;
    EXPECT_EQ(letters, 26 + 30 + 4);
}

TEST(Text, CompareWithoutCase) {
    EXPECT_EQ(compareWithoutCase(L"Stra\u00C9", L"sTRA\u00E9"), 0);
    EXPECT_LT(compareWithoutCase(L"a", L"B"), 0);
    EXPECT_LT(compareWithoutCase(L"ab", L"ABC"), 0);
    EXPECT_GT(compareWithoutCase(L"b", L"ABC"), 0);
    EXPECT_EQ(compareWithoutCase(L"", L""), 0);
}

TEST(Text, Cleaning) {
    EXPECT_EQ(removeTabs(L"\ta\tb"), L"ab");
    EXPECT_EQ(removeSemicolons(L";a;;"), L"a");
    EXPECT_EQ(removeQuotes(L"\"a\"b"), L"ab");
    EXPECT_EQ(removeCommentMarks(L"///a//b/"), L"/ab/");
    EXPECT_EQ(removeBrackets(L"[a]{b}(c)"), L"ab(c)");
    EXPECT_EQ(cleanValue(L"  [\"abc\"]; "), L"abc");
    EXPECT_EQ(cleanValue(L"\" // a\r\n\";\t"), L"// a\r\n");
}

TEST(Text, SqueezeBlankLines) {
    const struct {
        const wchar_t* text;
        const wchar_t* squeezed;
    } cases[] = {
        {L"", L""},
        {L"\r\n\r\n\r\n", L""},
        {L"\r\n\r\na\r\n\r\n\r\nb\r\n", L"a\r\nb\r\n"},
        {L"a\r\n\r\n", L"a\r\n"},
        {L"a\n\nb\r\rc", L"a\n\nb\r\rc"},
        {L"a\r\r\n\n\r\nb", L"a\r\r\n\n\r\nb"},
        {L"a\r\n \r\nb", L"a\r\n \r\nb"},
    };
    for (const auto& c : cases) EXPECT_EQ(squeezeBlankLines(c.text), c.squeezed);
}

TEST(Text, SplitStatements) {
    EXPECT_EQ(splitStatements(L"a=1;b=2;", L"\r\n"), (Pieces{L"a=1;", L"b=2;", L";"}));
    EXPECT_EQ(splitStatements(L"[x]\r\n\r\na=1;\r\nb", L"\r\n"),
              (Pieces{L"[x]", L"", L"a=1;", L";", L"b"}));
    EXPECT_EQ(splitStatements(L";", L"\r\n"), (Pieces{L";", L";"}));
    EXPECT_EQ(splitStatements(L"", L"\r\n"), Pieces{});
}

}  // namespace
}  // namespace kestrel
