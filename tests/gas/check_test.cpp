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

struct StatementCase {
    const char* name;
    const char* statement;  // in line 3
    Lines expected;         // without the "3: "
};

void PrintTo(const StatementCase& c, std::ostream* out) {
    *out << c.name;
}

class CheckStatement : public testing::TestWithParam<StatementCase> {};

TEST_P(CheckStatement, TellsWhatIsLeftOut) {
    const std::string head = "[t:template,n:x]\r\n{\r\n";
    Lines expected = GetParam().expected;
    for (std::string& line : expected) line.insert(0, "3: ");
    EXPECT_EQ(losses(head + GetParam().statement + "\r\n}\r\n"), expected);
}

constexpr const char* kFineStatements[] = {
    "",
    " ",
    ";;",
    "// a note; ",
    "a = 1; // why",
    "a = \"b\";",
    "a = ;",
    "= 5;",
    "a = b=",
    "[a]",
    "  [ \"a b\" ]",
    "{",
    "}",
    "[a] { x = 1; }",
    "[a] { x = 1 }",
    "[a] { x = 1;\r\ny = 2;\r\n}",
    "[t:part,n:foo]",
    "[t:part, n:foo, side:left]",
    "n:bar]",
};

TEST(Check, FindsNothingInWholeStatements) {
    for (const char* statement : kFineStatements) {
        std::string text = "[t:template,n:x]\r\n{\r\n";
        EXPECT_EQ(losses(text.append(statement).append("\r\n}\r\n")), Lines{}) << statement;
    }
}

const StatementCase kIgnored[] = {
    {"words",
     "plain words;",
     {"ignored: this is no property, header, brace or comment: plain words"}},
    {"stray_bracket", "]", {"ignored: this is no property, header, brace or comment: ]"}},
    {"header_without_a_bracket",
     "t:a,n:b]",
     {"ignored: this is no property, header, brace or comment: t:a,n:b]"}},
    {"named_without_comma",
     "[n:foo]",
     {"ignored: a header with \"n:\" needs a \",\", as in [t:kind,n:name]: [n:foo]"}},
    {"named_without_comma_and_a_brace",
     "[n:foo] {",
     {"ignored: a header with \"n:\" needs a \",\", as in [t:kind,n:name]: [n:foo] {"}},
    {"rest_of_a_comment",
     "// one; two",
     {"cut: a \";\" ends a comment: the rest of the line is none: // one",
      "ignored: this is no property, header, brace or comment: two"}},
    {"rest_of_a_value",
     "doc = \"one; two\";",
     {"cut: a \";\" ends a value, in quotes too: doc = \"one",
      "ignored: this is no property, header, brace or comment: two\""}},
};
INSTANTIATE_TEST_SUITE_P(Ignored, CheckStatement, testing::ValuesIn(kIgnored));

const StatementCase kCutStatements[] = {
    {"second_equals",
     "a = \"b=c\";",
     {"cut: what stands behind the second \"=\" is left out: a = \"b=c\""}},
    {"third_equals",
     "a = =b= c",
     {"cut: what stands behind the second \"=\" is left out: a = =b= c"}},
    {"code_before_a_comment",
     "a = 1 // b",
     {"cut: what stands before \"//\" becomes a part of the comment: a = 1 // b"}},
    {"comment_marks_in_a_value",
     "a = http://x;",
     {"cut: what stands before \"//\" becomes a part of the comment: a = http://x"}},
    {"property_behind_a_comment",
     "// a; b = 2;",
     {"cut: a \";\" ends a comment: the rest of the line is none: // a"}},
    {"quote_in_a_comment",
     "// 5\" long; a = 1; b = 2;",
     {"cut: a \";\" ends a comment: the rest of the line is none: // 5\" long"}},
    {"property_behind_quotes",
     "a = \"x; b = 2\"; c = \"y\";",
     {"cut: a \";\" ends a value, in quotes too: a = \"x"}},
    {"brace_on_a_property", "x = 1 }", {"cut: a brace here is not counted: x = 1 }"}},
    {"brackets_on_a_property", "a = b[2]", {"cut: brackets are taken out of a property: a = b[2]"}},
    {"several_reasons",
     "a = [b] = c }",
     {"cut: what stands behind the second \"=\" is left out: a = [b] = c }",
      "cut: brackets are taken out of a property: a = [b] = c }",
      "cut: a brace here is not counted: a = [b] = c }"}},
    {"brace_on_a_header", "[a] {", {"cut: a brace here is not counted: [a] {"}},
    {"empty_body", "[a]{}", {"cut: a brace here is not counted: [a]{}"}},
    {"behind_a_header", "[a] b", {"cut: what stands behind \"]\" is left out: [a] b"}},
    {"second_header", "[a][b]", {"cut: what stands behind \"]\" is left out: [a][b]"}},
    {"beside_an_opening_brace", "foo {", {"cut: what stands beside the brace is left out: foo {"}},
    {"beside_a_closing_brace", "} foo", {"cut: what stands beside the brace is left out: } foo"}},
    {"two_braces", "}}", {"cut: a brace here is not counted: }}"}},
    {"empty_braces", "{ }", {"cut: a brace here is not counted: { }"}},
    {"between_header_and_body",
     "[a] b { x = 1 }",
     {"cut: what stands behind \"]\" is left out: [a] b { x = 1 }"}},
    {"behind_a_body",
     "[a] { x = 1 } b",
     {"cut: what stands behind \"}\" is left out: [a] { x = 1 } b"}},
    {"body_without_equals",
     "[a=b] { x }",
     {"cut: what stands behind \"{\" has no \"=\": [a=b] { x }"}},
    {"second_equals_in_a_body",
     "[a] { x = 1 = 2 }",
     {"cut: what stands behind the second \"=\" is left out: [a] { x = 1 = 2 }"}},
    {"second_brace_of_a_body",
     "[a] { { x = 1 }",
     {"cut: a brace here is not counted: [a] { { x = 1 }"}},
    {"opening_line_without_equals",
     "[a=b] { x",
     {"cut: what stands behind \"{\" has no \"=\": [a=b] { x"}},
    {"opening_line_second_equals",
     "[a] b { x = 1 = 2",
     {"cut: what stands behind \"]\" is left out: [a] b { x = 1 = 2",
      "cut: what stands behind the second \"=\" is left out: [a] b { x = 1 = 2"}},
    {"part_of_a_named_header",
     "[t:part,n:foo,loose]",
     {"cut: a part of a header without \":\" is left out: [t:part,n:foo,loose]"}},
    {"second_colon",
     "[t:part:b,n:foo]",
     {"cut: what stands behind the second \":\" is left out: [t:part:b,n:foo]"}},
    {"named_header_with_a_brace",
     "[t:part,n:foo] {",
     {"cut: a brace here is not counted: [t:part,n:foo] {"}},
    {"own_header",
     "n:a,x:b] {",
     {"cut: what stands behind the second \":\" is left out: n:a,x:b] {",
      "cut: a brace here is not counted: n:a,x:b] {"}},
};
INSTANTIATE_TEST_SUITE_P(Cut, CheckStatement, testing::ValuesIn(kCutStatements));

struct FileCase {
    const char* name;
    const char* bytes;
    Lines expected;
};

void PrintTo(const FileCase& c, std::ostream* out) {
    *out << c.name;
}

class CheckFile : public testing::TestWithParam<FileCase> {};

TEST_P(CheckFile, TellsLinesOfTheFile) {
    EXPECT_EQ(losses(GetParam().bytes), GetParam().expected);
}

#define NONE "ignored: this is no property, header, brace or comment: "
const FileCase kFiles[] = {
    {"nothing", "", {}},
    {"no_block", "words only\r\n", {}},
    {"line_feeds",
     "\n\n[info]\n{\n\n\nodd\na = 1;\n\nodd too\n}\n",
     {"7: " NONE "odd", "10: " NONE "odd too"}},
    {"blank_lines_and_tabs",
     "\r\n\r\n[info]\r\n\r\n\t{\r\n\r\n\r\n\t\todd\r\n}",
     {"8: " NONE "odd"}},
    {"mixed_ends",
     "[info]\r\n{\r\na\nb\n\r\n\r\n  c;\rd;\r\n}\r\n",
     {"3: " NONE "a\\nb", "7: " NONE "c", "8: " NONE "d"}},
    {"carriage_returns",
     "[info]\r{\rodd\r}\r",
     {"2: cut: what stands beside the brace is left out: "
      "{\\rodd\\r}",
      "2: cut: a brace here is not counted: {\\rodd\\r}"}},
    {"two_blocks",
     "[info]\r\n{\r\none\r\n}\r\n[info]\r\n{\r\ntwo\r\n}\r\n",
     {"3: " NONE "one", "7: " NONE "two"}},
    {"before_a_known_kind", "note\r\n// x\r\n[info]\r\n{\r\n}\r\n", {"1: " NONE "note"}},
    {"before_an_unknown_kind",
     "\r\nnote\r\n\r\n// x; a = 1\r\n[tide]\r\n{\r\nodd\r\n}\r\n",
     {"2: ignored: it stands before the first header: note",
      "4: ignored: it stands before the first header: // x",
      "4: ignored: it stands before the first header: a = 1", "7: " NONE "odd"}},
    {"empty_block", "[info][info]\r\n{\r\n}\r\n[info]", {"1: ignored: the block is empty: [info]"}},
    {"end_of_a_header", "[credits_movie]\r\n{\r\n}\r\n", {}},
    {"more_than_the_end_of_a_header", "[credits_movie2]\r\n{\r\n}\r\n", {"1: " NONE "2]"}},
    {"joined_parties",
     "lost\r\n[party]\r\none\r\n[party]\r\ntwo\r\n[party]\r\nthree\r\n",
     {"1: ignored: the first two sections, joined, take its place: lost", "3: " NONE "one",
      "5: " NONE "two", "7: " NONE "three"}},
    {"two_parties", "kept\r\n[party]\r\none\r\n", {"1: " NONE "kept", "3: " NONE "one"}},
    {"header_of_several_spellings",
     "\r\n[a\tb]\r\n\r\none\r\n[a    b]\r\n\r\ntwo\r\n",
     {"4: " NONE "one", "7: " NONE "two"}},
    {"high_bytes", "[info]\r\n{\r\ncaf\xE9\r\n}\r\n", {"3: " NONE "caf\xC3\xA9"}},
};
#undef NONE
INSTANTIATE_TEST_SUITE_P(All, CheckFile, testing::ValuesIn(kFiles));

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
    constexpr const char* kMarks[] = {"[", "]",  "{",  "}", "=",  ":",
                                      ",", "//", "\"", " ", "t:", "n:"};
    std::string statement;
    char letter = 'A';
    for (std::size_t left = random() % 9 + 1; left > 0; --left) {
        statement += kMarks[random() % std::size(kMarks)];
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
