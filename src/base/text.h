#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Small operations on text that do not depend on the user's locale.
namespace kestrel {

inline constexpr std::wstring_view kLineEnd = L"\r\n";
inline constexpr std::string_view kCrLf = "\r\n";  // the same as bytes

inline constexpr std::string_view kBlanks = " \t";  // of the lines of a file

// `text` without the characters of `blanks` that it begins with.
template <class Char>
constexpr std::basic_string_view<Char> trimStart(
    std::basic_string_view<Char> text, std::type_identity_t<std::basic_string_view<Char>> blanks) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

// The same at both ends.
template <class Char>
constexpr std::basic_string_view<Char> trim(
    std::basic_string_view<Char> text, std::type_identity_t<std::basic_string_view<Char>> blanks) {
    text = trimStart(text, blanks);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// `text` without leading and trailing spaces (U+0020).
constexpr std::wstring_view trim(std::wstring_view text) {
    return trim(text, L" ");
}

// The pieces of `text` between the occurrences of `separator` (not empty). An
// empty text gives no piece. The pieces point into `text`.
std::vector<std::wstring_view> split(std::wstring_view text, std::wstring_view separator);

// False for a character that shows nothing (a control), turns the direction of what follows
// (so that a name passes for another), or is none.
bool isDrawable(wchar_t c) noexcept;

// Appends `ascii` to wide text.
void append(std::wstring& text, std::string_view ascii);

}  // namespace kestrel
