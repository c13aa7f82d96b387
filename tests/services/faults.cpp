#include "services/faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace kestrel::test {

namespace {

struct State {
    bool armed = false;
    Faults::Kind kind = Faults::Kind::none;
    std::size_t at = 0;
    std::size_t count = 0;
    int code = 0;
    const char* struck = "";
    std::string calls;
} state;

// True when this call fails, with errno set.
bool strikes(const char* call) {
    if (!state.armed) return false;
    state.calls.append(call).append(" ");
    const bool again = state.kind == Faults::Kind::errors && std::string_view(call) == state.struck;
    if (++state.count != state.at && !again) return false;
    state.struck = call;
    errno = state.code;
    return state.kind != Faults::Kind::none;
}

}  // namespace

Faults::Faults(Kind kind, std::size_t at, int code) {
    state = {true, kind, at, 0, code, "", {}};
}
Faults::~Faults() {
    state.armed = false;
}
const char* Faults::struck() {
    return state.struck;
}
std::string Faults::calls() {
    return state.calls;
}

}  // namespace kestrel::test

using kestrel::test::strikes;

extern "C" {

// A call that fails when it is struck, and else is the system's own.
#define KESTREL_WRAP(result, call, parameters, values)             \
    result __real_##call parameters;                               \
    result __wrap_##call parameters {                              \
        return strikes(#call) ? result{-1} : __real_##call values; \
    }

KESTREL_WRAP(ssize_t, read, (int file, void* bytes, size_t size), (file, bytes, size))
KESTREL_WRAP(int, fsync, (int file), (file))
KESTREL_WRAP(int, syncfs, (int file), (file))
KESTREL_WRAP(int, fchmod, (int file, mode_t mode), (file, mode))
KESTREL_WRAP(int, fchown, (int file, uid_t user, gid_t group), (file, user, group))
KESTREL_WRAP(int, lstat, (const char* name, struct stat* status), (name, status))
KESTREL_WRAP(int, rename, (const char* from, const char* to), (from, to))
KESTREL_WRAP(int, link, (const char* from, const char* to), (from, to))
KESTREL_WRAP(int, unlink, (const char* name), (name))

int __real_open(const char*, int, ...);
ssize_t __real_write(int, const void*, size_t);
int __real_close(int);

int __wrap_open(const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return strikes("open") ? -1 : __real_open(name, flags, mode);
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    return strikes("write") ? -1 : __real_write(file, bytes, size);
}

int __wrap_close(int file) {
    const int result = __real_close(file);
    return strikes("close") ? -1 : result;
}

}  // extern "C"
