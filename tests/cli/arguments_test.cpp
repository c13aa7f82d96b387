#include "cli/arguments.h"

#include <gtest/gtest.h>

#include "services/bytes.h"

namespace kestrel::cli {
namespace {

using Words = std::vector<std::wstring>;

struct WordsCase {
    const char* name;
    Words words;
    const wchar_t* expected;  // operands, "|", options and their values
};

void PrintTo(const WordsCase& c, std::ostream* out) {
    *out << c.name;
}

std::wstring read(const Words& words) try {
    const Arguments arguments(words);
    std::wstring text;
    for (const std::wstring& operand : arguments.operands()) text += L"<" + operand + L">";
    text += L"|";
    for (const auto& [option, value] : arguments.options()) text += option + L"<" + value + L">";
    return text;
} catch (const WrongUsage& wrong) {
    return wrong.text();
}

class ReadWords : public testing::TestWithParam<WordsCase> {};

TEST_P(ReadWords, GivesOperandsAndOptions) {
    EXPECT_EQ(toUtf8(read(GetParam().words)), toUtf8(GetParam().expected));
}

const WordsCase kCases[] = {
    {"none", {}, L"|"},
    {"operands", {L"show", L"a b.gas", L""}, L"<show><a b.gas><>|"},
    {"options_anywhere",
     {L"--listed", L"show", L"f", L"--in", L"x", L"n"},
     L"<show><f><n>|--in<x>--listed<>"},
    {"joined_value", {L"--in=a=b", L"f"}, L"<f>|--in<a=b>"},
    {"empty_values", {L"--title=", L"--single", L""}, L"|--single<>--title<>"},
    {"value_like_an_option", {L"--in", L"--listed"}, L"|--in<--listed>"},
    {"end_as_a_value", {L"--in", L"--", L"f"}, L"<f>|--in<-->"},
    {"last_one_counts", {L"--in=a", L"--in", L"b"}, L"|--in<b>"},
    {"behind_the_end", {L"f", L"--", L"--in", L"-x", L"--"}, L"<f><--in><-x><-->|"},
    {"single_dash", {L"-"}, L"<->|"},
    {"unknown",
     {L"--lost"},
     L"there is no option \"--lost\"; put \"--\" before names that begin with \"-\""},
    {"unknown_with_value",
     {L"--lost=1"},
     L"there is no option \"--lost\"; put \"--\" before names that begin with \"-\""},
    {"short",
     {L"-x.gas"},
     L"there is no option \"-x.gas\"; put \"--\" before names that begin with \"-\""},
    {"value_missing", {L"f", L"--in"}, L"\"--in\" needs a value behind it"},
    {"value_too_much", {L"--listed=yes"}, L"\"--listed\" takes no value"},
};
INSTANTIATE_TEST_SUITE_P(All, ReadWords, testing::ValuesIn(kCases));

}  // namespace
}  // namespace kestrel::cli
