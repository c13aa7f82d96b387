#include <gtest/gtest.h>

#include "dump.h"
#include "gas/load.h"
#include "services/program.h"

namespace kestrel {
namespace {

struct RuleCase {
    const char* name;
    const wchar_t* body;      // lines behind the block's header
    const wchar_t* expected;  // entries behind the block's own `name`
    const wchar_t* comments = L"";
};

void PrintTo(const RuleCase& c, std::ostream* out) {
    *out << c.name;
}

class LoadRules : public testing::TestWithParam<RuleCase> {
  protected:
    ProgramScope program_;
};

TEST_P(LoadRules, GivesTheEntries) {
    std::vector<GasTemplate> templates;
    const std::wstring text = std::wstring(L"[t:template,n:x]\r\n") + GetParam().body;
    ASSERT_TRUE(loadGasText(text, templates));
    ASSERT_EQ(templates.size(), 1u);
    std::wstring expected = L"name=x @#0";
    if (*GetParam().expected != L'\0') expected += std::wstring(L" | ") + GetParam().expected;
    EXPECT_EQ(dump(templates[0]), expected);
    EXPECT_EQ(templates[0].Comments, GetParam().comments);
}

const RuleCase kComments[] = {
    {"own_line", L"// a note", L"", L"Line 1:\t a note\r\n"},
    {"every_mark_is_removed", L"a //// b /// c", L"", L"Line 1:\ta  b / c\r\n"},
    {"behind_a_property", L"a = 1; // why", L"a=1 @#0", L"Line 2:\t why;\r\n"},
    {"blanks_before_the_cut_stay", L"  // why  ; b = 2", L"b=2 @#0", L"Line 1:\t why  ;\r\n"},
    {"code_before_it_is_lost", L"a = 1 // why", L"", L"Line 1:\ta = 1  why\r\n"},
    {"inside_a_value", L"a = http://x;", L"", L"Line 1:\ta = http:x;\r\n"},
    {"numbers_skip_blank_lines", L"\r\n\r\n{\r\n\r\n// b\r\n", L"", L"Line 2:\t b\r\n"},
    {"a_header_in_it_opens_nothing", L"// [a]\r\nb = 1;", L"b=1 @#0", L"Line 1:\t [a]\r\n"},
};
INSTANTIATE_TEST_SUITE_P(Comments, LoadRules, testing::ValuesIn(kComments));

const RuleCase kProperties[] = {
    {"two_on_a_line", L"x = 1; y = 2;", L"x=1 @#0 | y=2 @#0"},
    {"second_equals_is_lost", L"a = \"b=c\";", L"a=b @#0"},
    {"case_is_kept", L"Big_Name = Value;", L"Big_Name=Value @#0"},
    {"cleaned", L"\t \"a b\" = [ \"c;\t{d}\" ] ", L"a b=c @#0"},
    {"blanks_inside_stay", L"a = one  two ;", L"a=one  two @#0"},
    {"quotes_inside_go", L"a = x\"y\"z;", L"a=xyz @#0"},
    {"empty_value", L"a = ;", L"a= @#0"},
    {"empty_name", L"= 5;", L"=5 @#0"},
    {"closing_brace_on_it_does_not_close", L"[a]\r\n{\r\nx = 1 }\r\ny = 2;\r\n}\r\nz = 3;",
     L"[a] @a#1 | x=1 @a#1 | y=2 @a#1 | z=3 @#1"},
    {"brackets_but_no_brace", L"[a] = 5;", L"a=5 @#0"},
    {"lone_line_feed_is_part_of_it", L"a = 1\nb = 2;", L"a=1\nb @#0"},
    {"nothing_else_counts", L"plain words\r\n;;\r\n:\r\nt:\r\n/", L""},
};
INSTANTIATE_TEST_SUITE_P(Properties, LoadRules, testing::ValuesIn(kProperties));

const RuleCase kHeaders[] = {
    {"sub_block", L"[a]\r\n{\r\nx = 1;\r\n}\r\ny = 2;", L"[a] @a#1 | x=1 @a#1 | y=2 @#1"},
    {"nested", L"[a]\r\n{\r\n[b]\r\n{\r\n}\r\nx = 1;\r\n}", L"[a] @a#1 | [b] @a\\b#2 | x=1 @a#2"},
    {"level_is_an_ordinal", L"[a]\r\n{\r\n}\r\n[b]\r\n{\r\nx = 1;\r\n}",
     L"[a] @a#1 | [b] @b#2 | x=1 @b#2"},
    {"brace_on_the_header_line",
     L"[a] {\r\nx = 1;\r\n[b] {\r\ny = 2;\r\n}\r\nz = 3;\r\n}\r\nw = 4;",
     L"[a] @a#1 | x=1 @a#1 | [b] @a\\b#2 | y=2 @a\\b#2 | z=3 @a#2 | w=4 @#2"},
    {"two_closings_below_the_mark", L"[a]\r\n{\r\n[b]\r\n{\r\n}\r\n}\r\n}\r\nx = 1;",
     L"[a] @a#1 | [b] @a\\b#2 | x=1 @#2"},
    {"name_is_cleaned", L"[ \"a b\" ]", L"[a b] @a b#1"},
    {"backslash_in_a_name_drops_in_two", L"[a\\b]\r\n{\r\n}\r\nx = 1;",
     L"[a\\b] @a\\b#1 | x=1 @a#1"},
    {"named", L"[t:part,n:foo]\r\n{\r\nx = 1;\r\n}\r\ny = 2;",
     L"type=part @foo#1 | name=foo @foo#1 | x=1 @foo#1 | y=2 @#1"},
    {"named_inside", L"[a]\r\n{\r\n[T:part, n:foo]\r\n{\r\nx = 1;\r\n}\r\n}",
     L"[a] @a#1 | type=part @a\\foo#2 | name=foo @a\\foo#2 | x=1 @a\\foo#2"},
    {"named_with_another_key", L"[t:part,n:foo,Side:left,loose]",
     L"type=part @foo#1 | name=foo @foo#1 | Side=left @foo#1"},
    {"named_without_comma_is_ignored", L"[n:foo]\r\nx = 1;", L"x=1 @#0"},
    {"own_header_again", L"n:bar]", L"name=bar @#0"},
    {"own_header_swallows_a_brace", L"n:bar] {", L"name=bar @#0"},
    {"no_own_header_with_a_type", L"t:a,n:bar]", L""},
};
INSTANTIATE_TEST_SUITE_P(Headers, LoadRules, testing::ValuesIn(kHeaders));

const RuleCase kOneLiners[] = {
    {"body", L"[a]{x=1}\r\ny = 2;", L"[a] @a#1 | x=1 @a#1 | y=2 @#1"},
    {"body_without_property", L"[a=b]{}\r\ny = 2;", L"[a=b] @a=b#1 | y=2 @#1"},
    {"body_ended_by_a_semicolon", L"[a]{x=1;}\r\ny = 2;", L"[a] @a#1 | x=1 @a#1 | y=2 @#1"},
    {"two_properties", L"[a] { x = 1; z = 3; }\r\ny = 2;",
     L"[a] @a#1 | x=1 @a#1 | z=3 @a#1 | y=2 @#1"},
    {"opening_line", L"[a] { x = 1;\r\nz = 3;\r\n}\r\ny = 2;",
     L"[a] @a#1 | x=1 @a#1 | z=3 @a#1 | y=2 @#1"},
    {"inside_a_block", L"[a]\r\n{\r\n[b]{x=1}\r\ny = 2;\r\n}\r\nz = 3;",
     L"[a] @a#1 | [b] @a\\b#2 | x=1 @a\\b#2 | y=2 @a#2 | z=3 @#2"},
    {"only_the_first_body_counts", L"[a]{x=1}[b]{y=2}", L"[a] @a#1 | x=1 @a#1"},
};
INSTANTIATE_TEST_SUITE_P(OneLiners, LoadRules, testing::ValuesIn(kOneLiners));

}  // namespace
}  // namespace kestrel
