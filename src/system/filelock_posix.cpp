#include "system/filelock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "system/file_posix.h"

namespace kestrel {

namespace {

// False when the holder before took the file away in the meantime: the lock is then of a
// file that nobody finds any more.
bool isStillThere(int file, const std::string& name) noexcept {
    struct stat opened {};
    struct stat found {};
    return ::fstat(file, &opened) == 0 && ::stat(name.c_str(), &found) == 0 &&
           opened.st_dev == found.st_dev && opened.st_ino == found.st_ino;
}

}  // namespace

FileLock::Try FileLock::tryOnce() noexcept {
    const std::string name = posix::nameOf(path_);
    const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) return errno == EINTR ? Try::busy : Try::impossible;
    const bool locked = ::flock(file, LOCK_EX | LOCK_NB) == 0;
    const bool busy = locked || errno == EWOULDBLOCK || errno == EINTR;
    if (locked && isStillThere(file, name)) {
        file_ = file;
        return Try::held;
    }
    ::close(file);
    return busy ? Try::busy : Try::impossible;
}

FileLock::~FileLock() {
    if (!held_) return;
    ::unlink(posix::nameOf(path_).c_str());
    ::close(static_cast<int>(file_));
}

}  // namespace kestrel
