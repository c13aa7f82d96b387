#include "gas/template.h"

#include "services/text.h"

namespace kestrel {

GroupPath::GroupPath(std::wstring text) {
    if (!text.empty()) shared_ = std::make_shared<const std::wstring>(std::move(text));
}

std::wstring_view GroupPath::text() const noexcept {
    return shared_ == nullptr ? std::wstring_view{} : std::wstring_view(*shared_);
}

void appendGroupPath(std::wstring& text, std::wstring_view root, const GasProperty& property) {
    text.append(root) += L'\\';
    if (property.Group.empty()) return;
    text.append(property.Group.text()) += L'_';
    appendNumber(text, property.Level);
    text += L'\\';
}

std::wstring groupPath(std::wstring_view root, const GasProperty& property) {
    std::wstring path;
    appendGroupPath(path, root, property);
    return path;
}

}  // namespace kestrel
