#pragma once

#include <string>
#include <string_view>
#include <vector>

// Small operations on text that do not depend on the user's locale. Blanks are spaces
// (U+0020) alone.
namespace kestrel {

inline constexpr std::wstring_view kLineEnd = L"\r\n";
inline constexpr std::string_view kCrLf = "\r\n";  // the same as bytes

// `text` without leading and trailing spaces.
std::wstring_view trim(std::wstring_view text) noexcept;

// The pieces of `text` between the occurrences of `separator` (not empty). An
// empty text gives no piece. The pieces point into `text`.
std::vector<std::wstring_view> split(std::wstring_view text, std::wstring_view separator);

// False for a character that shows nothing (a control), turns the direction of what follows
// (so that a name passes for another), or is none.
bool isDrawable(wchar_t c) noexcept;

// Appends `ascii` to wide text.
void append(std::wstring& text, std::string_view ascii);

}  // namespace kestrel
