// The texts of templates and of lists.

#include <gtest/gtest.h>

#include "services/program.h"
#include "support/recordinghost.h"
#include "text/render.h"
#include "view/listtext.h"

namespace kestrel {
namespace {

const std::wstring kEquals = std::wstring(50, L'=') + L"\r\n";
const std::wstring kMinus = std::wstring(50, L'-') + L"\r\n";
const std::wstring kComments = kMinus + L"Comments:\r\n";
const std::wstring kStars = std::wstring(50, L'*') + L"\r\n";
constexpr const wchar_t* kFormat = L"Format: TAB Delimited with CR+LF\r\n";

std::wstring headed(const std::wstring& name, const std::wstring& rows) {
    return L"DS Template for: " + name + L"\r\n" + kFormat + kEquals + L"Name\tValue\tGroup\r\n" +
           kMinus + rows;
}

const GasTemplate kCrate{L"Template0",
                         L"Template",
                         {{L"name", L"box", {}, false, 0}, {L"mass", L"2", L"physics", false, 1}},
                         L"",
                         L"Line 3:\t crate\r\n"};
const std::wstring kNameRow = L"name\tbox\tTemplate0\\\r\n";
const std::wstring kMassRow = L"mass\t2\tTemplate0\\physics_1\\\r\n";
const std::wstring kCrateText =
    headed(L"Template0", kNameRow + kMassRow) + kComments + kCrate.Comments + kStars;

TEST(Render, AFilterTakesRowsAndTheComments) {
    const test::RecordingHost host;
    const GasTemplate slash{L"a\\", L"Template", {{L"x", L"1", {}, false, 0}}, L"", L""};
    const GasTemplate empty{L"Info0", L"Info", {}, L"", L""};
    const struct {
        const GasTemplate& record;
        std::wstring filter;
        bool filterOnly;
        std::wstring text;
        std::wstring after;
    } cases[] = {
        {kCrate, L"", false, kCrateText, L"Template0\\"},
        {kCrate, L"not like it", false, kCrateText, L"not like it\\"},
        {kCrate, L"", true, headed(L"Template0", kNameRow) + kStars, L"Template0\\"},
        {kCrate, L"Template0\\physics_1", true, headed(L"Template0", kMassRow) + kStars,
         L"Template0\\physics_1\\"},
        {kCrate, L"Template0\\Physics_1", true, headed(L"Template0", L"") + kStars,
         L"Template0\\Physics_1\\"},
        {slash, L"", true, headed(L"a\\", L"x\t1\ta\\\\\r\n") + kStars, L"a\\\\"},
        {empty, L"", false, headed(L"Info0", L"") + kComments + kStars, L"Info0\\"},
    };
    for (const auto& c : cases) {
        std::wstring filter = c.filter;
        EXPECT_EQ(gstrMakeText(c.record, nullptr, filter, c.filterOnly, nullptr), c.text);
        EXPECT_EQ(filter, c.after);
    }
    EXPECT_EQ(gProgram().routine, L"gstrMakeText");
    EXPECT_EQ(gstrMakeFileText(L"a.gas", {}, nullptr, 0, nullptr), L"") << "no heading alone";
}

TEST(Render, PartsAreTheWhole) {
    const test::RecordingHost host;
    GasTemplate big = kCrate;
    big.Properties.assign(10000, {L"x", L"1", L"a\\b", false, 1});
    std::wstring whole;
    std::size_t longest = 0;
    makeText(big, [&](std::wstring_view part) {
        whole += part;
        longest = std::max(longest, part.size());
    });
    std::wstring filter;
    EXPECT_EQ(whole, gstrMakeText(big, nullptr, filter, false, nullptr));
    EXPECT_LT(longest, 100000U);
}

TEST(Render, TheDialogTellsTheLastRowWrittenAndCancels) {
    test::RecordingHost host;
    host.logsProgressSteps = true;
    for (const std::size_t cancelAt : {std::size_t{100}, std::size_t{1}}) {
        host.log.clear();
        host.progressSteps = 0;
        host.cancelAt = cancelAt;
        std::wstring filter;
        const std::wstring text = gstrMakeText(kCrate, &host, filter, true, nullptr);
        EXPECT_EQ(text.empty(), cancelAt == 1) << "a cut text is never handed out";
        EXPECT_EQ(host.log, (std::vector<std::string>{
                                "disable", "Process: Processing: Template0",
                                "SubProcess: ", "show: owner", "ShowProgress: 0 | Property: name",
                                "ShowProgress: 50 | Property: name", "unload", "enable", "focus"}));
        EXPECT_FALSE(gProgram().progressShowing);
        host.progressSteps = 0;
        EXPECT_EQ(gstrMakeFileText(L"a.gas", {kCrate}, &host, 0, nullptr).empty(), cancelAt == 1);
    }
}

TEST(ListText, HeadsSortsAndNumbersTheRowsAsShown) {
    const ProgramScope program;
    const struct {
        ListShot list;
        std::wstring sorted;
        std::wstring table;
    } cases[] = {
        {{L"C:\\a.gas",
          true,
          0,
          0,
          {L"Property", L"Value", L"Group"},
          {{L"mass", L"2", L"T\\p_1\\"}, {L"name", L"box", L"T\\"}, {L"short"}, {}}},
         L"Yes  (Property, Asc)",
         L"#\tProperty\tValue\tGroup\r\n-\t--------\t-----\t-----\t\r\n"
         L"1\tmass\t2\tT\\p_1\\\r\n2\tname\tbox\tT\\\r\n3\tshort\t\t\r\n4\t\t\t\r\n"},
        {{L"", false, 0, 0, {L"Template"}, {}}, L"No", L"#\tTemplate\r\n-\t--------\t\r\n"},
        {{L"", true, 1, 1, {L"A", L"Bc"}, {}}, L"Yes  (Bc, Desc)", L"#\tA\tBc\r\n-\t-\t--\t\r\n"},
        {{L"", true, 1, 0, {L"A"}, {}}, L"Yes  (, Asc)", L"#\tA\r\n-\t-\t\r\n"},
        {{L"", false, 0, 0, {}, {}}, L"No", L"#\r\n-\t\r\n"},
    };
    for (const auto& [list, sorted, table] : cases) {
        EXPECT_EQ(gstrMakeListText(list), L"DS Template for: " + list.tag + L"\r\n" + kFormat +
                                              L"Sorted: " + sorted + L"\r\n" + kEquals + table +
                                              kStars);
    }
    EXPECT_EQ(gProgram().routine, L"gstrMakeText");
}

}  // namespace
}  // namespace kestrel
