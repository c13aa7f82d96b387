// The texts of templates and of lists.

#include "text/render.h"
#include "gas/gastest.h"
#include "support/recordinghost.h"
#include "view/listtext.h"

namespace kestrel::test {
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

const GasTemplate kCrate = loaded("[t:template,n:box]|[physics]|// crate|mass = 2;|").at(0);
const std::wstring kNameRow = L"name\tbox\tTemplate0\\\r\n";
const std::wstring kMassRows =
    L"physics\t\tTemplate0\\physics_1\\\r\nmass\t2\tTemplate0\\physics_1\\\r\n";
const std::wstring kCrateText =
    headed(L"Template0", kNameRow + kMassRows) + kComments + L"Line 2:\t crate\r\n" + kStars;

TEST(Render, AFilterTakesRowsAndTheComments) {
    const RecordingHost host;
    const GasTemplate slash = loaded("[t:template,]|doc = a\\;|").at(0);
    const GasTemplate empty = loaded("[info]|").at(0);
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
        {kCrate, L"Template0\\physics_1", true, headed(L"Template0", kMassRows) + kStars,
         L"Template0\\physics_1\\"},
        {kCrate, L"Template0\\Physics_1", true, headed(L"Template0", L"") + kStars,
         L"Template0\\Physics_1\\"},
        {slash, L"", true, headed(L"a\\", L"doc\ta\\\ta\\\\\r\n") + kStars, L"a\\\\"},
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
    const RecordingHost host;
    std::string rows = "[info]|[a\\b]|";
    for (int i = 0; i < 10000; ++i) rows += "x = 1;|";
    const GasTemplate big = loaded(rows).at(0);
    std::wstring whole;
    std::size_t longest = 0;
    makeText(big, [&](const Text& part) {
        whole += part.wide();
        longest = std::max(longest, part.bytes().size());
    });
    std::wstring filter;
    EXPECT_EQ(whole, gstrMakeText(big, nullptr, filter, false, nullptr));
    EXPECT_LT(longest, 100000U);
}

TEST(Render, TheDialogTellsTheLastRowWrittenAndCancels) {
    RecordingHost host;
    host.logsProgressSteps = true;
    for (const std::size_t cancelAt : {std::size_t{100}, std::size_t{2}}) {
        host.log.clear();
        host.progressSteps = 0;
        host.cancelAt = cancelAt;
        std::wstring filter;
        const std::wstring text = gstrMakeText(kCrate, &host, filter, true, nullptr);
        EXPECT_EQ(text.empty(), cancelAt == 2) << "a cut text is never handed out";
        EXPECT_EQ(host.log,
                  (std::vector<std::string>{
                      "disable", "Process: Processing: Template0", "SubProcess: ", "show: owner",
                      "ShowProgress: 0 | Property: name", "ShowProgress: 33 | Property: name",
                      "ShowProgress: 67 | Property: name", "unload", "enable", "focus"}));
        EXPECT_EQ(gProgram().progress, nullptr);
        host.progressSteps = 0;
        EXPECT_EQ(gstrMakeFileText(L"a.gas", {kCrate}, &host, 0, nullptr).empty(), cancelAt == 2);
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
}  // namespace kestrel::test
