#include "system/letters.h"

#include <algorithm>

#include "system/letters_system.h"

namespace kestrel {
namespace {

int utf8Size(wchar_t c) noexcept {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
}

}  // namespace

wchar_t foldCase(wchar_t c) noexcept {
    if (c >= L'A' && c <= L'Z') return static_cast<wchar_t>(c + 0x20);
    if (c < 0xC0) return c;
    const wchar_t lower = systemLower(c);
    return utf8Size(lower) == utf8Size(c) ? lower : c;
}

wchar_t otherCase(wchar_t c) noexcept {
    const wchar_t lower = foldCase(c);
    if (lower != c) return lower;
    const wchar_t upper = systemUpper(c);
    return foldCase(upper) == c ? upper : c;
}

std::wstring lowerCase(std::wstring_view text) {
    std::wstring result(text);
    std::transform(result.begin(), result.end(), result.begin(), foldCase);
    return result;
}

bool endsWithoutCase(std::wstring_view text, std::wstring_view end) noexcept {
    return text.size() >= end.size() &&
           compareWithoutCase(text.substr(text.size() - end.size()), end) == 0;
}

int compareWithoutCase(std::wstring_view a, std::wstring_view b) noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] == b[i]) continue;
        const wchar_t x = foldCase(a[i]);
        const wchar_t y = foldCase(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

}  // namespace kestrel
