#include "gas/browse.h"

#include <gtest/gtest.h>

#include "gas/load.h"
#include "support/gasprinters.h"

namespace kestrel {
namespace {

// The order of rows whose texts are `texts`, as a text of positions.
std::string orderOf(const std::vector<std::wstring>& texts, const SortState& state) {
    std::string result;
    for (const std::uint32_t position :
         rowOrder(texts.size(), state, [&](std::size_t at) { return texts[at]; })) {
        result += std::to_string(position);
    }
    return result;
}

TEST(Browse, SortsWithoutCaseThenByCaseThenAsTheFileStands) {
    const std::vector<std::wstring> texts{L"b", L"A", L"a", L"B", L"a", L"\u00c9", L"\u00e9"};
    SortState state;
    EXPECT_EQ(orderOf(texts, state), "0123456") << "not sorted yet";
    state.click(0);
    EXPECT_EQ(orderOf(texts, state), "1243056") << "ascending at the first click";
    state.click(2);
    EXPECT_EQ(state.column, 2U);
    EXPECT_EQ(orderOf(texts, state), "6503241") << "flipped by a click on any column; equals stay";
}

GasTemplate boxTemplate() {
    std::vector<GasTemplate> templates;
    loadGasText(
        L"[t:template,n:box]\r\n{\r\ndoc = \"box\";\r\nscreen_name = \"One\";\r\n[a]\r\n{\r\nx = "
        L"1;\r\n"
        L"screen_name = \"Two\";\r\n[b]\r\n{\r\ny = 2;\r\n}\r\n}\r\n}\r\n",
        templates);
    return templates.at(0);
}

TEST(Browse, FilterTakesOneBranchAlone) {
    const GasTemplate box = boxTemplate();
    const RowOrder all = rowOrder(box.Properties.size(), {}, {});
    const struct {
        const wchar_t* path;
        bool useTree;
        RowOrder rows;
        const wchar_t* screenName;
    } kCases[] = {
        {L"box\\", true, {0, 1, 2}, L"box\\ (Screen Name='One')"},
        {L"box", true, {0, 1, 2}, L"box\\ (Screen Name='One')"},
        {L"box\\a_1", true, {3, 4, 5}, L"box\\a_1\\ (Screen Name='Two')"},
        {L"box\\a\\b_2\\", true, {6, 7}, L""},
        {L"BOX\\", true, {}, L""},
        {L"", true, all, L"box\\a_1\\ (Screen Name='Two')"},
        {L"box\\a_1", false, all, L"box\\a_1\\ (Screen Name='Two')"},
    };
    for (const auto& c : kCases) {
        const RowOrder rows = propertyRows(box, branchFilter(c.path, c.useTree), all);
        EXPECT_EQ(rows, c.rows);
        EXPECT_EQ(screenNameText(box, rows), c.screenName);
    }
    EXPECT_EQ(screenNameText(box, {5, 1}), L"box\\a_1\\ (Screen Name='Two')")
        << "the last one of the file, however the rows are sorted";
}

TEST(Browse, CellsAndTextsReadAsShown) {
    const GasTemplate box = boxTemplate();
    EXPECT_EQ(propertyText(box, 4, PropertyColumn::property), L"x");
    EXPECT_EQ(propertyText(box, 4, PropertyColumn::value), L"1");
    EXPECT_EQ(propertyText(box, 4, PropertyColumn::group), L"box\\a_1\\");
    EXPECT_EQ(propertyText(box, 99, PropertyColumn::value), L"");
    EXPECT_EQ(selectionText(2, box), L"Template K2 is box");
    EXPECT_EQ(countText(0, L"Properties"), L"0 Properties");
    Version version = Program::defaultVersion();
    version.minor = 12;
    EXPECT_EQ(mainCaption(version), L"Kestrel Template Browser (Kestrel v1.12.0)");
}

TEST(Browse, LinesCanBeDrawnWhateverTheyHold) {
    EXPECT_EQ(lineText(L"a\r\nb\tc"), L"a  b c");
    EXPECT_EQ(lineText(L"a\vb\u0085c\u2028d"), L"a b c d");
    EXPECT_EQ(lineText(std::wstring(L"x\0y\x01\x1B\x7F\x9Dz", 7)),
              L"x\uFFFDy\uFFFD\uFFFD\uFFFD\uFFFD");
    // A name that reads "harmless.gas" backwards.
    EXPECT_EQ(lineText(L"\u202Esag.sselmrah\u2066\u200F\u061C"),
              L"\uFFFDsag.sselmrah\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(lineText(L"\u00E9\u20AC \u05D0"), L"\u00E9\u20AC \u05D0");
    EXPECT_EQ(lineText(std::wstring(2000, L'a')).size(), 1001U);
}

}  // namespace
}  // namespace kestrel
