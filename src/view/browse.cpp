#include "view/browse.h"

#include <algorithm>
#include <numeric>

#include "base/keys.h"
#include "base/text.h"
#include "system/letters.h"

namespace kestrel {
namespace {

struct SortKey {
    std::wstring folded;
    std::wstring mixed;  // the text, where it differs from the folded one

    const std::wstring& text() const noexcept { return mixed.empty() ? folded : mixed; }
    int compare(const SortKey& other) const noexcept {
        const int order = folded.compare(other.folded);
        return order != 0 ? order : text().compare(other.text());
    }
};

// A row and the start of its key as a number, which decides most comparisons.
struct SortRow {
    std::uint64_t start;
    std::uint32_t position;
};

std::vector<SortKey> sortKeys(std::size_t count,
                              const std::function<std::wstring(std::size_t)>& sortText) {
    std::vector<SortKey> keys;
    keys.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::wstring text = sortText(i);
        std::wstring folded = lowerCase(text);
        if (folded == text) text = {};
        keys.push_back({std::move(folded), std::move(text)});
    }
    return keys;
}

// How many characters all keys begin with: names of one file often do.
std::size_t commonStart(const std::vector<SortKey>& keys) {
    if (keys.empty()) return 0;
    std::wstring_view common = keys.front().folded;
    for (const SortKey& key : keys) {
        const auto end =
            std::mismatch(common.begin(), common.end(), key.folded.begin(), key.folded.end()).first;
        common = common.substr(0, static_cast<std::size_t>(end - common.begin()));
    }
    return common.size();
}

// The characters of `key` from `begin` on that fit into a number, in their order.
std::uint64_t startOf(std::wstring_view key, std::size_t begin) noexcept {
    constexpr int kCharacters = 3;
    constexpr int kBits = 21;
    constexpr std::int64_t kMost = (1 << kBits) - 1;
    std::uint64_t start = 0;
    for (std::size_t i = begin; i < begin + kCharacters; ++i) {
        const std::int64_t code = i < key.size() ? static_cast<std::int64_t>(key[i]) : 0;
        start =
            start << kBits | static_cast<std::uint64_t>(std::clamp<std::int64_t>(code, 0, kMost));
    }
    return start;
}

bool breaksLine(wchar_t c) noexcept {
    return (c >= L'\t' && c <= L'\r') || c == 0x85 || c == 0x2028 || c == 0x2029;
}

}  // namespace

void SortState::click(std::size_t clicked) noexcept {
    sorted = true;
    column = clicked;
    descending = !descending;
}

RowOrder rowOrder(std::size_t count, const SortState& state,
                  const std::function<std::wstring(std::size_t)>& sortText) {
    RowOrder order(count);
    std::iota(order.begin(), order.end(), 0U);
    if (!state.sorted) return order;
    const std::vector<SortKey> keys = sortKeys(count, sortText);
    const std::size_t common = commonStart(keys);
    std::vector<SortRow> rows;
    rows.reserve(count);
    for (const std::uint32_t position : order) {
        rows.push_back({startOf(keys[position].folded, common), position});
    }
    std::stable_sort(rows.begin(), rows.end(), [&](const SortRow& a, const SortRow& b) {
        if (a.start != b.start) return (a.start < b.start) != state.descending;
        const int result = keys[a.position].compare(keys[b.position]);
        return state.descending ? result > 0 : result < 0;
    });
    std::ranges::transform(rows, order.begin(), &SortRow::position);
    return order;
}

std::optional<std::size_t> findRow(std::size_t count, std::size_t start, std::wstring_view what,
                                   const std::function<std::wstring(std::size_t)>& text) {
    const std::wstring folded = lowerCase(what);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = (start + i) % count;
        if (lowerCase(text(row)).find(folded) != std::wstring::npos) return row;
    }
    return std::nullopt;
}

std::wstring chainText(std::wstring_view history) {
    std::wstring text;
    for (const std::wstring_view label : split(history, L"|")) {
        if (label.empty()) continue;
        if (!text.empty()) text += L" > ";
        text += label;
    }
    return text;
}

std::wstring branchFilter(std::wstring_view path, bool useTree) {
    if (!useTree || path.empty()) return {};
    std::wstring filter(path);
    if (!filter.ends_with(L'\\')) filter += L'\\';
    return filter;
}

std::wstring propertyText(const GasTemplate& record, std::size_t position, PropertyColumn column) {
    if (position >= record.Properties.size()) return {};
    const GasProperty property = record.Properties[position];
    switch (column) {
        case PropertyColumn::property:
            return property.Name.wide();
        case PropertyColumn::value:
            return property.Value.wide();
        case PropertyColumn::group:
            return groupPath(record, property);
    }
    return {};
}

std::wstring propertySortText(const GasTemplate& record, std::size_t position,
                              PropertyColumn column) {
    if (column != PropertyColumn::group || position >= record.Properties.size()) {
        return propertyText(record, position, column);
    }
    const GasProperty property = record.Properties[position];
    const GasGroup* group = property.Group.group();
    return groupPath(record.Name, Text(group == nullptr ? nullptr : group->start), property.Level);
}

RowOrder propertyRows(const GasTemplate& record, std::wstring_view filter, RowOrder order) {
    if (filter.empty()) return order;
    GroupFilter branch(record, filter);
    std::erase_if(order, [&](auto position) { return !branch.has(record.Properties[position]); });
    return order;
}

std::wstring screenNameText(const GasTemplate& record, const RowOrder& rows) {
    std::optional<std::uint32_t> last;
    for (const std::uint32_t position : rows) {
        if (record.Properties[position].Name == "screen_name") last = std::max(last, {position});
    }
    if (!last) return {};
    const GasProperty property = record.Properties[*last];
    return groupPath(record, property) + L" (Screen Name='" + property.Value.wide() + L"')";
}

std::wstring selectionText(std::size_t position, const GasTemplate& record) {
    return L"Template " + makeKey(position) + L" is " + record.Name.wide();
}

std::wstring countText(std::size_t count, std::wstring_view what) {
    return std::to_wstring(count).append(L" ").append(what);
}

std::wstring mainCaption(const Version& version) {
    return version.fileDescription + L" (" + version.title + L" v" +
           std::to_wstring(version.major) + L'.' + std::to_wstring(version.minor) + L'.' +
           std::to_wstring(version.revision) + L')';
}

std::wstring lineText(std::wstring_view text) {
    constexpr std::size_t kLongest = 1000;
    std::wstring line(text.substr(0, kLongest));
    for (wchar_t& c : line) {
        if (breaksLine(c)) {
            c = L' ';
        } else if (!isDrawable(c)) {
            c = L'\xFFFD';
        }
    }
    if (text.size() > kLongest) line += L'\x2026';
    return line;
}

}  // namespace kestrel
