#include "gas/template.h"

#include <algorithm>

#include "base/text.h"

namespace kestrel {

void appendGroupPath(std::wstring& text, std::wstring_view root, const GasProperty& property) {
    text.append(root) += L'\\';
    if (property.Group.empty()) return;
    property.Group.appendTo(text);
    text += L'_';
    appendNumber(text, property.Level);
    text += L'\\';
}

bool mayBeGroupPath(std::wstring_view path, std::wstring_view root, const GasProperty& property) {
    constexpr std::size_t kLevel = 7;  // with the marks around it
    const std::size_t least = root.size() + 1 + property.Group.size();
    return path.size() >= least && path.size() <= least + kLevel;
}

std::span<const GasProperty> ownProperties(const GasTemplate& record) {
    const auto isNone = [](const GasProperty& property) { return property == GasProperty(); };
    if (std::ranges::all_of(record.Properties, isNone)) return {};
    return record.Properties;
}

std::wstring groupPath(std::wstring_view root, const GasProperty& property) {
    std::wstring path;
    appendGroupPath(path, root, property);
    return path;
}

}  // namespace kestrel
