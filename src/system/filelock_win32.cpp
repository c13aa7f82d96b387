#include "system/filelock.h"

#include "system/file_win32.h"

namespace kestrel {

// No other handle of a file that is shared with nobody can be had, and the system takes
// this file away with its handle.
FileLock::Try FileLock::tryOnce() noexcept {
    const HANDLE file = ::CreateFileW(win32::nameOf(path_).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        // One that is going right now cannot be opened either.
        const bool busy = code == ERROR_SHARING_VIOLATION || code == ERROR_DELETE_PENDING;
        return busy ? Try::busy : Try::impossible;
    }
    file_ = reinterpret_cast<std::intptr_t>(file);
    return Try::held;
}

FileLock::~FileLock() {
    if (held_) ::CloseHandle(reinterpret_cast<HANDLE>(file_));
}

}  // namespace kestrel
