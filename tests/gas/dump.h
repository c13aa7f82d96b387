#pragma once

#include <string>
#include <vector>

#include "gas/template.h"

// Records as short lines, so that a table can hold what a text should give:
// a property is `name=value @group#level`, a sub-block header `[name] @group#level`.
namespace kestrel {

inline std::wstring dump(const GasProperty& property) {
    const std::wstring& name = property.Name;
    std::wstring line = property.IsBlock ? L"[" + name + L"]" : name + L"=" + property.Value;
    return line.append(L" @").append(property.Group.text()) + L"#" +
           std::to_wstring(property.Level);
}

inline std::wstring dump(const GasTemplate& record) {
    std::wstring text;
    for (const GasProperty& property : record.Properties) {
        text += (text.empty() ? L"" : L" | ") + dump(property);
    }
    return text;
}

inline std::vector<std::wstring> names(const std::vector<GasTemplate>& templates) {
    std::vector<std::wstring> result;
    for (const GasTemplate& record : templates) result.push_back(record.Name);
    return result;
}

}  // namespace kestrel
