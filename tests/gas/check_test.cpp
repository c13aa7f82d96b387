#include "gas/check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>

#include "gas/load.h"
#include "services/bytes.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

// "line: ignored|cut: why: text" for each loss.
Lines losses(std::string_view bytes) {
    Lines lines;
    for (const Loss& loss : findLosses(bytes)) {
        lines.push_back(std::to_string(loss.line) + (loss.ignored ? ": ignored: " : ": cut: ") +
                        toUtf8(loss.why) + ": " + test::shown(loss.text));
    }
    return lines;
}

#define ODD "ignored: this is no property, header, brace or comment: "
constexpr const char* kOdd = ODD;
constexpr const char* kNoComma =
    "ignored: a header with \"n:\" needs a \",\", as in [t:kind,n:name]: ";
constexpr const char* kComment = "cut: a \";\" ends a comment: the rest of the line is none: ";
constexpr const char* kQuotes = "cut: a \";\" ends a value, in quotes too: ";
constexpr const char* kEquals = "cut: what stands behind the second \"=\" is left out: ";
constexpr const char* kMarks = "cut: what stands before \"//\" becomes a part of the comment: ";
constexpr const char* kBrace = "cut: a brace here is not counted: ";
constexpr const char* kBeside = "cut: what stands beside the brace is left out: ";
constexpr const char* kBrackets = "cut: brackets are taken out of a property: ";
constexpr const char* kBehind = "cut: what stands behind \"]\" is left out: ";
constexpr const char* kBehindBody = "cut: what stands behind \"}\" is left out: ";
constexpr const char* kNoEquals = "cut: what stands behind \"{\" has no \"=\": ";
constexpr const char* kNoColon = "cut: a part of a header without \":\" is left out: ";
constexpr const char* kColons = "cut: what stands behind the second \":\" is left out: ";

TEST(Check, TellsWhatIsLeftOutOfAStatement) {
    struct Told {
        const char* why;
        const char* text = nullptr;  // the whole statement where there is none
    };
    const struct {
        const char* statement;
        std::vector<Told> told;
    } cases[] = {
        {"plain words;", {{kOdd, "plain words"}}},
        {"]", {{kOdd}}},
        {"t:a,n:b]", {{kOdd}}},
        {"[n:foo]", {{kNoComma}}},
        {"[n:foo] {", {{kNoComma}}},
        {"// one; two", {{kComment, "// one"}, {kOdd, "two"}}},
        {"doc = \"one; two\";", {{kQuotes, "doc = \"one"}, {kOdd, "two\""}}},
        {"doc = \"one; ; two\";", {{kQuotes, "doc = \"one"}, {kOdd, "two\""}}},
        {"a = \"b=c\";", {{kEquals, "a = \"b=c\""}}},
        {"a = =b= c", {{kEquals}}},
        {"a = 1 // b", {{kMarks}}},
        {"a = http://x;", {{kMarks, "a = http://x"}}},
        {"// a; b = 2;", {{kComment, "// a"}}},
        {"// 5\" long; a = 1; b = 2;", {{kComment, "// 5\" long"}}},
        {"a = \"x; b = 2\"; c = \"y\";", {{kQuotes, "a = \"x"}}},
        {"x = 1 }", {{kBrace}}},
        {"a = b[2]", {{kBrackets}}},
        {"a = [b] = c }", {{kEquals}, {kBrackets}, {kBrace}}},
        {"[a] {", {{kBrace}}},
        {"[a]{}", {{kBrace}}},
        {"[a] b", {{kBehind}}},
        {"[a][b]", {{kBehind}}},
        {"foo {", {{kBeside}}},
        {"} foo", {{kBeside}}},
        {"}}", {{kBrace}}},
        {"{ }", {{kBrace}}},
        {"[a] b { x = 1 }", {{kBehind}}},
        {"[a] { x = 1 } b", {{kBehindBody}}},
        {"[a=b] { x }", {{kNoEquals}}},
        {"[a] { x = 1 = 2 }", {{kEquals}}},
        {"[a] { { x = 1 }", {{kBrace}}},
        {"[a=b] { x", {{kNoEquals}}},
        {"[a] b { x = 1 = 2", {{kBehind}, {kEquals}}},
        {"[t:part,n:foo,loose]", {{kNoColon}}},
        {"[t:part:b,n:foo]", {{kColons}}},
        {"[t:part,n:foo] {", {{kBrace}}},
        {"n:a,x:b] {", {{kColons}, {kBrace}}},
    };
    for (const auto& [statement, told] : cases) {
        Lines expected;
        for (const auto& [why, text] : told) {
            expected.push_back(std::string("3: ") + why + (text ? text : statement));
        }
        std::string file = "[t:template,n:x]\r\n{\r\n";
        EXPECT_EQ(losses(file.append(statement).append("\r\n}\r\n")), expected) << statement;
    }
}

TEST(Check, FindsNothingInWholeStatements) {
    for (const char* statement : {"", " ", ";;", "// a note; ", "a = 1; // why", "a = \"b\";",
                                  "a = ;", "= 5;", "a = b=", "[a]", "  [ \"a b\" ]", "{", "}",
                                  "[a] { x = 1; }", "[a] { x = 1 }", "[a] { x = 1;\r\ny = 2;\r\n}",
                                  "[t:part,n:foo]", "[t:part, n:foo, side:left]", "n:bar]"}) {
        std::string text = "[t:template,n:x]\r\n{\r\n";
        EXPECT_EQ(losses(text.append(statement).append("\r\n}\r\n")), Lines{}) << statement;
    }
}

TEST(Check, TellsLinesOfTheFile) {
    const std::pair<const char*, Lines> cases[] = {
        {"", {}},
        {"words only\r\n", {}},
        {"\n\n[info]\n{\n\n\nodd\na = 1;\n\nodd too\n}\n", {"7: " ODD "odd", "10: " ODD "odd too"}},
        {"\r\n\r\n[info]\r\n\r\n\t{\r\n\r\n\r\n\t\todd\r\n}", {"8: " ODD "odd"}},
        {"[info]\r\n{\r\na\nb\n\r\n\r\n  c;\rd;\r\n}\r\n",
         {"3: " ODD "a\\nb", "7: " ODD "c", "8: " ODD "d"}},
        {"[info]\r{\rodd\r}\r",
         {std::string("2: ") + kBeside + "{\\rodd\\r}",
          std::string("2: ") + kBrace + "{\\rodd\\r}"}},
        {"[info]\r\n{\r\none\r\n}\r\n[info]\r\n{\r\ntwo\r\n}\r\n",
         {"3: " ODD "one", "7: " ODD "two"}},
        {"note\r\n// x\r\n[info]\r\n{\r\n}\r\n", {"1: " ODD "note"}},
        {"\r\nnote\r\n\r\n// x; a = 1\r\n[tide]\r\n{\r\nodd\r\n}\r\n",
         {"2: ignored: it stands before the first header: note",
          "4: ignored: it stands before the first header: // x",
          "4: ignored: it stands before the first header: a = 1", "7: " ODD "odd"}},
        {"\xEF\xBB\xBF[info]\r\n{\r\n\xD0\x96\r\n}", {"3: " ODD "\xD0\x96"}},
        {"[info][info]\r\n{\r\n}\r\n[info]", {"1: ignored: the block is empty: [info]"}},
        {"[credits_movie]\r\n{\r\n}\r\n", {}},
        {"[credits_movie2]\r\n{\r\n}\r\n", {"1: " ODD "2]"}},
        {"lost\r\n[party]\r\none\r\n[party]\r\ntwo\r\n[party]\r\nthree\r\n",
         {"1: ignored: the first two sections, joined, take its place: lost", "3: " ODD "one",
          "5: " ODD "two", "7: " ODD "three"}},
        {"kept\r\n[party]\r\none\r\n", {"1: " ODD "kept", "3: " ODD "one"}},
        {"\r\n[a\tb]\r\n\r\none\r\n[a    b]\r\n\r\ntwo\r\n", {"4: " ODD "one", "7: " ODD "two"}},
        {"[info]\r\n{\r\ncaf\xE9\r\n}\r\n", {"3: " ODD "caf\xC3\xA9"}},
    };
    for (const auto& [bytes, expected] : cases) EXPECT_EQ(losses(bytes), expected) << bytes;
    std::string blocks = "[info]\r\n";
    for (int i = 0; i < 32768; ++i) blocks += "[a]\r\n";
    const Lines one = losses(blocks);
    ASSERT_EQ(one.size(), 1U);
    EXPECT_TRUE(one[0].starts_with("32769: cut: levels count 32767 sub-blocks")) << one[0];
}
#undef ODD

// The capital letters of what a load stored.
std::wstring capitals(const std::vector<GasTemplate>& templates) {
    std::wstring letters;
    const auto take = [&](std::wstring_view text) {
        std::ranges::copy_if(text, std::back_inserter(letters),
                             [](wchar_t c) { return c >= L'A' && c <= L'Z'; });
    };
    for (const GasTemplate& record : templates) {
        take(record.Comments);
        for (const GasProperty& property : record.Properties) {
            take(property.Name.text());
            take(property.Value);
        }
    }
    return letters;
}

// A statement of marks in any order; between some of them stands one of A, B, ...
std::string anyStatement(std::mt19937& random) {
    constexpr const char* kPieces[] = {"[", "]",  "{",  "}", "=",  ":",
                                       ",", "//", "\"", " ", "t:", "n:"};
    std::string statement;
    char letter = 'A';
    for (std::size_t left = random() % 9 + 1; left > 0; --left) {
        statement += kPieces[random() % std::size(kPieces)];
        if (random() % 2 == 0) statement += letter++;
    }
    return statement;
}

// The rules tell on themselves: where nothing is said to be left out, the records
// hold every word of a statement.
TEST(Check, WhatIsNotToldIsKept) {
    const test::RecordingHost host;
    std::mt19937 random(7);  // the same statements in each run
    std::size_t silent = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string statement = anyStatement(random);
        const std::string text = "[info]\r\n" + statement;
        if (!findLosses(text).empty()) continue;
        ++silent;
        std::vector<GasTemplate> templates;
        ASSERT_TRUE(loadGasText(widen(text), templates));
        const std::wstring all = capitals(templates);
        for (const char c : statement) {
            if (c < 'A' || c > 'Z') continue;
            EXPECT_NE(all.find(static_cast<wchar_t>(c)), std::wstring::npos) << c << statement;
        }
    }
    EXPECT_GT(silent, 2000U);
}

}  // namespace
}  // namespace kestrel
