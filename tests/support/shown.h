#pragma once

#include <cstdio>

#include "base/bytes.h"

namespace kestrel::test {

// `text` as UTF-8 in which line ends, tabs and other controls are visible
// escapes, for expectations that read well when they fail.
inline std::string shown(std::wstring_view text) {
    std::string result;
    for (const char c : toUtf8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        char escape[8] = {c};
        if (byte < 0x20 || byte == 0x7F) std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        result += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\t' ? "\\t" : escape;
    }
    return result;
}

// `text` with `to` in the place of each `from`.
inline std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

}  // namespace kestrel::test
