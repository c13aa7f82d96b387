#include <dirent.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/error.h"
#include "base/paths.h"
#include "system/file_posix.h"
#include "system/filesystem.h"
#include "system/siblings.h"

// Replaces a file whole or not at all. Every step before the last rename can
// fail or be the last one that runs, and the old file is still there.
namespace kestrel::posix {

namespace {

constexpr std::wstring_view kWrite = L"Cannot write";
constexpr const char* kAccessList = "system.posix_acl_access";

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

// A temporary sibling of a file. Its owner shares a lock of the file, which the system ends
// with the owner: one that can be locked alone was left behind. On a file system without
// locks none can be.
class Sibling {
  public:
    Sibling(const std::string& of, const File::Failure& failure)
        : start_(folderOf(of) + temporaryStart(of)), failure_(failure) {
        chooseName();
    }
    // Always: a rename between two names of the same file leaves both.
    ~Sibling() { ::unlink(name_.c_str()); }
    Sibling(const Sibling&) = delete;
    Sibling& operator=(const Sibling&) = delete;

    // Makes it a new, empty file.
    File& make(mode_t mode) {
        constexpr int kTries = 100;
        for (int attempt = 1;; ++attempt) {
            file_.emplace(name_, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode, failure_);
            if (isOwned() || attempt == kTries) return *file_;
            ::unlink(name_.c_str());
            chooseName();
        }
    }

    // Makes it a second name of `file`; false, with errno set, where that cannot be.
    bool makeLink(const std::string& file) {
        constexpr int kTries = 100;
        for (int attempt = 1;; ++attempt) {
            const bool locked = share(file);
            if (::link(file.c_str(), name_.c_str()) != 0) return false;
            // Another program may have replaced the file in between.
            if (!locked || isStillThere() || attempt == kTries) return true;
            ::unlink(name_.c_str());
            chooseName();
        }
    }

    const std::string& name() const noexcept { return name_; }
    File& file() noexcept { return *file_; }

    void renameTo(const std::string& target) const {
        if (::rename(name_.c_str(), target.c_str()) != 0) failure_.raise();
    }

  private:
    void chooseName() {
        struct {
            std::uint32_t decimals;
            std::uint64_t digits;
        } random{};
        if (::getentropy(&random, sizeof random) != 0) failure_.raise();
        char end[40];
        std::snprintf(end, sizeof end, "%lu-%016llx", static_cast<unsigned long>(random.decimals),
                      static_cast<unsigned long long>(random.digits));
        name_ = start_ + end + std::string(siblings::kEnd);
    }

    // False when somebody took it, new as it is, for one that was left behind.
    bool isOwned() const {
        if (::flock(file_->descriptor(), LOCK_SH | LOCK_NB) != 0) return errno != EWOULDBLOCK;
        return file_->status().st_nlink > 0;
    }

    bool isStillThere() const {
        struct stat found {};
        return ::stat(name_.c_str(), &found) == 0 && found.st_ino == file_->status().st_ino;
    }

    // The lock of a user's own file is waited for as long as somebody who removes what was
    // left behind may hold it. False where it cannot be opened, by that one neither.
    bool share(const std::string& file) {
        constexpr int kTries = 500;
        constexpr useconds_t kPause = 1000;
        try {
            file_.emplace(file, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, 0, failure_);
        } catch (const RunTimeError&) {
            return false;
        }
        for (int attempt = 0; attempt < kTries; ++attempt) {
            const int result = ::flock(file_->descriptor(), LOCK_SH | LOCK_NB);
            if (result == 0 || errno != EWOULDBLOCK) break;
            ::usleep(kPause);
        }
        return true;
    }

    std::string start_;
    File::Failure failure_;
    std::string name_;
    std::optional<File> file_;
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
void keepExtended(const File& file, const std::string& from) {
    bool listed = false;
    for (const std::string& attribute : extendedNames(from)) {
        const std::optional<std::string> value = extendedValue(from, attribute);
        const bool kept = value && ::fsetxattr(file.descriptor(), attribute.c_str(), value->data(),
                                               value->size(), 0) == 0;
        if (attribute != kAccessList) continue;
        listed = true;
        if (!kept) file.raise();
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

void keepAttributes(const File& file, const Place& old) {
    const mode_t mode = keepOwner(file, *old.status);
    keepExtended(file, old.name);
    // Not where nothing changes: some file systems know no modes.
    if ((file.status().st_mode & 07777U) == mode) return;
    if (::fchmod(file.descriptor(), mode) != 0) file.raise();
}

// Makes `fresh` the new file, with the attributes of `old`; on the disk when it is to
// `last`.
void writeNew(Sibling& fresh, std::string_view bytes, const Place& old, bool last = true) {
    File& file = fresh.make(old.status ? 0600 : 0666);
    file.write(bytes);
    if (old.status) keepAttributes(file, old);
    file.settle();
    if (last) file.sync();
}

// Puts the old file at `backup` too, without a moment in which either is
// incomplete: by a second name for it or, where there are none, by a copy.
void keepAt(const std::string& backup, const Place& old, const File::Failure& failure) {
    placeAt(backup, failure);
    Sibling spare(backup, failure);
    if (!spare.makeLink(old.name)) {
        const auto bytes = filesystem::read(fromUtf8(old.name));
        if (!bytes) failure.raise();
        writeNew(spare, *bytes, old);
    }
    spare.renameTo(backup);
}

// The file that stood at `backup` before keepAt(), to be put back.
class OldBackup {
  public:
    OldBackup(const std::string& backup, const File::Failure& failure)
        : backup_(backup),
          spare_(backup, failure),
          there_(spare_.makeLink(backup) || errno != ENOENT) {}
    void putBack() const noexcept {
        if (!there_) ::unlink(backup_.c_str());
        ::rename(spare_.name().c_str(), backup_.c_str());
    }

  private:
    std::string backup_;
    Sibling spare_;
    bool there_;
};

// Removes the sibling `name` when its owner is gone.
void removeLeftBehind(const std::string& name) {
    const int file =
        ::open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) return;
    struct stat status {};
    const bool gone = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
                      ::flock(file, LOCK_EX | LOCK_NB) == 0;
    if (gone) ::unlink(name.c_str());
    ::close(file);
}

// Removes what killed runs left behind in `folder` of the files whose temporary
// siblings begin with `start`; with an empty one, of all files.
void removeSiblings(const std::string& folder, std::string_view start) {
    DIR* entries = ::opendir(folder.c_str());
    if (entries == nullptr) return;
    while (const dirent* entry = ::readdir(entries)) {
        const std::string_view found = entry->d_name;
        if (!found.starts_with('.') || !found.ends_with(siblings::kEnd)) continue;
        const std::size_t dot = found.rfind('.', found.size() - siblings::kEnd.size() - 1);
        const std::string_view common = found.substr(0, dot + 1);
        if (dot == 0 || (!start.empty() && common != start)) continue;
        if (siblings::isEnd(found.substr(dot + 1))) removeLeftBehind(folder + entry->d_name);
    }
    ::closedir(entries);
}

void removeSiblingsOf(const std::string& name) {
    removeSiblings(folderOf(name), temporaryStart(name));
}

// Makes the renames in `folder` last. The files are whole in any case, so a system that
// cannot do this is no failure.
void syncFolder(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    ::fsync(file);
    ::close(file);
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
    removeSiblingsOf(old.name);
    Sibling fresh(old.name, failure);
    writeNew(fresh, bytes, old);
    std::optional<OldBackup> before;
    if (!backup.empty() && old.status) {
        const File::Failure backupFailure{kWrite, backup};
        const std::string backupName = checkedName(backup, backupFailure);
        removeSiblingsOf(backupName);
        before.emplace(backupName, backupFailure);
        keepAt(backupName, old, backupFailure);
    }
    try {
        fresh.renameTo(old.name);
    } catch (...) {
        if (before) before->putBack();
        throw;
    }
    syncFolder(folderOf(old.name));
}

}  // namespace kestrel::posix

namespace kestrel::filesystem {

using posix::File;

namespace {

struct Pending {
    Pending(std::wstring_view given, std::string name)
        : path(given), target(std::move(name)), fresh(target, {posix::kWrite, path}) {}
    ~Pending() = default;
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    std::wstring path;
    std::string target;
    posix::Sibling fresh;
    dev_t device = 0;
};

// As many as leave descriptors for whatever else is open: each is kept open.
std::size_t mostFiles() {
    constexpr rlim_t kMost = 200;
    rlimit open{};
    if (::getrlimit(RLIMIT_NOFILE, &open) != 0) return 1;
    return static_cast<std::size_t>(std::clamp<rlim_t>(open.rlim_cur / 4, 1, kMost));
}

}  // namespace

struct Batch::Work {
    std::vector<std::unique_ptr<Pending>> pending;
    std::size_t bytes = 0;
    std::set<std::string> cleaned;  // folders

    // Whatever is renamed behind this is on the disk: one wait for all files of a file
    // system, or one for each where the disk does not tell whether that was well.
    // Returns those for which one was enough.
    std::set<dev_t> sync() const {
        std::map<dev_t, bool> all;
        for (const auto& file : pending) {
            const auto [at, isNew] = all.try_emplace(file->device);
            if (isNew) at->second = ::syncfs(file->fresh.file().descriptor()) == 0;
        }
        std::set<dev_t> synced;
        for (const auto& [device, well] : all) {
            if (well) synced.insert(device);
        }
        return synced;
    }
};

void removeLeftBehind(std::wstring_view folder) {
    posix::removeSiblings(posix::nameOf(joinPath(folder, L"")), {});
}

Batch::Batch() : work_(std::make_unique<Work>()) {}

Batch::~Batch() {
    try {
        commit();
    } catch (...) {  // NOLINT(bugprone-empty-catch): who wants to know calls commit()
    }
}

void Batch::add(std::wstring_view path, std::string_view bytes) {
    const File::Failure failure{posix::kWrite, path};
    const posix::Place old = posix::placeBehind(posix::checkedName(path, failure), failure);
    const std::string folder = posix::folderOf(old.name);
    if (work_->cleaned.insert(folder).second) posix::removeSiblings(folder, {});
    auto file = std::make_unique<Pending>(path, old.name);
    posix::writeNew(file->fresh, bytes, old, false);
    file->device = file->fresh.file().status().st_dev;
    work_->pending.push_back(std::move(file));
    work_->bytes += bytes.size();
}

bool Batch::isDue() const noexcept {
    constexpr std::size_t kMostBytes = std::size_t{64} << 20;
    static const std::size_t most = mostFiles();
    return work_->pending.size() >= most || work_->bytes >= kMostBytes;
}

std::vector<Failure> Batch::commit() {
    const std::set<dev_t> synced = work_->sync();
    const auto files = std::exchange(work_->pending, {});
    work_->bytes = 0;
    std::vector<Failure> failures;
    std::set<std::string> folders;
    for (const auto& file : files) {
        try {
            if (!synced.contains(file->device)) file->fresh.file().sync();
            file->fresh.renameTo(file->target);
            folders.insert(posix::folderOf(file->target));
        } catch (...) {
            failures.push_back({file->path, currentError()});
        }
    }
    for (const std::string& folder : folders) posix::syncFolder(folder);
    return failures;
}

}  // namespace kestrel::filesystem
