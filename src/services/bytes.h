#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

// The one place where bytes and wide text meet.
//
// The 8-bit code page of the product's files is windows-1252; its five
// unassigned bytes (81, 8D, 8F, 90, 9D) stand for the control character of the
// same number, so that all 256 bytes survive a round trip.
namespace kestrel {

// The wide character of each byte of the code page, indexed by the byte.
extern const std::array<wchar_t, 256> kWideOfByte;

// Returns the text of 8-bit `bytes`; one character a byte.
std::wstring widen(std::string_view bytes);

// As widen(), appending to `text`.
void appendWide(std::wstring& text, std::string_view bytes);

// Returns the 8-bit bytes of `text`. Throws RunTimeError (error 5) when a
// character has no byte; its description names the first such character and
// the 1-based line that it stands in.
std::string narrow(std::wstring_view text);

// True when every character of `text` has a byte.
bool isNarrow(std::wstring_view text) noexcept;

// What a file of UTF-8 begins with.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The bytes of a file of the program's own, or of a text that it makes, and the text of such
// a file: in the code page where that has every character, else in UTF-8 behind its mark.
std::string fileBytes(std::wstring_view text);
std::wstring fileText(std::string_view bytes);

// UTF-8, for file names, messages of the system and text that need not fit the
// code page. Bytes that are no UTF-8 become the lone surrogates DC80 to DCFF,
// which turn back into the same bytes, so any file name survives a round trip.
// Where wide characters have 16 bits that holds for texts, as names are there; of
// bytes, one behind half a pair may join it.
std::string toUtf8(std::wstring_view text);
std::wstring fromUtf8(std::string_view bytes);

}  // namespace kestrel
