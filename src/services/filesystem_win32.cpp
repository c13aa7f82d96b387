#include "services/filesystem.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "services/errors.h"
#include "services/files.h"

namespace kestrel {

namespace {

// ERROR_DISK_QUOTA_EXCEEDED, which not every compiler's headers name.
constexpr DWORD kDiskQuotaExceeded = 1295;

ErrorNumber errorNumber(DWORD code) noexcept {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return kFileNotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
            return kPermissionDenied;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kDiskQuotaExceeded:
            return kDiskFull;
        case ERROR_TOO_MANY_OPEN_FILES:
            return kTooManyFiles;
        case ERROR_IO_DEVICE:
        case ERROR_CRC:
        case ERROR_NOT_READY:
            return kDeviceError;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return kOutOfMemory;
        default:
            return kPathError;
    }
}

// The system's own words for `code`, without its line end.
std::wstring reasonOf(DWORD code) {
    wchar_t text[512];
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                         0, text, static_cast<DWORD>(std::size(text)), nullptr);
    std::wstring reason(text, length);
    while (!reason.empty() && (reason.back() <= L' ' || reason.back() == L'.')) reason.pop_back();
    return reason.empty() ? L"system error " + std::to_wstring(code) : reason;
}

}  // namespace

void throwSystemError(int code, std::wstring_view action, std::wstring_view path) {
    const DWORD error = static_cast<DWORD>(code);
    std::wstring text(action);
    text.append(L" '").append(path).append(L"': ").append(reasonOf(error));
    throw RunTimeError(errorNumber(error), text);
}

namespace filesystem {

namespace {

constexpr std::wstring_view kRead = L"Cannot read";
constexpr std::wstring_view kWrite = L"Cannot write";
constexpr std::wstring_view kTemporaryEnd = L".tmp";
constexpr DWORD kAnyShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void raise(DWORD code, std::wstring_view action, std::wstring_view path) {
    throwSystemError(static_cast<int>(code), action, path);
}

// The path for a system call; empty for one that the system would cut at its
// NUL, and for the name of a device.
std::wstring nameOf(std::wstring_view path) {
    const bool device = path.starts_with(L"\\\\.\\");
    return device || path.find(L'\0') != std::wstring_view::npos ? std::wstring()
                                                                 : std::wstring(path);
}

DWORD attributesOf(std::wstring_view path) {
    return ::GetFileAttributesW(nameOf(path).c_str());
}

// True for the attributes of an ordinary file.
bool isFileState(DWORD attributes) noexcept {
    constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE |
                             FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kOther) == 0;
}

bool isMissing(DWORD code) noexcept {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
           code == ERROR_INVALID_NAME || code == ERROR_BAD_PATHNAME || code == ERROR_BAD_NETPATH ||
           code == ERROR_BAD_NET_NAME;
}

class File {
  public:
    File(const std::wstring& name, DWORD access, DWORD creation, DWORD flags)
        : handle_(
              ::CreateFileW(name.c_str(), access, kAnyShare, nullptr, creation, flags, nullptr)) {}
    ~File() { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE handle() const noexcept { return handle_; }
    bool close() noexcept {
        const bool closed = !isOpen() || ::CloseHandle(handle_) != 0;
        handle_ = INVALID_HANDLE_VALUE;
        return closed;
    }

  private:
    HANDLE handle_;
};

std::string readAll(const File& file, std::wstring_view path) {
    constexpr DWORD kChunk = 256 * 1024;
    const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
    std::string bytes;
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file.handle(), &size) != 0) {
        bytes.reserve(static_cast<std::size_t>(size.QuadPart));
    }
    for (;;) {
        DWORD count = 0;
        if (::ReadFile(file.handle(), chunk.get(), kChunk, &count, nullptr) == 0) {
            raise(::GetLastError(), kRead, path);
        }
        if (count == 0) return bytes;
        bytes.append(chunk.get(), count);
    }
}

std::wstring environment(const wchar_t* name) {
    std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    if (value.empty()) return value;
    value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

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

bool isFile(std::wstring_view path) noexcept {
    return isFileState(attributesOf(path));
}

bool isFolder(std::wstring_view path) noexcept {
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<std::wstring> fileNames(std::wstring_view folder) {
    WIN32_FIND_DATAW found{};
    const std::wstring pattern = nameOf(joinPath(folder, L"*"));
    const HANDLE search = ::FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        if (isMissing(code) || code == ERROR_DIRECTORY) return {};
        raise(code, kRead, folder);
    }
    std::vector<std::wstring> names;
    do {
        if (isFileState(found.dwFileAttributes)) names.emplace_back(found.cFileName);
    } while (::FindNextFileW(search, &found) != 0);
    const DWORD code = ::GetLastError();
    ::FindClose(search);
    if (code != ERROR_NO_MORE_FILES) raise(code, kRead, folder);
    return names;
}

bool isWritableFolder(std::wstring_view folder) noexcept {
    const std::wstring name = joinPath(folder, L"kestrel");
    const File trial(name + L"." + std::to_wstring(::GetCurrentProcessId()) + L".try",
                     GENERIC_WRITE, CREATE_NEW,
                     FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    return trial.isOpen();
}

void makeFolder(std::wstring_view folder) {
    if (isFolder(folder)) return;
    const std::wstring_view above = folderOf(folder);
    if (!above.empty() && above.size() < folder.size()) makeFolder(above);
    if (::CreateDirectoryW(nameOf(folder).c_str(), nullptr) == 0 && !isFolder(folder)) {
        raise(::GetLastError(), L"Cannot make the folder", folder);
    }
}

std::optional<std::string> read(std::wstring_view path) {
    if (!isFile(path)) {
        const DWORD code = ::GetLastError();
        const bool unseen = attributesOf(path) == INVALID_FILE_ATTRIBUTES;
        if (unseen && !isMissing(code)) raise(code, kRead, path);
        return std::nullopt;
    }
    const File file(nameOf(path), GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file.isOpen()) raise(::GetLastError(), kRead, path);
    if (::GetFileType(file.handle()) != FILE_TYPE_DISK) return std::nullopt;
    return readAll(file, path);
}

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

// The system has no wait for several files, so each is put in its place at once.
struct Batch::Pending {};

Batch::Batch() = default;
Batch::~Batch() = default;

void Batch::add(std::wstring_view path, std::string_view bytes) {
    replace(path, bytes, {});
}

void Batch::commit() {}

std::wstring makeTemporary(std::wstring_view prefix) {
    const std::wstring folder =
        textOf([](wchar_t* text, DWORD size) { return ::GetTempPathW(size, text); });
    wchar_t name[MAX_PATH + 1] = {};
    if (::GetTempFileNameW(folder.c_str(), std::wstring(prefix).c_str(), 0, name) == 0) {
        raise(::GetLastError(), L"Cannot make a temporary file in", folder);
    }
    ::SetFileAttributesW(name, FILE_ATTRIBUTE_TEMPORARY);
    return name;
}

std::wstring longPath(std::wstring_view path) {
    const std::wstring name = nameOf(path);
    if (name.empty()) return {};
    const std::wstring full = absolutePath(name);
    return textOf(
        [&](wchar_t* text, DWORD size) { return ::GetLongPathNameW(full.c_str(), text, size); });
}

std::wstring absolutePath(std::wstring_view path) {
    const std::wstring name = nameOf(path);
    return textOf([&](wchar_t* text, DWORD size) {
        return ::GetFullPathNameW(name.c_str(), size, text, nullptr);
    });
}

std::wstring executableFolder() {
    std::vector<wchar_t> name(32768);
    const DWORD length =
        ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    return std::wstring(folderOf({name.data(), length}));
}

std::wstring userFolder() {
    return joinPath(environment(L"APPDATA"), L"Kestrel");
}

bool isSeparator(wchar_t c) noexcept {
    return c == L'\\' || c == L'/';
}

wchar_t separator() noexcept {
    return L'\\';
}

}  // namespace filesystem

}  // namespace kestrel
