#include "system/filesystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "base/bytes.h"
#include "base/paths.h"
#include "system/file_posix.h"
#include "system/largepages.h"
#include "system/systemerror.h"

namespace kestrel {

namespace {

ErrorNumber errorNumber(int code) noexcept {
    switch (code) {
        case ENOENT:
            return kFileNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
            return kPermissionDenied;
        case ENOSPC:
        case EDQUOT:
            return kDiskFull;
        case EMFILE:
        case ENFILE:
            return kTooManyFiles;
        case EIO:
            return kDeviceError;
        case ENOMEM:
            return kOutOfMemory;
        default:
            return kPathError;
    }
}

}  // namespace

void throwSystemError(int code, std::wstring_view action, std::wstring_view path) {
    std::wstring text(action);
    text.append(L" '").append(path).append(L"': ");
    throw RunTimeError(errorNumber(code), text + fromUtf8(std::system_category().message(code)));
}

namespace filesystem {

using posix::nameOf;

namespace {

constexpr std::wstring_view kRead = L"Cannot read";

std::optional<struct stat> look(std::wstring_view path) noexcept {
    struct stat status {};
    if (::stat(nameOf(path).c_str(), &status) != 0) return std::nullopt;
    return status;
}

// True for a failed look at a path that names nothing.
bool isMissing(int code) noexcept {
    return code == ENOENT || code == ENOTDIR || code == ELOOP || code == ENAMETOOLONG;
}

// Reads to the end, wherever it is by now: the file may shrink or grow.
std::string readAll(posix::File& file, std::size_t expected) {
    constexpr std::size_t kChunk = 0x40000;
    const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
    std::string bytes;
    bytes.reserve(expected);
    wishForLargePages(bytes.data(), bytes.capacity());
    while (const std::size_t count = file.read(chunk.get(), kChunk)) {
        bytes.append(chunk.get(), count);
    }
    return bytes;
}

// An open folder, closed at the end of its life; null when it cannot be opened.
using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

// True for an entry that is a file, or a link to one.
bool isFileEntry(DIR* folder, const dirent& entry) noexcept {
    if (entry.d_type == DT_REG) return true;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
    struct stat status {};
    return ::fstatat(::dirfd(folder), entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

std::string homeFolder() {
    std::string home = environment("HOME");
    if (!home.empty()) return home;
    const passwd* user = ::getpwuid(::getuid());
    return user == nullptr ? "/" : user->pw_dir;
}

std::wstring newFile(std::wstring_view prefix, std::wstring_view folder) {
    std::string name = toUtf8(joinPath(folder, prefix)) + "XXXXXX";
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) throwSystemError(errno, L"Cannot make a temporary file in", folder);
    ::close(descriptor);
    return fromUtf8(name);
}

// The program's folder below the one that the variable names, or below `otherwise` in the
// user's own.
std::wstring baseFolder(const char* variable, const char* otherwise) {
    std::string base = environment(variable);
    if (!base.starts_with('/')) base = homeFolder() + otherwise;
    return joinPath(fromUtf8(base), L"kestrel");
}

}  // namespace

bool isFile(std::wstring_view path) noexcept {
    const auto status = look(path);
    return status && S_ISREG(status->st_mode);
}

bool isProtected(std::wstring_view path) noexcept {
    const auto status = look(path);
    return status && (status->st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

void protect(std::wstring_view path) noexcept {
    ::chmod(nameOf(path).c_str(), S_IRUSR);
}

// A file is replaced by its folder's rights here, and keeps its mode.
Unprotected::Unprotected(std::wstring_view) {}
Unprotected::~Unprotected() = default;

Standing whatStands(std::wstring_view path) noexcept {
    struct stat status {};
    // What cannot be looked at is not known to be nothing.
    if (::lstat(nameOf(path).c_str(), &status) != 0) {
        return isMissing(errno) ? Standing::nothing : Standing::other;
    }
    if (S_ISREG(status.st_mode)) return Standing::file;
    return S_ISDIR(status.st_mode) ? Standing::folder : Standing::other;
}

bool isFolder(std::wstring_view path) noexcept {
    const auto status = look(path);
    return status && S_ISDIR(status->st_mode);
}

std::vector<std::wstring> fileNames(std::wstring_view folder) {
    const Folder open(::opendir(nameOf(folder).c_str()), ::closedir);
    if (open == nullptr) {
        if (isMissing(errno)) return {};
        throwSystemError(errno, kRead, folder);
    }
    std::vector<std::wstring> names;
    errno = 0;
    while (const dirent* entry = ::readdir(open.get())) {
        if (isFileEntry(open.get(), *entry)) names.push_back(fromUtf8(entry->d_name));
        errno = 0;
    }
    if (errno != 0) throwSystemError(errno, kRead, folder);
    return names;
}

bool isWritableFolder(std::wstring_view folder) noexcept {
    return isFolder(folder) &&
           ::faccessat(AT_FDCWD, nameOf(folder).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

void makeFolder(std::wstring_view folder) {
    if (isFolder(folder)) return;
    const std::wstring_view above = folderOf(folder);
    if (!above.empty() && above.size() < folder.size()) makeFolder(above);
    if (::mkdir(nameOf(folder).c_str(), 0700) == 0) return;
    const int reason = errno;
    if (!isFolder(folder)) throwSystemError(reason, L"Cannot make the folder", folder);
}

std::optional<std::string> read(std::wstring_view path) {
    const std::string name = nameOf(path);
    struct stat status {};
    if (::stat(name.c_str(), &status) != 0) {
        if (isMissing(errno)) return std::nullopt;
        throwSystemError(errno, kRead, path);
    }
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    posix::File file(name, O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, {kRead, path});
    status = file.status();
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    return readAll(file, static_cast<std::size_t>(status.st_size));
}

void makePrivate(std::wstring_view path) {
    posix::File(nameOf(path), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600,
                {L"Cannot write", path});
}

void remove(std::wstring_view path) noexcept {
    ::unlink(nameOf(path).c_str());
}

void replace(std::wstring_view path, std::string_view bytes, std::wstring_view backup) {
    posix::replaceFile(path, bytes, backup);
}

std::wstring makeTemporary(std::wstring_view prefix) {
    const std::wstring folder = fromUtf8(environment("TMPDIR"));
    return newFile(prefix, isFolder(folder) ? folder : L"/tmp");
}

std::wstring makeTemporary(std::wstring_view prefix, std::wstring_view folder) {
    makeFolder(folder);
    // Fails for a folder of somebody else's.
    if (::chmod(nameOf(folder).c_str(), 0700) != 0) {
        throwSystemError(errno, L"Cannot close to others the folder", folder);
    }
    return newFile(prefix, folder);
}

void removeOld(std::wstring_view prefix, std::wstring_view folder, std::chrono::seconds age) {
    for (const std::wstring& name : fileNames(folder)) {
        const std::wstring path = joinPath(folder, name);
        const auto status = look(path);
        if (!name.starts_with(prefix) || !status) continue;
        if (status->st_mtime < std::time(nullptr) - age.count()) ::unlink(nameOf(path).c_str());
    }
}

std::wstring longPath(std::wstring_view path) {
    return look(path) ? absolutePath(path) : std::wstring();
}

std::optional<Identity> identityOf(std::wstring_view path) {
    const auto status = look(path);
    if (!status) return std::nullopt;
    return Identity{status->st_dev, status->st_ino};
}

std::wstring pathBehindLinks(std::wstring_view path) {
    char name[PATH_MAX];
    return ::realpath(nameOf(path).c_str(), name) == nullptr ? std::wstring() : fromUtf8(name);
}

std::wstring absolutePath(std::wstring_view path) {
    std::wstring whole(path);
    if (!path.starts_with(L'/')) {
        char folder[PATH_MAX];
        if (::getcwd(folder, sizeof folder) == nullptr) {
            throwSystemError(errno, L"Cannot find the folder of", path);
        }
        whole = joinPath(fromUtf8(folder), path);
    }
    std::wstring plain = fromUtf8(std::filesystem::path(nameOf(whole)).lexically_normal().native());
    if (plain == whole || identityOf(plain) == identityOf(whole)) return plain;
    // What stands before a ".." is a link.
    const std::wstring behindLinks = pathBehindLinks(whole);
    return behindLinks.empty() ? plain : behindLinks;
}

std::size_t sizeOfName(std::wstring_view name) {
    return toUtf8(name).size();
}

std::wstring pathOfAddress(std::wstring_view, std::wstring path) {
    return path;
}

std::wstring executableFolder() {
    char name[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", name, sizeof name);
    if (length <= 0) return {};
    return std::wstring(folderOf(fromUtf8({name, static_cast<std::size_t>(length)})));
}

std::wstring userFolder() {
    return baseFolder("XDG_CONFIG_HOME", "/.config");
}

std::wstring stateFolder() {
    return baseFolder("XDG_STATE_HOME", "/.local/state");
}

std::wstring cacheFolder() {
    return baseFolder("XDG_CACHE_HOME", "/.cache");
}

}  // namespace filesystem

void wishForLargePages(void* memory, std::size_t bytes) noexcept {
    constexpr std::uintptr_t kPage = std::uintptr_t{1} << 21;
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (start + kPage - 1) / kPage * kPage;
    const std::uintptr_t last = (start + bytes) / kPage * kPage;
    if (first < last)
        ::madvise(static_cast<char*>(memory) + (first - start), last - first, MADV_HUGEPAGE);
}

}  // namespace kestrel
