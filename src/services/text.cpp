#include "services/text.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "services/letters.h"

namespace kestrel {

namespace {

// Copies `text` without the occurrences of `mark`, left to right.
std::wstring without(std::wstring_view text, std::wstring_view mark) {
    std::wstring result;
    result.reserve(text.size());
    for (std::wstring_view piece : split(text, mark)) result += piece;
    return result;
}

int utf8Size(wchar_t c) noexcept {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
}

bool isBracket(wchar_t c) noexcept {
    return c == L'[' || c == L']' || c == L'{' || c == L'}';
}

}  // namespace

std::wstring_view trim(std::wstring_view text) noexcept {
    const std::size_t first = text.find_first_not_of(L' ');
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

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

void appendNumber(std::wstring& text, long long number) {
    char digits[24];
    const char* end = std::to_chars(digits, std::end(digits), number).ptr;
    for (const char* digit = digits; digit != end; ++digit) text += static_cast<wchar_t>(*digit);
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

std::wstring removeTabs(std::wstring text) {
    std::erase(text, L'\t');
    return text;
}

std::wstring removeSemicolons(std::wstring text) {
    std::erase(text, L';');
    return text;
}

std::wstring removeQuotes(std::wstring text) {
    std::erase(text, L'"');
    return text;
}

std::wstring removeCommentMarks(std::wstring_view text) {
    return without(text, L"//");
}

std::wstring removeBrackets(std::wstring text) {
    std::erase_if(text, isBracket);
    return text;
}

std::wstring cleanValue(std::wstring text) {
    std::erase_if(text,
                  [](wchar_t c) { return c == L'\t' || c == L';' || c == L'"' || isBracket(c); });
    return std::wstring(trim(text));
}

std::wstring squeezeBlankLines(std::wstring_view text) {
    std::wstring result;
    result.reserve(text.size());
    while (text.starts_with(kLineEnd)) text.remove_prefix(kLineEnd.size());
    while (!text.empty()) {
        const std::size_t end = text.find(kLineEnd);
        if (end == std::wstring_view::npos) return result.append(text);
        result.append(text.substr(0, end + kLineEnd.size()));
        text.remove_prefix(end + kLineEnd.size());
        while (text.starts_with(kLineEnd)) text.remove_prefix(kLineEnd.size());
    }
    return result;
}

std::vector<std::wstring> splitStatements(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring> statements;
    for (std::wstring_view piece : split(text, separator)) {
        if (piece.find(L';') == std::wstring_view::npos) {
            statements.emplace_back(piece);
            continue;
        }
        for (std::wstring_view part : split(piece, L";")) {
            statements.emplace_back(part).push_back(L';');
        }
    }
    return statements;
}

}  // namespace kestrel
