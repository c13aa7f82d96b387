#include "services/commandfile.h"

#include <gtest/gtest.h>

namespace kestrel {
namespace {

using File = std::optional<std::wstring>;

TEST(CommandFile, OfALine) {
    const struct {
        const wchar_t* line;
        File file;
    } cases[] = {
        {L"   ", {}},
        {L"  C:\\mod files\\a.gas  ", L"C:\\mod files\\a.gas"},
        {L"\"C:\\mod files\\a.gas\" other words", L"C:\\mod files\\a.gas"},
        {L"first \" a.gas \" \"b.gas\"", L"a.gas"},
        {L"\"a.gas", L"a.gas"},
        {L"\"\" a.gas", {}},
        {L"a.gas \"  \"", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(gvarCommandFile(std::wstring_view(c.line)), c.file) << c.line;
    }
}

TEST(CommandFile, OfArguments) {
    const struct {
        std::vector<std::wstring> arguments;
        File file;
    } cases[] = {
        {{}, {}},
        {{L"  "}, {}},
        {{L"a.gas"}, L"a.gas"},
        {{L"two  blanks.gas"}, L"two  blanks.gas"},
        {{L" blank first.gas"}, L" blank first.gas"},
        {{L"quo\"te.gas"}, L"quo\"te.gas"},
        {{L"my", L"file.gas"}, L"my file.gas"},
        {{L"my file.gas", L"other.gas"}, L"my file.gas"},
        {{L"words", L"my file.gas"}, L"my file.gas"},
    };
    for (const auto& c : cases) EXPECT_EQ(gvarCommandFile(c.arguments), c.file);
}

}  // namespace
}  // namespace kestrel
