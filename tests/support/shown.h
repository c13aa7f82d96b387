#pragma once

#include <cstdio>

#include "services/bytes.h"

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

}  // namespace kestrel::test
