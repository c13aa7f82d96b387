#include "tankhost/platform.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/bytes.h"
#include "base/error.h"

namespace kestrel::tankhost {
namespace {

constexpr int kCannotLoad = 48;
constexpr rlim_t kMostMemory = rlim_t{1} << 30;

// What the system says about the last failure, without the path before it.
std::wstring lastReason(const std::wstring& path) {
    const char* words = ::dlerror();
    std::wstring reason = fromUtf8(words == nullptr ? "unknown reason" : words);
    const std::wstring start = path + L": ";
    if (reason.starts_with(start)) reason.erase(0, start.size());
    return reason;
}

void limit(__rlimit_resource resource, rlim_t most) {
    const rlimit limits{most, most};
    ::setrlimit(resource, &limits);
}

// An archive is only read. A kernel that is too old to refuse writes lets them be.
void refuseWrites() {
    landlock_ruleset_attr rules{};
    rules.handled_access_fs = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                              LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                              LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                              LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                              LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
    const long set = ::syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0);
    if (set < 0) return;
    ::syscall(SYS_landlock_restrict_self, set, 0);
    ::close(static_cast<int>(set));
}

// What another program behind this process keeps.
void restrictAll() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    limit(RLIMIT_CORE, 0);
}

}  // namespace

Streams::Streams()
    : input_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)),
      output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ::dup2(null, STDIN_FILENO);
    ::dup2(null, STDOUT_FILENO);
    ::close(null);
}

std::size_t Streams::read(char* bytes, std::size_t most) const {
    ssize_t count = 0;
    while ((count = ::read(static_cast<int>(input_), bytes, most)) < 0 && errno == EINTR) {
    }
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

bool Streams::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::write(static_cast<int>(output_), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return false;
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

void restrictProcess() {
    restrictAll();
    refuseWrites();
#if !defined(__SANITIZE_ADDRESS__)  // which takes far more addresses than memory
    limit(RLIMIT_AS, kMostMemory);
#endif
}

void leave(int code) {
    ::_exit(code);
}

int becomeProgram(char** words) {
    restrictAll();
    ::execvp(words[1], words + 1);
    return 127;
}

// NOLINTNEXTLINE(readability-non-const-parameter): the system writes there.
std::size_t readMemory(const char* from, char* to, std::size_t most) noexcept {
    const iovec local{to, most};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the call has no other type.
    const iovec remote{const_cast<char*>(from), most};
    const ssize_t count = ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0);
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

std::string libraryText(std::wstring_view path) {
    return toUtf8(path);
}

Library::Library(const std::wstring& path)
    : handle_(::dlopen(toUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ != nullptr) return;
    throw RunTimeError(kCannotLoad, L"Cannot load '" + path + L"': " + lastReason(path));
}

void* Library::find(const std::string& name) const noexcept {
    return ::dlsym(handle_, name.c_str());
}

}  // namespace kestrel::tankhost
