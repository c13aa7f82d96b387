#pragma once

#include <string>
#include <string_view>

// Where the bytes of UTF-8 and wide text meet.
namespace kestrel {

// What a file of UTF-8 begins with.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// True for bytes that are the same text in every page.
bool isAscii(std::string_view bytes) noexcept;

// The first character of `text` and its number, for messages.
std::wstring characterName(std::wstring_view text);

// UTF-8, for file names, messages of the system and text that need not fit the
// code page. Bytes that are no UTF-8 become the lone surrogates DC80 to DCFF,
// which turn back into the same bytes, so any file name survives a round trip.
// Where wide characters have 16 bits that holds for texts, as names are there; of
// bytes, one behind half a pair may join it.
std::string toUtf8(std::wstring_view text);
std::wstring fromUtf8(std::string_view bytes);

}  // namespace kestrel
