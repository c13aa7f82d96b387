#include "faults/faults.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrel::test {

namespace {

const Fault* armed = nullptr;
std::size_t count = 0;

bool isCounted(std::string_view call) {
    if (!armed->call.empty()) return call == armed->call;
    if (armed->kind == Fault::Kind::shortWrite) return call == "write";
    constexpr std::string_view kInterrupted = "open write close fsync flock";
    return call != "read" && (armed->code != EINTR || kInterrupted.find(call) != call.npos);
}

bool isStruck(std::string_view call) {
    if (armed == nullptr) return false;
    seenCalls.append(call).append(" ");
    if (armed->kind == Fault::Kind::none || !isCounted(call)) return false;
    ++count;
    if (count < armed->at || (count > armed->at && !armed->lasts)) return false;
    struckCall = call;
    return true;
}

int strike() {
    if (armed->kind == Fault::Kind::kill) ::kill(::getpid(), SIGKILL);
    errno = armed->code;
    return -1;
}

bool changesFiles(int flags) {
    return (flags & (O_ACCMODE | O_DIRECTORY)) != O_RDONLY;
}

}  // namespace

void under(const Fault& fault, const std::function<void()>& work) {
    count = 0;
    struckCall = {};
    seenCalls.clear();
    armed = &fault;
    work();
    armed = nullptr;
}

int startProcess(const std::function<int()>& work) noexcept {
    const int process = ::fork();
    if (process != 0) return process;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::_exit(work());
}

int endOf(int process) {
    int status = 0;
    if (::waitpid(process, &status, 0) < 0) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace kestrel::test

using namespace kestrel::test;

extern "C" {

// A call that fails when it is struck, and else is the system's own.
#define KESTREL_WRAP(call, parameters, values)                    \
    int __real_##call parameters;                                 \
    int __wrap_##call parameters {                                \
        return isStruck(#call) ? strike() : __real_##call values; \
    }

KESTREL_WRAP(chmod, (const char* name, mode_t mode), (name, mode))
KESTREL_WRAP(fchmod, (int file, mode_t mode), (file, mode))
KESTREL_WRAP(fchown, (int file, uid_t user, gid_t group), (file, user, group))
KESTREL_WRAP(flock, (int file, int operation), (file, operation))
KESTREL_WRAP(fsync, (int file), (file))
KESTREL_WRAP(link, (const char* from, const char* to), (from, to))
KESTREL_WRAP(lstat, (const char* name, struct stat* status), (name, status))
KESTREL_WRAP(mkdir, (const char* name, mode_t mode), (name, mode))
KESTREL_WRAP(mkostemp, (char* name, int flags), (name, flags))
KESTREL_WRAP(rename, (const char* from, const char* to), (from, to))
KESTREL_WRAP(syncfs, (int file), (file))
KESTREL_WRAP(unlink, (const char* name), (name))

int __real_close(int);
int __real_open(const char*, int, mode_t);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_write(int, const void*, size_t);

int __wrap_close(int file) {
    const bool struck = changesFiles(::fcntl(file, F_GETFL)) && isStruck("close");
    const int result = __real_close(file);
    return struck ? strike() : result;
}

// Who makes no file gives no mode, and none is looked at.
int __wrap_open(const char* name, int flags, mode_t mode) {
    if (changesFiles(flags) && isStruck("open")) return strike();
    return __real_open(name, flags, mode);
}

ssize_t __wrap_read(int file, void* bytes, size_t size) {
    return isStruck("read") ? strike() : __real_read(file, bytes, size);
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    if (!isStruck("write")) return __real_write(file, bytes, size);
    if (armed->kind == Fault::Kind::shortWrite) return __real_write(file, bytes, 1);
    if (armed->kind == Fault::Kind::kill) (void)!__real_write(file, bytes, size / 2);
    return strike();
}

}  // extern "C"
