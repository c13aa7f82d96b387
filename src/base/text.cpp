#include "base/text.h"

#include <iterator>

namespace kestrel {

std::vector<std::wstring_view> split(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring_view> pieces;
    if (text.empty()) return pieces;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(separator, start)) != std::wstring_view::npos;) {
        pieces.push_back(text.substr(start, end - start));
        start = end + separator.size();
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

bool isDrawable(wchar_t c) noexcept {
    const auto code = static_cast<char32_t>(c);
    const auto within = [code](char32_t first, char32_t last) {
        return code >= first && code <= last;
    };
    const bool controls = code < 0x20 || within(0x7F, 0x9F);
    const bool turns =
        code == 0x61C || within(0x200E, 0x200F) || within(0x202A, 0x202E) || within(0x2066, 0x2069);
    const bool nowhere = code > 0x10FFFF || (sizeof(wchar_t) != 2 && within(0xD800, 0xDFFF));
    return !controls && !turns && !nowhere;
}

void append(std::wstring& text, std::string_view ascii) {
    text.append(ascii.begin(), ascii.end());
}

}  // namespace kestrel
