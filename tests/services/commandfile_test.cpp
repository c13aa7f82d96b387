#include "services/commandfile.h"

#include <gtest/gtest.h>

#include "services/bytes.h"
#include "support/tempfolder.h"

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

TEST(CommandFile, PathsAsFileManagersCopyThem) {
    const test::TempFolder folder;
    const std::wstring there = folder.put(L"'a'.gas", "");
#ifdef _WIN32
    const std::wstring root = L"C:\\";
    const std::wstring address = L"C:/";
    EXPECT_EQ(plainPath(L"file://server/maps/a.gas"), L"\\\\server\\maps\\a.gas");
#else
    const std::wstring root = L"/";
    const std::wstring address;
#endif
    const struct {
        std::wstring text;
        std::wstring path;
    } cases[] = {
        {L"  a b.gas ", L"a b.gas"},
        {L"\"a b.gas\"", L"a b.gas"},
        {L" 'a b.gas' ", L"a b.gas"},
        {L"'a.gas\"", L"'a.gas\""},
        {L"\"", L"\""},
        {L"'" + there + L"'", there},
        {there, there},
        {L"file:///" + address + L"a%20b%C5%82%zz%4.gas", root + L"a b\u0142%zz%4.gas"},
        {L"FILE://localhost/" + address + L"a.gas\r\nfile:///b.gas", root + L"a.gas"},
        {L"'file:/" + address + L"%FF.gas'", root + std::wstring{0xDCFF} + L".gas"},
        {L"file:a.gas", L"file:a.gas"},
        {L"", L""},
    };
    for (const auto& c : cases) EXPECT_EQ(plainPath(c.text), c.path) << toUtf8(c.text);
}

}  // namespace
}  // namespace kestrel
