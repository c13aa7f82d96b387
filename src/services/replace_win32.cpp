#include <algorithm>
#include <random>

#include "services/errors.h"
#include "services/file_win32.h"
#include "services/files.h"
#include "services/filesystem.h"

namespace kestrel::filesystem {

namespace {

using namespace win32;

constexpr std::wstring_view kTemporaryEnd = L".tmp";

// The file behind a link; the path itself when it is none.
std::wstring fileBehind(std::wstring_view path) {
    std::wstring name = nameOf(path);
    if (name.empty()) raise(ERROR_INVALID_NAME, kWrite, path);
    const DWORD attributes = attributesOf(name);
    if (attributes == INVALID_FILE_ATTRIBUTES) return name;
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        raise(ERROR_ACCESS_DENIED, kWrite, path);
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return name;
    const File file(name, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (!file.isOpen()) raise(::GetLastError(), kWrite, path);
    return textOf([&](wchar_t* text, DWORD size) {
        return ::GetFinalPathNameByHandleW(file.handle(), text, size, FILE_NAME_NORMALIZED);
    });
}

// A temporary sibling of a file: its name holds the process, so that the next
// run can tell what a killed one left behind.
class Sibling {
  public:
    explicit Sibling(const std::wstring& of) {
        constexpr const wchar_t* kDigits = L"0123456789abcdef";
        std::random_device random;
        name_ = of + L"." + std::to_wstring(::GetCurrentProcessId()) + L"-";
        for (int i = 0; i < 16; ++i) name_ += kDigits[random() % 16];
        name_ += kTemporaryEnd;
    }
    ~Sibling() {
        if (!kept_) ::DeleteFileW(name_.c_str());
    }
    Sibling(const Sibling&) = delete;
    Sibling& operator=(const Sibling&) = delete;

    const std::wstring& name() const noexcept { return name_; }
    // Leaves the file where it is.
    void keep() noexcept { kept_ = true; }

  private:
    std::wstring name_;
    bool kept_ = false;
};

void writeNew(const std::wstring& name, std::string_view bytes, std::wstring_view path) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    File file(name, GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    if (!file.isOpen()) raise(::GetLastError(), kWrite, path);
    while (!bytes.empty()) {
        const DWORD size = static_cast<DWORD>(std::min(bytes.size(), kMost));
        DWORD count = 0;
        if (::WriteFile(file.handle(), bytes.data(), size, &count, nullptr) == 0) {
            raise(::GetLastError(), kWrite, path);
        }
        if (count == 0) raise(ERROR_DISK_FULL, kWrite, path);
        bytes.remove_prefix(count);
    }
    if (::FlushFileBuffers(file.handle()) == 0 || !file.close()) {
        raise(::GetLastError(), kWrite, path);
    }
}

// True for what another program causes that has the file open for a moment.
bool mayPass(DWORD code) noexcept {
    return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
           code == ERROR_ACCESS_DENIED || code == ERROR_USER_MAPPED_FILE ||
           code == ERROR_UNABLE_TO_REMOVE_REPLACED || code == ERROR_UNABLE_TO_MOVE_REPLACEMENT;
}

// Calls until it succeeds, at most five times within a second; the last error,
// or 0.
template <class Call>
DWORD retried(Call call) {
    constexpr int kTries = 5;
    constexpr DWORD kPause = 250;
    for (int attempt = 1;; ++attempt) {
        if (call() != 0) return ERROR_SUCCESS;
        const DWORD code = ::GetLastError();
        if (attempt == kTries || !mayPass(code)) return code;
        ::Sleep(kPause);
    }
}

DWORD moveFile(const std::wstring& from, const std::wstring& to, DWORD flags) {
    return retried(
        [&] { return ::MoveFileExW(from.c_str(), to.c_str(), flags | MOVEFILE_WRITE_THROUGH); });
}

// Puts `fresh` in the place of `name`, whose attributes and access list stay,
// and the old file at `backup` or, when that is empty, at `spare`. It always
// gets a place: without one a failure half-way could lose it.
void exchange(const std::wstring& name, const Sibling& fresh, Sibling& spare,
              std::wstring_view backup, std::wstring_view path) {
    const std::wstring old = backup.empty() ? spare.name() : nameOf(backup);
    const DWORD code = retried([&] {
        return ::ReplaceFileW(name.c_str(), fresh.name().c_str(), old.c_str(),
                              REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr);
    });
    if (code == ERROR_SUCCESS) return;
    // Half-way: the old file has moved away, the new one has not moved in.
    if (code == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2 && moveFile(old, name, 0) != 0) spare.keep();
    raise(code, kWrite, path);
}

bool isProcessGone(DWORD process) {
    const HANDLE handle = ::OpenProcess(SYNCHRONIZE, FALSE, process);
    if (handle == nullptr) return ::GetLastError() == ERROR_INVALID_PARAMETER;
    const bool gone = ::WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
    ::CloseHandle(handle);
    return gone;
}

// True for a temporary sibling whose process is gone; `rest` is what follows the
// file's own name.
bool isLeftBehind(std::wstring_view rest) {
    constexpr std::size_t kRandomDigits = 16;
    DWORD process = 0;
    std::size_t digits = 0;
    while (digits < rest.size() && rest[digits] >= L'0' && rest[digits] <= L'9' && digits < 9) {
        process = process * 10 + static_cast<DWORD>(rest[digits++] - L'0');
    }
    const std::size_t length = digits + 1 + kRandomDigits + kTemporaryEnd.size();
    return digits > 0 && rest.size() == length && rest[digits] == L'-' &&
           rest.ends_with(kTemporaryEnd) && isProcessGone(process);
}

// Removes what killed runs left behind of `name`.
void removeSiblingsOf(const std::wstring& name) {
    const std::wstring start = std::wstring(fileName(name)) + L".";
    const std::wstring folder = name.substr(0, name.size() - fileName(name).size());
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW((name + L".*.tmp").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring_view entry = found.cFileName;
        if (entry.size() > start.size() && isLeftBehind(entry.substr(start.size()))) {
            ::DeleteFileW((folder + found.cFileName).c_str());
        }
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
}

}  // namespace

void replace(std::wstring_view path, std::string_view bytes, std::wstring_view backup) {
    const std::wstring name = fileBehind(path);
    const DWORD attributes = attributesOf(name);
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        raise(ERROR_ACCESS_DENIED, kWrite, path);
    }
    const Sibling fresh(name);
    writeNew(fresh.name(), bytes, path);
    if (exists) {
        ::SetFileAttributesW(fresh.name().c_str(), attributes);
        Sibling spare(name);
        exchange(name, fresh, spare, backup, path);
    } else if (const DWORD code = moveFile(fresh.name(), name, MOVEFILE_REPLACE_EXISTING)) {
        raise(code, kWrite, path);
    }
    removeSiblingsOf(name);
}

}  // namespace kestrel::filesystem
