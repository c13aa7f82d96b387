#include "system/file_posix.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/bytes.h"
#include "system/systemerror.h"

namespace kestrel::posix {

namespace {

// Repeats a call that a signal has interrupted.
template <class Call>
auto uninterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR) return result;
    }
}

}  // namespace

std::string nameOf(std::wstring_view path) {
    if (path.find(L'\0') != std::wstring_view::npos) return {};
    return toUtf8(path);
}

void File::Failure::raise() const {
    throwSystemError(errno, action, path);
}

File::File(const std::string& name, int flags, mode_t mode, const Failure& failure)
    : descriptor_(uninterrupted([&] { return ::open(name.c_str(), flags | O_CLOEXEC, mode); })),
      failure_(failure) {
    if (descriptor_ < 0) failure_.raise();
}

File::~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

struct stat File::status() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) failure_.raise();
    return status;
}

std::size_t File::read(char* bytes, std::size_t size) {
    const ssize_t count = uninterrupted([&] { return ::read(descriptor_, bytes, size); });
    if (count < 0) failure_.raise();
    return static_cast<std::size_t>(count);
}

void File::write(std::string_view bytes) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), kMost);
        const ssize_t count =
            uninterrupted([&] { return ::write(descriptor_, bytes.data(), size); });
        if (count == 0) errno = ENOSPC;
        if (count <= 0) failure_.raise();
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void File::settle() {
    const int copy = ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    // After EINTR the descriptor is closed all the same.
    if (copy >= 0 && ::close(copy) != 0 && errno != EINTR) failure_.raise();
}

void File::sync() {
    // Some file systems have nothing to flush and say so by EINVAL.
    const int result = uninterrupted([&] { return ::fsync(descriptor_); });
    if (result != 0 && errno != EINVAL && errno != ENOTSUP && errno != ENOSYS) failure_.raise();
}

}  // namespace kestrel::posix
