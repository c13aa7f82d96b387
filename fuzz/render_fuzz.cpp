// The tab-delimited texts of what any bytes load as.
#include <numeric>
#include <vector>

#include "fuzz/fuzz.h"
#include "gas/browse.h"
#include "gas/modGas.h"
#include "services/text.h"
#include "text/listtext.h"
#include "text/render.h"

namespace kestrel::fuzz {
namespace {

// Enough of them for every shape, and few enough for many inputs a second.
constexpr std::size_t kMostRecords = 16;
constexpr std::size_t kMostNodes = 4;

std::size_t lineEnds(std::wstring_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(kLineEnd, at)) != text.npos; at += 2) ++count;
    return count;
}

RowOrder allRows(const GasTemplate& record) {
    RowOrder rows(ownProperties(record).size());
    std::iota(rows.begin(), rows.end(), 0U);
    return rows;
}

// The rows of a branch are those that the property list shows of it.
void checkBranch(const GasTemplate& record, const BlockNode& node) {
    const std::wstring branch = branchPath(record, node);
    std::wstring filter = branch;
    const std::wstring text = gstrMakeText(record, nullptr, filter, true, nullptr);
    require(filter == branch);
    const RowOrder rows = propertyRows(record, branchFilter(branch, true), allRows(record));
    std::size_t ends = 6 + lineEnds(record.Name);
    for (const std::uint32_t row : rows) {
        const GasProperty& property = record.Properties[row];
        const std::wstring line = propertyText(record, row, PropertyColumn::property) + L'\t' +
                                  property.Value + L'\t' + groupPath(record.Name, property);
        ends += 1 + lineEnds(line);
        require(text.find(line + std::wstring(kLineEnd)) != text.npos);
    }
    require(lineEnds(text) == ends);
    screenNameText(record, rows);
}

std::wstring textOf(const GasTemplate& record) {
    std::wstring filter;
    std::wstring text = gstrMakeText(record, nullptr, filter, false, nullptr);
    require(filter.ends_with(L'\\') &&
            text.ends_with(record.Comments + std::wstring(50, L'*') + std::wstring(kLineEnd)));
    return text;
}

ListShot shotOf(const GasTemplate& record, const SortState& sort) {
    ListShot shot{record.Name,
                  sort.sorted,
                  sort.column,
                  sort.descending ? 1 : 0,
                  {L"Property", L"Value", L"Group"},
                  {}};
    const auto column = static_cast<PropertyColumn>(sort.column % 3);
    const RowOrder order = rowOrder(record.Properties.size(), sort, [&](std::size_t row) {
        return propertyText(record, row, column);
    });
    for (std::size_t i = 0; i < order.size(); ++i) {
        const auto cell = [&](PropertyColumn c) { return propertyText(record, order[i], c); };
        shot.rows.push_back({cell(PropertyColumn::property), cell(PropertyColumn::value),
                             cell(PropertyColumn::group)});
        if (i == 0 || !sort.sorted) continue;
        const int step =
            compareWithoutCase(cell(column), propertyText(record, order[i - 1], column));
        require(sort.descending ? step <= 0 : step >= 0);
    }
    return shot;
}

void checkList(const GasTemplate& record, std::uint8_t choice) {
    const SortState sort{(choice & 1) != 0, choice % 3U, (choice & 2) != 0};
    const std::wstring text = gstrMakeListText(shotOf(record, sort));
    require(text.ends_with(std::wstring(50, L'*') + std::wstring(kLineEnd)));
}

void checkCancel(const std::vector<GasTemplate>& templates, const std::wstring& all,
                 QuietHost& host, std::size_t patience) {
    std::size_t steps = 0;
    for (const GasTemplate& record : templates) steps += ownProperties(record).size() + 1;
    host.patience = patience;
    const std::wstring text = gstrMakeFileText(L"a.gas", templates, nullptr, 0, nullptr);
    require(patience <= steps ? text.empty() : text == all);
}

// Groups in groups without end make texts that only take time.
bool isDeep(const std::vector<GasTemplate>& templates) {
    std::size_t size = 0;
    for (const GasTemplate& record : templates) {
        for (const GasProperty& property : record.Properties) size += property.Group.size();
    }
    return size > 10'000'000;
}

}  // namespace

void run(Input input) {
    QuietHost host;
    std::vector<GasTemplate> templates;
    if (!loadGasText(widen(input.rest()), templates) || isDeep(templates)) return;
    const auto choice = static_cast<std::uint8_t>(input.rest().size());
    std::wstring texts;
    for (std::size_t i = 0; i < templates.size(); ++i) {
        const GasTemplate& record = templates[i];
        texts += textOf(record);
        if (i >= kMostRecords) continue;
        checkList(record, choice);
        const std::vector<BlockNode> nodes = blockTree(record);
        for (std::size_t n = 0; n < std::min(nodes.size(), kMostNodes); ++n) {
            checkBranch(record, nodes[n]);
        }
    }
    const std::wstring all = gstrMakeFileText(L"a.gas", templates, nullptr, 0, nullptr);
    require(all.ends_with(texts) && host.told == 0);
    checkCancel(templates, all, host, choice);
    require(!gProgram().progressShowing);
}

}  // namespace kestrel::fuzz
