#include "cli/arguments.h"

#include <gtest/gtest.h>

#include "services/bytes.h"

namespace kestrel::cli {
namespace {

using Words = std::vector<std::wstring>;

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

TEST(Arguments, AreOperandsAndOptions) {
    constexpr const wchar_t* kHint = L"; put \"--\" before names that begin with \"-\"";
    const std::pair<Words, std::wstring> cases[] = {
        {{}, L"|"},
        {{L"show", L"a b.gas", L""}, L"<show><a b.gas><>|"},
        {{L"--listed", L"show", L"f", L"--in", L"x", L"n"}, L"<show><f><n>|--in<x>--listed<>"},
        {{L"--in=a=b", L"f"}, L"<f>|--in<a=b>"},
        {{L"--title=", L"--single", L""}, L"|--single<>--title<>"},
        {{L"--in", L"--listed"}, L"|--in<--listed>"},
        {{L"--in", L"--", L"f"}, L"<f>|--in<-->"},
        {{L"--in=a", L"--in", L"b"}, L"|--in<b>"},
        {{L"f", L"--", L"--in", L"-x", L"--"}, L"<f><--in><-x><-->|"},
        {{L"-"}, L"<->|"},
        {{L"--lost"}, std::wstring(L"there is no option \"--lost\"") + kHint},
        {{L"--lost=1"}, std::wstring(L"there is no option \"--lost\"") + kHint},
        {{L"-x.gas"}, std::wstring(L"there is no option \"-x.gas\"") + kHint},
        {{L"f", L"--in"}, L"\"--in\" needs a value behind it"},
        {{L"--listed=yes"}, L"\"--listed\" takes no value"},
    };
    for (const auto& [words, expected] : cases) EXPECT_EQ(toUtf8(read(words)), toUtf8(expected));
}

}  // namespace
}  // namespace kestrel::cli
