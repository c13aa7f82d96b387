#include "gas/template.h"

#include "services/text.h"

namespace kestrel {

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
