#include "gas/check.h"

#include <gtest/gtest.h>

#include <random>

#include "gastest.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

// The reasons, and how the tables below call them.
const Words kReasons{
    {"ignored: this is no property, header, brace or comment: ", "odd: "},
    {"ignored: a header with \"n:\" needs a \",\", as in [t:kind,n:name]: ", "no comma: "},
    {"ignored: the block is empty: ", "empty: "},
    {"ignored: it stands before the first header: ", "before: "},
    {"ignored: the first two sections, joined, take its place: ", "replaced: "},
    {"cut: a \";\" ends a comment: the rest of the line is none: ", "comment: "},
    {"cut: a \";\" ends a value, in quotes too: ", "quotes: "},
    {"cut: what stands behind the second \"=\" is left out: ", "equals: "},
    {"cut: what stands before \"//\" becomes a part of the comment: ", "marks: "},
    {"cut: a brace here is not counted: ", "brace: "},
    {"cut: what stands beside the brace is left out: ", "beside: "},
    {"cut: brackets are taken out of a property: ", "brackets: "},
    {"cut: what stands behind \"]\" is left out: ", "behind ]: "},
    {"cut: what stands behind \"}\" is left out: ", "behind }: "},
    {"cut: what stands behind \"{\" has no \"=\": ", "no equals: "},
    {"cut: a part of a header without \":\" is left out: ", "no colon: "},
    {"cut: what stands behind the second \":\" is left out: ", "colons: "},
    {"cut: levels count 32767 sub-blocks; this one and those behind it have the level of the "
     "last: ",
     "levels: "}};

// "LINE REASON: STATEMENT" for each loss.
std::string losses(std::string_view bytes) {
    std::vector<std::string> told;
    for (const Loss& loss : findLosses(bytes)) {
        told.push_back(std::to_string(loss.line) + (loss.ignored ? " ignored: " : " cut: ") +
                       toUtf8(loss.why) + ": " + flat(loss.text));
    }
    return inWords(told, kReasons);
}

TEST(Check, TellsWhatIsLeftOutOfAStatement) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain words;", "3 odd: plain words"},
        {"]", "3 odd: ]"},
        {"t:a,n:b]", "3 odd: t:a,n:b]"},
        {"[n:foo]", "3 no comma: [n:foo]"},
        {"[n:foo] {", "3 no comma: [n:foo] {"},
        {"// one; two", "3 comment: // one, 3 odd: two"},
        {"doc = \"one; ; two\";", "3 quotes: doc = \"one, 3 odd: two\""},
        {"a = \"b=c\";", "3 equals: a = \"b=c\""},
        {"a = =b= c", "3 equals: a = =b= c"},
        {"a = http://x;", "3 marks: a = http://x"},
        {"// a; b = 2;", "3 comment: // a"},
        {"// 5\" long; a = 1; b = 2;", "3 comment: // 5\" long"},
        {"a = \"x; b = 2\"; c = \"y\";", "3 quotes: a = \"x"},
        {"x = 1 }", "3 brace: x = 1 }"},
        {"a = b[2]", "3 brackets: a = b[2]"},
        {"a = [b] = c }",
         "3 equals: a = [b] = c }, 3 brackets: a = [b] = c }, 3 brace: a = [b] = c }"},
        {"[a] {", "3 brace: [a] {"},
        {"[a] b", "3 behind ]: [a] b"},
        {"foo {", "3 beside: foo {"},
        {"} foo", "3 beside: } foo"},
        {"}}", "3 brace: }}"},
        {"{ }", "3 brace: { }"},
        {"[a] b { x = 1 }", "3 behind ]: [a] b { x = 1 }"},
        {"[a] { x = 1 } b", "3 behind }: [a] { x = 1 } b"},
        {"[a=b] { x }", "3 no equals: [a=b] { x }"},
        {"[a] { x = 1 = 2 }", "3 equals: [a] { x = 1 = 2 }"},
        {"[a] { { x = 1 }", "3 brace: [a] { { x = 1 }"},
        {"[a=b] { x", "3 no equals: [a=b] { x"},
        {"[a] b { x = 1 = 2", "3 behind ]: [a] b { x = 1 = 2, 3 equals: [a] b { x = 1 = 2"},
        {"[t:part,n:foo,loose]", "3 no colon: [t:part,n:foo,loose]"},
        {"[t:part:b,n:foo]", "3 colons: [t:part:b,n:foo]"},
        {"[t:part,n:foo] {", "3 brace: [t:part,n:foo] {"},
        {"n:a,x:b] {", "3 colons: n:a,x:b] {, 3 brace: n:a,x:b] {"},
    };
    for (const auto& [statement, told] : cases) {
        EXPECT_EQ(losses(lines(std::string("[info]|{|") + statement + "|}|")), told);
    }
}

TEST(Check, FindsNothingInWholeStatements) {
    for (const char* statement :
         {"", " ", ";;", "// a note; ", "a = 1; // why", "a = \"b\";", "a = ;", "= 5;",
          "a = b=", "[a]", "  [ \"a b\" ]", "{", "}", "[a] { x = 1; }", "[a] { x = 1 }",
          "[a] { x = 1;|y = 2;|}", "[t:part,n:foo]", "[t:part, n:foo, side:left]", "n:bar]"}) {
        EXPECT_EQ(losses(lines(std::string("[t:template,n:x]|{|") + statement + "|}|")), "");
    }
}

TEST(Check, TellsLinesOfTheFile) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"words only|", ""},
        {"\n\n[info]\n{\n\n\nodd\na = 1;\n\nodd too\n}\n", "7 odd: odd, 10 odd: odd too"},
        {"||[info]||\t{|||\t\todd|}", "8 odd: odd"},
        {"[info]|{|a\nb\n||  c;\rd;|}|", "3 odd: a\nb, 7 odd: c, 8 odd: d"},
        {"[info]\r{\rodd\r}\r", "2 beside: {\rodd\r}, 2 brace: {\rodd\r}"},
        {"[info]|{|one|}|[info]|{|two|}|", "3 odd: one, 7 odd: two"},
        {"note|// x|[info]|{|}|", "1 odd: note"},
        {"|note||// x; a = 1|[tide]|{|odd|}|",
         "2 before: note, 4 before: // x, 4 before: a = 1, 7 odd: odd"},
        {"\xEF\xBB\xBF[info]|{|\xD0\x96|}", "3 odd: \u0416"},
        {"[info][info]|{|}|[info]", "1 empty: [info]"},
        {"[credits_movie]|{|}|", ""},
        {"[credits_movie2]|{|}|", "1 odd: 2]"},
        {"lost|[party]|one|[party]|two|[party]|three|",
         "1 replaced: lost, 3 odd: one, 5 odd: two, 7 odd: three"},
        {"kept|[party]|one|", "1 odd: kept, 3 odd: one"},
        {"|[a\tb]||one|[a    b]||two|", "4 odd: one, 7 odd: two"},
        {"[info]|{|caf\xE9|}|", "3 odd: caf\u00E9"},
    };
    for (const auto& [bytes, told] : cases) EXPECT_EQ(losses(lines(bytes)), told) << bytes;
    std::string blocks = "[info]\r\n";
    for (int i = 0; i < 32768; ++i) blocks += "[a]\r\n";
    EXPECT_EQ(losses(blocks), "32769 levels: [a]");
}

// The rules tell on themselves: where nothing is said to be left out, the records
// hold every word of a statement.
TEST(Check, WhatIsNotToldIsKept) {
    const test::RecordingHost host;
    constexpr const char* kPieces[] = {"[", "]",  "{",  "}", "=",  ":",
                                       ",", "//", "\"", " ", "t:", "n:"};
    std::mt19937 random(7);  // the same statements in each run
    std::size_t silent = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string statement;
        char letter = 'A';
        for (std::size_t left = random() % 9 + 1; left > 0; --left) {
            statement += kPieces[random() % std::size(kPieces)];
            if (random() % 2 == 0) statement += letter++;
        }
        const std::string text = "[info]\r\n" + statement;
        if (!findLosses(text).empty()) continue;
        ++silent;
        const GasTemplate record = loaded(text).at(0);
        const std::string kept = dump(record) + toUtf8(record.Comments);
        while (letter-- > 'A') EXPECT_NE(kept.find(letter), kept.npos) << letter << statement;
    }
    EXPECT_GT(silent, 2000U);
}

}  // namespace
}  // namespace kestrel
