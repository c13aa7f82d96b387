#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// Open files and names of Windows, for the *_win32.cpp sources alone.
namespace kestrel::win32 {

constexpr std::wstring_view kWrite = L"Cannot write";

// The text that a call of the form call(buffer, size) gives: it returns the
// length, or the size that it needs; 0 on failure.
template <class Call>
std::wstring textOf(Call call) {
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = call(text.data(), static_cast<DWORD>(text.size()));
        const bool fits = length < text.size();
        text.resize(length);
        if (fits) return text;
    }
}

// `path` made absolute; empty where nameOf() is for its NUL or its "\\.\".
std::wstring fullName(std::wstring_view path);

// The path for a system call: one that is long in the extended form, which has no
// limit. Empty for a path that the system would cut at its NUL, and for the name
// of a device.
std::wstring nameOf(std::wstring_view path);

// `name` without the start of the extended form: the path as users write it.
std::wstring withoutPrefix(std::wstring name);

// Of what `path` names, INVALID_FILE_ATTRIBUTES when the system knows no such
// thing.
DWORD attributesOf(std::wstring_view path) noexcept;

// Throws the error that the system's `code` tells.
[[noreturn]] void raise(DWORD code, std::wstring_view action, std::wstring_view path);

// An open file, which other programs may read, write, rename and delete meanwhile.
// It is closed at the end of its life.
class File {
  public:
    File(const std::wstring& name, DWORD access, DWORD creation, DWORD flags);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE handle() const noexcept { return handle_; }
    bool close() noexcept;

  private:
    HANDLE handle_;
};

}  // namespace kestrel::win32
