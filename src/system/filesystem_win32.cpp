#include "system/filesystem.h"

#include <windows.h>

#include <algorithm>

#include "base/paths.h"
#include "system/file_win32.h"
#include "system/largepages.h"
#include "system/systemerror.h"

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

using namespace win32;

constexpr std::wstring_view kRead = L"Cannot read";

// True for the attributes of an ordinary file.
bool isFileState(DWORD attributes) noexcept {
    constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE |
                             FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kOther) == 0;
}

bool isMissing(DWORD code) noexcept {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
           code == ERROR_INVALID_NAME || code == ERROR_BAD_PATHNAME || code == ERROR_BAD_NETPATH ||
           code == ERROR_BAD_NET_NAME || code == ERROR_FILENAME_EXCED_RANGE;
}

// A program of 32 bits has no room for more than this and what it makes of it.
void checkSize(LONGLONG size, std::wstring_view path) {
    constexpr LONGLONG kMost = 256LL * 1024 * 1024;
    if (sizeof(void*) > 4 || size <= kMost) return;
    throw RunTimeError(kOutOfMemory,
                       L"The file is too large for a program of 32 bits, which "
                       L"takes 256 MB: '" +
                           std::wstring(path) + L"'");
}

std::string readAll(const File& file, std::wstring_view path) {
    constexpr DWORD kChunk = 256 * 1024;
    const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
    std::string bytes;
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file.handle(), &size) != 0) {
        checkSize(size.QuadPart, path);
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

std::wstring temporaryFolder() {
    return textOf([](wchar_t* text, DWORD size) { return ::GetTempPathW(size, text); });
}

constexpr std::uint64_t kSecond = 10'000'000;

// In the system's ticks, of which a second has kSecond.
std::uint64_t ticksOf(const FILETIME& time) noexcept {
    return (std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime;
}

}  // namespace

bool isFile(std::wstring_view path) noexcept {
    return isFileState(attributesOf(path));
}

bool isProtected(std::wstring_view path) noexcept {
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

void protect(std::wstring_view path) noexcept {
    ::SetFileAttributesW(nameOf(path).c_str(), FILE_ATTRIBUTE_READONLY);
}

Unprotected::Unprotected(std::wstring_view path) {
    if (!isProtected(path)) return;
    path_ = nameOf(path);
    ::SetFileAttributesW(path_.c_str(), ::GetFileAttributesW(path_.c_str()) &
                                            ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
}

Unprotected::~Unprotected() {
    if (path_.empty()) return;
    ::SetFileAttributesW(path_.c_str(),
                         ::GetFileAttributesW(path_.c_str()) | FILE_ATTRIBUTE_READONLY);
}

Standing whatStands(std::wstring_view path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(nameOf(path).c_str());
    // What cannot be looked at is not known to be nothing.
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return isMissing(::GetLastError()) ? Standing::nothing : Standing::other;
    }
    constexpr DWORD kOther = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
    if ((attributes & kOther) != 0) return Standing::other;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Standing::folder : Standing::file;
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
    const std::wstring name = nameOf(joinPath(folder, L"kestrel"));
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
    const DWORD attributes = attributesOf(path);
    if (!isFileState(attributes)) {
        const DWORD code = ::GetLastError();
        const bool unseen = attributes == INVALID_FILE_ATTRIBUTES;
        if (unseen && !isMissing(code)) raise(code, kRead, path);
        return std::nullopt;
    }
    const File file(nameOf(path), GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file.isOpen()) raise(::GetLastError(), kRead, path);
    if (::GetFileType(file.handle()) != FILE_TYPE_DISK) return std::nullopt;
    return readAll(file, path);
}

// What is made in the user's own folders is the user's alone by these.
void makePrivate(std::wstring_view path) {
    const File file(nameOf(path), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    if (!file.isOpen()) raise(::GetLastError(), kWrite, path);
}

void remove(std::wstring_view path) noexcept {
    ::DeleteFileW(nameOf(path).c_str());
}

std::wstring makeTemporary(std::wstring_view prefix) {
    return makeTemporary(prefix, temporaryFolder());
}

// What is below the user's own folder is closed to others.
std::wstring makeTemporary(std::wstring_view prefix, std::wstring_view folder) {
    makeFolder(folder);
    wchar_t name[MAX_PATH + 1] = {};
    if (::GetTempFileNameW(std::wstring(folder).c_str(), std::wstring(prefix).c_str(), 0, name) ==
        0) {
        raise(::GetLastError(), L"Cannot make a temporary file in", folder);
    }
    ::SetFileAttributesW(name, FILE_ATTRIBUTE_TEMPORARY);
    return name;
}

void removeOld(std::wstring_view prefix, std::wstring_view folder, std::chrono::seconds age) {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    const std::uint64_t oldest = ticksOf(now) - static_cast<std::uint64_t>(age.count()) * kSecond;
    for (const std::wstring& name : fileNames(folder)) {
        const std::wstring path = nameOf(joinPath(folder, name));
        WIN32_FILE_ATTRIBUTE_DATA data{};
        if (!name.starts_with(prefix) ||
            ::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0) {
            continue;
        }
        if (ticksOf(data.ftLastWriteTime) < oldest) ::DeleteFileW(path.c_str());
    }
}

std::wstring longPath(std::wstring_view path) {
    const std::wstring name = nameOf(absolutePath(path));
    if (name.empty()) return {};
    return withoutPrefix(textOf(
        [&](wchar_t* text, DWORD size) { return ::GetLongPathNameW(name.c_str(), text, size); }));
}

std::optional<Identity> identityOf(std::wstring_view path) {
    const File file(nameOf(path), 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION known{};
    if (!file.isOpen() || ::GetFileInformationByHandle(file.handle(), &known) == 0) {
        return std::nullopt;
    }
    const auto high = static_cast<std::uint64_t>(known.nFileIndexHigh) << 32U;
    return Identity{known.dwVolumeSerialNumber, high | known.nFileIndexLow};
}

std::wstring pathBehindLinks(std::wstring_view path) {
    const File file(nameOf(path), 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!file.isOpen()) return {};
    return withoutPrefix(textOf([&](wchar_t* text, DWORD size) {
        return ::GetFinalPathNameByHandleW(file.handle(), text, size, FILE_NAME_NORMALIZED);
    }));
}

std::wstring absolutePath(std::wstring_view path) {
    return fullName(path);
}

std::size_t sizeOfName(std::wstring_view name) {
    return name.size();
}

std::wstring pathOfAddress(std::wstring_view host, std::wstring path) {
    std::ranges::replace(path, L'/', L'\\');
    if (!host.empty()) return L"\\\\" + std::wstring(host) + path;
    const bool hasDrive = path.size() > 2 && path[2] == L':';
    return hasDrive ? path.substr(1) : path;
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

std::wstring stateFolder() {
    return joinPath(environment(L"LOCALAPPDATA"), L"Kestrel");
}

std::wstring cacheFolder() {
    return joinPath(temporaryFolder(), L"Kestrel");
}

}  // namespace filesystem

// Windows gives large pages to those alone who may lock memory.
void wishForLargePages(void*, std::size_t) noexcept {}

}  // namespace kestrel
