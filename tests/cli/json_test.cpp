#include "cli/json.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kestrel::cli {
namespace {

TEST(Json, AnyTextIsAValidString) {
    const std::pair<std::wstring, const char*> cases[] = {
        {L"", R"("")"},
        {L"a \"b\" \\c/", R"("a \"b\" \\c/")"},
        {L"\r\n\t\x01\x1F\x7F", R"("\r\n\u0009\u0001\u001f\u007f")"},
        {std::wstring(L"a\0b", 3), R"("a\u0000b")"},
        {L"caf\xE9 \x20AC\x81", "\"caf\xC3\xA9 \xE2\x82\xAC\xC2\x81\""},
        {L"\xD800", R"("\ud800")"},
        {L"x\xDC80y\xDFFF", R"("x\udc80y\udfff")"},
        {L"\xFFFF", "\"\xEF\xBF\xBF\""},
    };
    for (const auto& [text, json] : cases) EXPECT_EQ(jsonText(text), json);
    // Two halves where a character is 16 bits wide.
    EXPECT_EQ(jsonText(L"\U0001F40B"),
              sizeof(wchar_t) == 2 ? R"("\ud83d\udc0b")" : "\"\xF0\x9F\x90\x8B\"");
}

std::string jsonObject(const GasTemplate& record) {
    std::ostringstream out;
    writeJson(out, record);
    return out.str();
}

TEST(Json, AnObjectHasEveryField) {
    GasTemplate record{L"N", L"K", {}, L"T\r\n", L"C"};
    EXPECT_EQ(jsonObject(record),
              R"({"Name":"N","Kind":"K","Text":"T\r\n","Comments":"C","Properties":[]})");
    record.Properties = {{L"a", L"", L"a", true, 1}, {L"b", L"\"", L"a\\c", false, 2}};
    EXPECT_EQ(jsonObject(record),
              R"({"Name":"N","Kind":"K","Text":"T\r\n","Comments":"C","Properties":)"
              R"([["a","","a",true,1],["b","\"","a\\c",false,2]]})");
}

}  // namespace
}  // namespace kestrel::cli
