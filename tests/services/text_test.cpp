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

TEST(Text, CaseOfLetters) {
    const std::wstring_view upper =
        L"AZ\u00C0\u00DE\u0160\u0152\u017D\u0178\u0141\u0424\u042F\u0401\u0391\u03A9\u0540";
    const std::wstring_view lower =
        L"az\u00E0\u00FE\u0161\u0153\u017E\u00FF\u0142\u0444\u044F\u0451\u03B1\u03C9\u0570";
    EXPECT_EQ(lowerCase(upper), lower);
    EXPECT_EQ(lowerCase(lower), lower);
    for (std::size_t i = 0; i < upper.size(); ++i) {
        EXPECT_EQ(otherCase(upper[i]), lower[i]);
        EXPECT_EQ(otherCase(lower[i]), upper[i]);
    }
    // The two cases of the last ones differ in their length.
    const std::wstring_view others = L"@[`{\u00D7\u00F7\u00DF\u20AC\u00B5\u0130\u0131\u023A\u212A";
    EXPECT_EQ(lowerCase(others), others);
    for (const wchar_t c : others) EXPECT_EQ(otherCase(c), c);
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
