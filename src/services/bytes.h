#pragma once

#include <string>
#include <string_view>

#include "services/codepage.h"

// Where bytes and wide text meet; see codepage.h for what bytes mean.
namespace kestrel {

// In the program's own code page: the text of `bytes`, one character a byte, and the bytes
// of `text` as CodePage::bytes() makes them.
std::wstring widen(std::string_view bytes);
std::string narrow(std::wstring_view text);

// What a file of UTF-8 begins with.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The encoding of a file that holds `bytes`: UTF-8 behind its mark, else `page`.
const CodePage& pageOf(std::string_view bytes, const CodePage& page) noexcept;

// The bytes of a file of the program's own, or of a text that it makes, and the text of such
// a file: in the code page where that has every character, else in UTF-8 behind its mark.
std::string fileBytes(std::wstring_view text);
std::wstring fileText(std::string_view bytes);

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
