#pragma once

#include <string>
#include <string_view>

// Bytes and texts in the program's own code page.
namespace kestrel {

// The text of `bytes`, one character a byte, and the bytes
// of `text` as CodePage::bytes() makes them.
std::wstring widen(std::string_view bytes);
std::string narrow(std::wstring_view text);

// The bytes of a file of the program's own, or of a text that it makes, and the text of such
// a file: in the code page where that has every character, else in UTF-8 behind its mark.
std::string fileBytes(std::wstring_view text);
std::wstring fileText(std::string_view bytes);

}  // namespace kestrel
