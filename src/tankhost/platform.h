#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// What the archive library's process asks of the system, implemented by platform_posix.cpp
// and platform_win32.cpp. Failures throw RunTimeError.
namespace kestrel::tankhost {

// The standard streams, taken from whatever else runs here: what the library writes is lost.
class Streams {
  public:
    Streams();
    // As many bytes as there are, `most` at most; 0 at the end.
    std::size_t read(char* bytes, std::size_t most) const;
    // False when nobody is left to read.
    bool write(std::string_view bytes) const;

  private:
    std::intptr_t input_;
    std::intptr_t output_;
};

// Gives up what an archive's reader does without, and ends with the process that started this.
void restrictProcess();

// Ends the process at once: nothing of the library runs any more.
[[noreturn]] void leave(int code);

// Gives up what can be, and becomes the program `words[1]` with the words from there on.
int becomeProgram(char** words);

// Copies what can be read of the `most` bytes at `from`; returns how many that were.
std::size_t readMemory(const char* from, char* to, std::size_t most) noexcept;

// `path` as the 8-bit text that libraries take. Throws where there is none.
std::string libraryText(std::wstring_view path);

// A loaded library, for the rest of the process.
class Library {
  public:
    // `path` is a full one.
    explicit Library(const std::wstring& path);
    // The operation that is exported as `name`; null when there is none.
    void* find(const std::string& name) const noexcept;

  private:
    void* handle_;
};

}  // namespace kestrel::tankhost
