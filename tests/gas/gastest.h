#pragma once

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "gas/load.h"
#include "support/shown.h"

// Texts and records as short lines, so that a table or a story can hold them.
namespace kestrel::test {

// What stands in a flat text for bytes that end a line, or cannot be seen.
inline constexpr std::pair<std::string_view, std::string_view> kMarks[] = {
    {"|", "\r\n"}, {"␍", "\r"}, {"␊", "\n"}, {"␉", "\t"}, {"⌖", kUtf8Mark}};

inline std::string lines(std::string text) {
    for (const auto& [mark, bytes] : kMarks) text = replaced(text, mark, bytes);
    return text;
}
inline std::string flat(std::string text) {
    for (const auto& [mark, bytes] : kMarks) text = replaced(text, bytes, mark);
    return text;
}
inline std::string flat(std::wstring_view text) {
    return flat(toUtf8(text));
}

// The records of the flat text `file`.
inline std::vector<GasTemplate> loaded(const std::string& file, TemplateList* list = nullptr) {
    return readRecords(lines(file), CodePage::utf8(), list).templates;
}

// A property is `name=value @group#level`, a header of a sub-block `[name] @group#level`.
inline std::string dump(const GasProperty& property) {
    const std::wstring name = property.Name.wide();
    return toUtf8((property.IsBlock ? L"[" + name + L"]" : name + L"=") + property.Value.wide() +
                  L" @" + property.Group.wide() + L"#" + std::to_wstring(property.Level));
}

inline std::string dump(const GasTemplate& record) {
    std::string text;
    for (const GasProperty property : record.Properties) {
        text += (text.empty() ? "" : ", ") + dump(property);
    }
    return text;
}

}  // namespace kestrel::test
