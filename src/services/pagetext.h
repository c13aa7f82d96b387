#pragma once

#include <string>
#include <string_view>

#include "services/program.h"

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

// The bytes of such a file, made from pieces.
class FileBytes {
  public:
    void add(std::wstring_view text);
    // The text of `bytes` in `page`.
    void add(std::string bytes, const CodePage& page);
    void add(FileBytes other) { add(std::move(other.bytes_), *other.page_); }
    std::string take();

  private:
    const CodePage* page_ = gProgram().codePage;  // UTF-8 from the first text on that needs it
    std::string bytes_;
};

}  // namespace kestrel
