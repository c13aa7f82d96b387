#include "gas/browse.h"

#include <algorithm>
#include <numeric>

#include "services/keys.h"
#include "services/text.h"

namespace kestrel {
namespace {

struct SortKey {
    std::wstring folded;
    std::wstring text;

    int compare(const SortKey& other) const noexcept {
        const int order = folded.compare(other.folded);
        return order != 0 ? order : text.compare(other.text);
    }
};

std::vector<SortKey> sortKeys(std::size_t count,
                              const std::function<std::wstring(std::size_t)>& sortText) {
    std::vector<SortKey> keys;
    keys.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::wstring text = sortText(i);
        keys.push_back({lowerCase(text), std::move(text)});
    }
    return keys;
}

bool breaksLine(wchar_t c) noexcept {
    return c < 0x20 || c == 0x7F || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isDrawable(wchar_t c) noexcept {
    const auto code = static_cast<char32_t>(c);
    return code <= 0x10FFFF && (sizeof(wchar_t) == 2 || code < 0xD800 || code > 0xDFFF);
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
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        const int result = keys[a].compare(keys[b]);
        return state.descending ? result > 0 : result < 0;
    });
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
    const GasProperty& property = record.Properties[position];
    switch (column) {
        case PropertyColumn::property:
            return property.Name;
        case PropertyColumn::value:
            return property.Value;
        case PropertyColumn::group:
            return groupPath(record.Name, property);
    }
    return {};
}

RowOrder propertyRows(const GasTemplate& record, std::wstring_view filter, RowOrder order) {
    if (filter.empty()) return order;
    std::wstring path;
    std::erase_if(order, [&](std::uint32_t position) {
        path.clear();
        appendGroupPath(path, record.Name, record.Properties[position]);
        return path != filter;
    });
    return order;
}

std::wstring screenNameText(const GasTemplate& record, const RowOrder& rows) {
    const GasProperty* last = nullptr;
    for (std::uint32_t position : rows) {
        const GasProperty& property = record.Properties[position];
        // The addresses are those of one array: a later one is later in the file.
        if (property.Name == L"screen_name" && (last == nullptr || last < &property)) {
            last = &property;
        }
    }
    if (last == nullptr) return {};
    return groupPath(record.Name, *last) + L" (Screen Name='" + last->Value + L"')";
}

std::wstring selectionText(std::size_t position, const GasTemplate& record) {
    return L"Template " + makeKey(position) + L" is " + record.Name;
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
        if (breaksLine(c)) c = L' ';
        if (!isDrawable(c)) c = L'\xFFFD';
    }
    if (text.size() > kLongest) line += L'\x2026';
    return line;
}

}  // namespace kestrel
