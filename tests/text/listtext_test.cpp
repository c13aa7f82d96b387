#include "text/listtext.h"

#include <gtest/gtest.h>

#include "services/program.h"

namespace kestrel {
namespace {

const std::wstring kEquals(50, L'=');
const std::wstring kStars(50, L'*');

std::wstring heading(std::wstring_view tag, std::wstring_view sorted) {
    return std::wstring(L"DS Template for: ")
               .append(tag)
               .append(L"\r\nFormat: TAB Delimited with CR+LF\r\n")
               .append(sorted) +
           L"\r\n" + kEquals + L"\r\n";
}

TEST(ListText, HeadsSortsAndNumbersTheRowsAsShown) {
    const ProgramScope program;
    const struct {
        ListShot list;
        std::wstring text;
    } cases[] = {
        {{L"C:\\a.gas",
          true,
          0,
          0,
          {L"Property", L"Value", L"Group"},
          {{L"mass", L"2", L"T\\p_1\\"}, {L"name", L"box", L"T\\"}, {L"short"}}},
         heading(L"C:\\a.gas", L"Sorted: Yes  (Property, Asc)") +
             L"#\tProperty\tValue\tGroup\r\n-\t--------\t-----\t-----\t\r\n"
             L"1\tmass\t2\tT\\p_1\\\r\n2\tname\tbox\tT\\\r\n3\tshort\t\t\r\n"},
        {{L"", false, 0, 0, {L"Template"}, {}},
         heading(L"", L"Sorted: No") + L"#\tTemplate\r\n-\t--------\t\r\n"},
        {{L"", true, 1, 1, {L"A", L"Bc"}, {}},
         heading(L"", L"Sorted: Yes  (Bc, Desc)") + L"#\tA\tBc\r\n-\t-\t--\t\r\n"},
        {{L"", false, 0, 0, {}, {}}, heading(L"", L"Sorted: No") + L"#\r\n-\t\r\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(gstrMakeListText(c.list), c.text + kStars + L"\r\n");
    EXPECT_EQ(gProgram().routine, L"gstrMakeText");
}

}  // namespace
}  // namespace kestrel
