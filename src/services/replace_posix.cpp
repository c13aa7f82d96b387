#include <dirent.h>
#include <signal.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/file_posix.h"
#include "services/filesystem.h"

// Replaces a file whole or not at all. Every step before the last rename can
// fail or be the last one that runs, and the old file is still there.
namespace kestrel::posix {

namespace {

constexpr std::wstring_view kWrite = L"Cannot write";
constexpr const char* kAccessList = "system.posix_acl_access";
constexpr std::string_view kTemporaryEnd = ".tmp";

// A file's own name, no link, and its state when it is there.
struct Place {
    std::string name;
    std::optional<struct stat> status;
};

std::string folderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? "./" : name.substr(0, slash + 1);
}

std::string baseOf(const std::string& name) {
    return name.substr(name.rfind('/') + 1);
}

std::string linkTarget(const std::string& link, const File::Failure& failure) {
    char text[PATH_MAX];
    const ssize_t length = ::readlink(link.c_str(), text, sizeof text);
    if (length < 0) failure.raise();
    const std::string target(text, static_cast<std::size_t>(length));
    return target.starts_with('/') ? target : folderOf(link) + target;
}

[[noreturn]] void refuse(const struct stat& status, const File::Failure& failure) {
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        failure.raise();
    }
    throw RunTimeError(kPathError, std::wstring(failure.action) + L" '" +
                                       std::wstring(failure.path) +
                                       L"': it is not an ordinary file");
}

// What stands at `name` itself; a folder, device, pipe or socket is refused.
Place placeAt(const std::string& name, const File::Failure& failure) {
    struct stat status {};
    if (::lstat(name.c_str(), &status) != 0) {
        if (errno != ENOENT) failure.raise();
        return {name, std::nullopt};
    }
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) refuse(status, failure);
    return {name, status};
}

// The file behind the links that begin at `name`.
Place placeBehind(std::string name, const File::Failure& failure) {
    constexpr int kMostLinks = 40;
    for (int links = 0; links < kMostLinks; ++links) {
        Place place = placeAt(name, failure);
        if (!place.status || !S_ISLNK(place.status->st_mode)) return place;
        name = linkTarget(name, failure);
    }
    errno = ELOOP;
    failure.raise();
}

// How the names of all temporary siblings of `name` begin.
std::string temporaryStart(const std::string& name) {
    constexpr std::size_t kMostOfBase = 180;  // leaves room within a name's 255 bytes
    return std::string(".").append(baseOf(name), 0, kMostOfBase).append(".");
}

// A temporary sibling of a file: its name holds the process, so that the next
// run can tell what a killed one left behind.
class Sibling {
  public:
    Sibling(const std::string& of, const File::Failure& failure) {
        std::uint64_t random = 0;
        if (::getentropy(&random, sizeof random) != 0) failure.raise();
        char suffix[48];
        std::snprintf(suffix, sizeof suffix, "%ld-%016llx", static_cast<long>(::getpid()),
                      static_cast<unsigned long long>(random));
        name_ = folderOf(of) + temporaryStart(of) + suffix + std::string(kTemporaryEnd);
    }
    // Always: a rename between two names of the same file leaves both.
    ~Sibling() { ::unlink(name_.c_str()); }
    Sibling(const Sibling&) = delete;
    Sibling& operator=(const Sibling&) = delete;

    const std::string& name() const noexcept { return name_; }

    void renameTo(const std::string& target, const File::Failure& failure) const {
        if (::rename(name_.c_str(), target.c_str()) != 0) failure.raise();
    }

  private:
    std::string name_;
};

std::vector<std::string> extendedNames(const std::string& name) {
    const ssize_t size = ::llistxattr(name.c_str(), nullptr, 0);
    if (size <= 0) return {};
    std::string list(static_cast<std::size_t>(size), '\0');
    const ssize_t length = ::llistxattr(name.c_str(), list.data(), list.size());
    std::vector<std::string> names;
    for (ssize_t at = 0; at < length;) {
        names.emplace_back(list.c_str() + at);
        at += static_cast<ssize_t>(names.back().size()) + 1;
    }
    return names;
}

std::optional<std::string> extendedValue(const std::string& name, const std::string& attribute) {
    const ssize_t size = ::lgetxattr(name.c_str(), attribute.c_str(), nullptr, 0);
    if (size < 0) return std::nullopt;
    std::string value(static_cast<std::size_t>(size), '\0');
    const ssize_t length = ::lgetxattr(name.c_str(), attribute.c_str(), value.data(), value.size());
    if (length < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(length));
    return value;
}

// Copies what can be copied; only an access list must not get lost.
void keepExtended(const File& file, const std::string& from, const File::Failure& failure) {
    bool listed = false;
    for (const std::string& attribute : extendedNames(from)) {
        const std::optional<std::string> value = extendedValue(from, attribute);
        const bool kept = value && ::fsetxattr(file.descriptor(), attribute.c_str(), value->data(),
                                               value->size(), 0) == 0;
        if (attribute != kAccessList) continue;
        listed = true;
        if (!kept) failure.raise();
    }
    // One that the folder hands down to new files was not the old file's.
    if (!listed) ::fremovexattr(file.descriptor(), kAccessList);
}

// Gives the file the owner of the old one where that is allowed. Returns the
// mode that it may have: without the owner no right to act as that owner, and
// without the group no rights for the members of another one.
mode_t keepOwner(const File& file, const struct stat& old) {
    const mode_t mode = old.st_mode & 07777U;
    if (::fchown(file.descriptor(), old.st_uid, old.st_gid) == 0) return mode;
    const mode_t safe = mode & ~static_cast<mode_t>(S_ISUID | S_ISGID);
    if (::fchown(file.descriptor(), static_cast<uid_t>(-1), old.st_gid) == 0) return safe;
    return (safe & ~static_cast<mode_t>(S_IRWXG)) | ((safe & S_IRWXO) << 3U);
}

void keepAttributes(const File& file, const Place& old, const File::Failure& failure) {
    const mode_t mode = keepOwner(file, *old.status);
    keepExtended(file, old.name, failure);
    // Not where nothing changes: some file systems know no modes.
    if ((file.status().st_mode & 07777U) == mode) return;
    if (::fchmod(file.descriptor(), mode) != 0) failure.raise();
}

// Writes the new file `name`, with the attributes of `old`; to the disk when it is
// to `last`.
void writeNew(const std::string& name, std::string_view bytes, const Place& old,
              const File::Failure& failure, bool last = true) {
    File file(name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, old.status ? 0600 : 0666, failure);
    file.write(bytes);
    if (old.status) keepAttributes(file, old, failure);
    if (last) file.sync();
    file.close();
}

// Puts the old file at `backup` too, without a moment in which either is
// incomplete: by a second name for it or, where there are none, by a copy.
void keepAt(const std::string& backup, const Place& old, const File::Failure& failure) {
    placeAt(backup, failure);
    const Sibling spare(backup, failure);
    if (::link(old.name.c_str(), spare.name().c_str()) != 0) {
        const auto bytes = filesystem::read(fromUtf8(old.name));
        if (!bytes) failure.raise();
        writeNew(spare.name(), *bytes, old, failure);
    }
    spare.renameTo(backup, failure);
}

// The file that stood at `backup` before keepAt(), to be put back.
class OldBackup {
  public:
    OldBackup(const std::string& backup, const File::Failure& failure)
        : backup_(backup),
          spare_(backup, failure),
          there_(::link(backup.c_str(), spare_.name().c_str()) == 0 || errno != ENOENT) {}
    void putBack() const {
        if (!there_) ::unlink(backup_.c_str());
        ::rename(spare_.name().c_str(), backup_.c_str());
    }

  private:
    std::string backup_;
    Sibling spare_;
    bool there_;
};

// True for a temporary sibling whose process is gone; `rest` is what follows the
// common start of such names.
bool isLeftBehind(std::string_view rest) {
    constexpr std::size_t kRandomDigits = 16;
    long process = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), process);
    const std::size_t digits = static_cast<std::size_t>(end - rest.data());
    if (error != std::errc() || process <= 0 || process > INT_MAX) return false;
    if (rest.size() != digits + 1 + kRandomDigits + kTemporaryEnd.size()) return false;
    if (rest[digits] != '-' || !rest.ends_with(kTemporaryEnd)) return false;
    return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH;
}

// Removes what killed runs left behind in `folder` of the files whose temporary
// siblings begin with `start`; with an empty one, of all files.
void removeSiblings(const std::string& folder, std::string_view start) {
    DIR* entries = ::opendir(folder.c_str());
    if (entries == nullptr) return;
    while (const dirent* entry = ::readdir(entries)) {
        const std::string_view found = entry->d_name;
        if (!found.starts_with('.') || !found.ends_with(kTemporaryEnd)) continue;
        const std::size_t dot = found.rfind('.', found.size() - kTemporaryEnd.size() - 1);
        const std::string_view common = found.substr(0, dot + 1);
        if (dot == 0 || (!start.empty() && common != start)) continue;
        if (isLeftBehind(found.substr(dot + 1))) ::unlink((folder + entry->d_name).c_str());
    }
    ::closedir(entries);
}

void removeSiblingsOf(const std::string& name) {
    removeSiblings(folderOf(name), temporaryStart(name));
}

// Flushes everything that was written to the file system of `folder`; false when it
// cannot, or when some file there, maybe another one, could not be written.
bool syncFileSystem(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool synced = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

void syncFile(const std::string& name, const File::Failure& failure) {
    File file(name, O_RDONLY, 0, failure);
    file.sync();
    file.close();
}

// Makes the renames in the folder of `name` last. The file is whole in any case,
// so a system that cannot do this is no failure.
void syncFolder(const std::string& name) {
    const int folder = ::open(folderOf(name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    ::fsync(folder);
    ::close(folder);
}

std::string checkedName(std::wstring_view path, const File::Failure& failure) {
    std::string name = nameOf(path);
    if (name.empty()) {
        errno = EINVAL;
        failure.raise();
    }
    return name;
}

}  // namespace

void replaceFile(std::wstring_view path, std::string_view bytes, std::wstring_view backup) {
    const File::Failure failure{kWrite, path};
    const Place old = placeBehind(checkedName(path, failure), failure);
    const Sibling fresh(old.name, failure);
    writeNew(fresh.name(), bytes, old, failure);
    std::optional<OldBackup> before;
    if (!backup.empty() && old.status) {
        const File::Failure backupFailure{kWrite, backup};
        const std::string backupName = checkedName(backup, backupFailure);
        before.emplace(backupName, backupFailure);
        keepAt(backupName, old, backupFailure);
        removeSiblingsOf(backupName);
    }
    try {
        fresh.renameTo(old.name, failure);
    } catch (...) {
        if (before) before->putBack();
        throw;
    }
    syncFolder(old.name);
    removeSiblingsOf(old.name);
}

}  // namespace kestrel::posix

namespace kestrel::filesystem {

using posix::File;

struct Batch::Pending {
    std::string target;
    std::unique_ptr<posix::Sibling> fresh;
    std::wstring path;
};

Batch::Batch() = default;

Batch::~Batch() {
    try {
        commit();
    } catch (...) {  // NOLINT(bugprone-empty-catch): who wants to know calls commit()
    }
}

void Batch::add(std::wstring_view path, std::string_view bytes) {
    const File::Failure failure{posix::kWrite, path};
    const posix::Place old = posix::placeBehind(posix::checkedName(path, failure), failure);
    auto fresh = std::make_unique<posix::Sibling>(old.name, failure);
    posix::writeNew(fresh->name(), bytes, old, failure, false);
    pending_.push_back({old.name, std::move(fresh), std::wstring(path)});
    bytes_ += bytes.size();
    constexpr std::size_t kMostFiles = 500;
    constexpr std::size_t kMostBytes = std::size_t{64} << 20;
    if (pending_.size() >= kMostFiles || bytes_ >= kMostBytes) commit();
}

void Batch::commit() {
    const std::vector<Pending> files = std::exchange(pending_, {});
    bytes_ = 0;
    if (files.empty()) return;
    const std::string folder = posix::folderOf(files.front().target);
    // Whatever is renamed from here on is on the disk: one wait for all of them, or
    // one for each where the disk does not tell whether that was well.
    const bool synced = posix::syncFileSystem(folder);
    std::exception_ptr failed;
    for (const Pending& file : files) {
        try {
            const File::Failure failure{posix::kWrite, file.path};
            if (!synced) posix::syncFile(file.fresh->name(), failure);
            file.fresh->renameTo(file.target, failure);
        } catch (...) {
            if (!failed) failed = std::current_exception();
        }
    }
    posix::syncFolder(files.front().target);
    posix::removeSiblings(folder, {});
    if (failed) std::rethrow_exception(failed);
}

}  // namespace kestrel::filesystem
