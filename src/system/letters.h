#pragma once

#include <string>
#include <string_view>

// Letters of all scripts without regard to case.
namespace kestrel {

// The letter without case, for letters of any script whose two cases take as many bytes of
// UTF-8; any other character is returned as it is.
wchar_t foldCase(wchar_t c) noexcept;
// The other letter of the same foldCase(); `c` itself when there is none.
wchar_t otherCase(wchar_t c) noexcept;
std::wstring lowerCase(std::wstring_view text);

// True when `text` ends in `end`, whatever the case of the letters of both.
bool endsWithoutCase(std::wstring_view text, std::wstring_view end) noexcept;

// Compares without case: negative, 0 or positive, as std::wstring::compare.
int compareWithoutCase(std::wstring_view a, std::wstring_view b) noexcept;

}  // namespace kestrel
