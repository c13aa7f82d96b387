// What the main window asks of a loaded file: its rows, its trees, its chains.

#include <algorithm>

#include "base/keys.h"
#include "gas/gastest.h"
#include "gas/query.h"
#include "support/tempfolder.h"
#include "view/browse.h"
#include "view/chain.h"

namespace kestrel::test {
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
    state.click(2);
    const std::vector<std::wstring> sets[] = {
        {L"", L"a", L"ab", L"abb", L"abba", L"abbaa", L"abbb", L"abc", L"b", L"\U0001F426"},
        {L"Item_1", L"item_1", L"item_10", L"item_10a", L"item_10b", L"Item_2", L"item_2"},
        {}};
    for (std::vector<std::wstring> mixed : sets) {
        std::string order = std::string("0123456789").substr(0, mixed.size());
        EXPECT_EQ(orderOf(mixed, state), order);
        for (std::size_t i = 1; i < mixed.size(); ++i) {
            std::ranges::rotate(mixed, mixed.begin() + 1);
            std::ranges::rotate(order, order.end() - 1);
            EXPECT_EQ(orderOf(mixed, state), order);
        }
    }
}

TEST(Browse, FindsTheNextRowWithATextAndGoesOnAtTheFirst) {
    const std::vector<std::wstring> rows{L"Lamp", L"box", L"lamp post"};
    const auto text = [&](std::size_t row) { return rows[row]; };
    const std::tuple<std::size_t, const wchar_t*, std::optional<std::size_t>> cases[] = {
        {0, L"LAMP", 0}, {1, L"lamp", 2}, {3, L"lamp", 0}, {2, L"o", 2}, {0, L"lamps", {}}};
    for (const auto& [start, what, found] : cases) {
        EXPECT_EQ(findRow(rows.size(), start, what, text), found) << shown(what) << start;
    }
    EXPECT_EQ(findRow(0, 0, L"", text), std::nullopt);
}

GasTemplate boxTemplate() {
    return loaded(
               "[t:template,n:box]|{|doc = \"box\";|screen_name = \"One\";|[a]|{|x = 1;|"
               "screen_name = \"Two\";|[b]|{|y = 2;|}|}|}|")
        .at(0);
}

TEST(Browse, FilterTakesOneBranchAlone) {
    const GasTemplate box = boxTemplate();
    const RowOrder all = rowOrder(box.Properties.size(), {}, {});
    const std::tuple<const wchar_t*, bool, RowOrder, const wchar_t*> cases[] = {
        {L"box\\", true, {0, 1, 2}, L"box\\ (Screen Name='One')"},
        {L"box", true, {0, 1, 2}, L"box\\ (Screen Name='One')"},
        {L"box\\a_1", true, {3, 4, 5}, L"box\\a_1\\ (Screen Name='Two')"},
        {L"box\\a\\b_2\\", true, {6, 7}, L""},
        {L"BOX\\", true, {}, L""},
        {L"", true, all, L"box\\a_1\\ (Screen Name='Two')"},
        {L"box\\a_1", false, all, L"box\\a_1\\ (Screen Name='Two')"},
    };
    for (const auto& [path, useTree, rows, screenName] : cases) {
        EXPECT_EQ(propertyRows(box, branchFilter(path, useTree), all), rows) << path;
        EXPECT_EQ(screenNameText(box, rows), screenName) << path;
    }
    EXPECT_EQ(screenNameText(box, {5, 1}), L"box\\a_1\\ (Screen Name='Two')")
        << "the last one of the file, however the rows are sorted";
}

TEST(Browse, CellsAndTextsReadAsShown) {
    const GasTemplate box = boxTemplate();
    const std::tuple<std::size_t, PropertyColumn, const wchar_t*> cells[] = {
        {4, PropertyColumn::property, L"x"},
        {4, PropertyColumn::value, L"1"},
        {4, PropertyColumn::group, L"box\\a_1\\"},
        {8, PropertyColumn::value, L""},
        {8, PropertyColumn::group, L""}};
    for (const auto& [position, column, text] : cells) {
        EXPECT_EQ(propertyText(box, position, column), text);
        EXPECT_EQ(propertySortText(box, position, column), text);
    }
    const std::string most(256, 'a');
    const GasTemplate deep = loaded("[info]|[" + most + "]|[b]|x = 1;|").at(0);
    EXPECT_EQ(propertySortText(deep, 2, PropertyColumn::group),
              L"Info0\\" + fromUtf8(most) + L"_2\\");
    EXPECT_EQ(selectionText(2, box), L"Template K2 is box");
    EXPECT_EQ(gintKeyIndex(L"K120"), 120);
    EXPECT_EQ(countText(0, L"Properties"), L"0 Properties");
    EXPECT_EQ(chainText(L"Alpha||b|"), L"Alpha > b");
    Version version = Program::defaultVersion();
    version.minor = 12;
    EXPECT_EQ(mainCaption(version), L"Kestrel Template Browser (Kestrel v1.12.0)");
}

TEST(Browse, LinesCanBeDrawnWhateverTheyHold) {
    EXPECT_EQ(lineText(L"a\r\nb\tc"), L"a  b c");
    EXPECT_EQ(lineText(L"a\vb\u0085c\u2028d\u2029"), L"a b c d ");
    EXPECT_EQ(lineText(std::wstring(L"x\0y\x01\x1B\x7F\x9Dz\b\x0E", 10)),
              L"x\uFFFDy\uFFFD\uFFFD\uFFFD\uFFFDz\uFFFD\uFFFD");
    // A name that reads "harmless.gas" backwards.
    EXPECT_EQ(lineText(L"\u202Esag.sselmrah\u2066\u200F\u061C"),
              L"\uFFFDsag.sselmrah\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(lineText(L"\u00E9\u20AC \u05D0"), L"\u00E9\u20AC \u05D0");
    const std::wstring most(1000, L'a');
    EXPECT_EQ(lineText(most), most);
    EXPECT_EQ(lineText(most + L"b"), most + L"\u2026");
}

std::vector<GasTemplate> chains() {
    auto templates = loaded(
        "[t:template,n:a]|doc = Alpha;|specializes = b;|[t:template,n:hidden]|specializes = c;|"
        "[t:template,n:b]|specializes = c;|mass = 1.0;|[t:template,n:c]|doc = Gamma;|mass = 1;|"
        "[t:template,]|template_name = old;|specializes = x;|"
        "[t:template,n:loop]|specializes = loop;|[t:template,n:p]|specializes = q;|"
        "[t:template,n:q]|doc = Quill;|specializes = p;|"
        "[t:template,n:axe_1]|doc = axe;|specializes = axe;|[t:template,n:d]|specializes = Gamma;|"
        "[t:template,n:p]|mass = second;|mass = third;|");
    templates.at(1).Name = {};  // which makes it none
    return templates;
}

TEST(Query, FollowsTheChainOfOneFile) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"a", L"Alpha|b|Gamma|"}, {L"Alpha", L"Alpha|b|Gamma|"},
        {L"c", L"Gamma|"},         {L"old", L"old|x"},
        {L"nowhere", L"nowhere|"}, {L"A", L"A|"},
        {L"hidden", L"hidden|"},   {L"loop", L"loop"},
        {L"axe_1", L"axe"},        {L"p", L"p|Quill"},
        {L"Quill", L"Quill|p"},    {L"", L"|"},
        {L"d", L"d|Gamma|"},
    };
    const std::vector<GasTemplate> templates = chains();
    for (const auto& [name, history] : cases) {
        EXPECT_EQ(gstrGetTemplateHistory(templates, name), history) << name;
    }
    EXPECT_EQ(chainName(templates[3]), L"c");
    EXPECT_EQ(chainName(templates[4]), L"Template4") << "what has no name is asked for as shown";
    EXPECT_EQ(gstrFindPropertyVal(templates[10], L"mass"), L"second");
    EXPECT_EQ(gstrFindPropertyVal(templates[1], L"name"), L"") << "no name, no record";
    EXPECT_EQ(gudtSearchForTemplate(templates, L"mass", L"third").Name, L"Template10");
    EXPECT_EQ(gudtSearchForTemplate(templates, L"name", L"p").Name, L"Template6");
    EXPECT_EQ(gudtSearchForTemplate(templates, L"name", L"P").Name, L"");
    EXPECT_EQ(gudtSearchForTemplate(templates, L"", L"  Template4 ").Name, L"Template4");
}

// A walk over the file for each step would take minutes.
TEST(Chain, ALongChainTakesNoWalkOverTheFileForEachStep) {
    const TempFolder folder;
    constexpr int kCount = 100000;
    std::string text;
    for (int i = 0; i < kCount; ++i) {
        const std::string parent = "t" + std::to_string(i + 1);
        text += "[t:template,n:t" + std::to_string(i) + "]\nspecializes = " + parent + ";\n";
    }
    ChainDocument document;
    ASSERT_TRUE(document.load(folder.put(L"f", text)));
    const std::wstring history = gstrGetTemplateHistory(document.templates(), L"t0");
    EXPECT_TRUE(history.starts_with(L"t0|t1|t2|") && history.ends_with(L"|t99999|t100000"));
    for (int i = 0; i < kCount; ++i) ASSERT_NE(document.find(L"t" + std::to_wstring(i)), nullptr);
}

}  // namespace
}  // namespace kestrel::test
