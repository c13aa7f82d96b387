#pragma once

#include <windows.h>

#include <string>
#include <utility>

// Starting programs on Windows, for the *_win32.cpp sources alone.
namespace kestrel::win32 {

// A handle of the system's, closed at the end of its life.
class Handle {
  public:
    Handle() = default;
    explicit Handle(HANDLE handle) : handle_(handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Handle() {
        if (isOpen()) CloseHandle(handle_);
    }
    bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return handle_; }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Starts `program`, the path of its file or a bare name, with the command line
// `line`. Bare names are looked for in the system's folders, the executable's own
// and the search path, and like paths never in the current folder; a name without an extension is
// that of an ".exe". The file is named beside the line, so that an unquoted line can
// run none that was planted at a shorter part of the path. A batch file is run by the
// command processor. With `inherits` the program gets the handles that may be
// inherited. Returns its process; null when it wants the rights of an administrator
// and went to the shell, which one that inherits does not. With `job` it runs in that from
// its first moment on. Throws RunTimeError with the system's reason.
HANDLE createProcess(const std::wstring& program, std::wstring line, STARTUPINFOW startup,
                     bool inherits, DWORD flags, HANDLE job = nullptr);

}  // namespace kestrel::win32
