#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gas/load.h"
#include "services/bytes.h"

// Texts and records as short lines, so that a table can hold them.
namespace kestrel {

inline std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// `text` with CR LF for each "|", and the other way round.
inline std::string lines(std::string_view text) {
    return replaced(std::string(text), "|", "\r\n");
}
inline std::string flat(std::string_view text) {
    return replaced(std::string(text), "\r\n", "|");
}
inline std::string flat(std::wstring_view text) {
    return flat(toUtf8(text));
}

// The records of the flat text `file`.
inline std::vector<GasTemplate> loaded(std::string_view file) {
    std::vector<GasTemplate> templates;
    loadGasText(fromUtf8(lines(file)), templates);
    return templates;
}

// The lines of `log`, with a few words of each `second` for the text `first`.
using Words = std::vector<std::pair<std::string, std::string>>;
inline std::string inWords(const std::vector<std::string>& log, const Words& words) {
    std::string told;
    for (std::string line : log) {
        for (const auto& [text, word] : words) line = replaced(line, text, word);
        told += (told.empty() ? "" : ", ") + line;
    }
    return told;
}

// A property is `name=value @group#level`, a header of a sub-block `[name] @group#level`.
inline std::string dump(const GasProperty& property) {
    const std::wstring& name = property.Name;
    std::wstring line =
        property.IsBlock ? L"[" + name + L"]" + property.Value : name + L"=" + property.Value;
    line.append(L" @").append(property.Group.text()) += L'#';
    return toUtf8(line + std::to_wstring(property.Level));
}

inline std::string dump(const GasTemplate& record) {
    std::string text;
    for (const GasProperty& property : record.Properties) {
        text += (text.empty() ? "" : ", ") + dump(property);
    }
    return text;
}

}  // namespace kestrel
