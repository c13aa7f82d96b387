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
    switch (state.kind) {
        case Faults::Kind::error:
        case Faults::Kind::errors:
            errno = state.code;
            return true;
        case Faults::Kind::interrupt:
            errno = EINTR;
            return std::string_view("open read write fsync close").find(call) !=
                   std::string_view::npos;
        case Faults::Kind::kill:
            ::_exit(Faults::kKilled);
        default:
            return false;
    }
}

}  // namespace

Faults::Faults(Kind kind, std::size_t at, int code) {
    state = {true, kind, at, 0, code, "", {}};
}
Faults::~Faults() {
    state.armed = false;
}
bool Faults::reached() {
    return state.count >= state.at;
}
const char* Faults::struck() {
    return state.struck;
}
std::string Faults::calls() {
    return state.calls;
}

// Whether the next counted call is the one that is struck.
static bool isNext(Faults::Kind kind) {
    return state.armed && state.kind == kind && state.count + 1 == state.at;
}

}  // namespace kestrel::test

using kestrel::test::Faults;
using kestrel::test::isNext;
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
    if (isNext(Faults::Kind::shortWrite)) {
        strikes("write");
        return __real_write(file, bytes, 1);
    }
    if (isNext(Faults::Kind::kill)) (void)!__real_write(file, bytes, size / 2);
    return strikes("write") ? -1 : __real_write(file, bytes, size);
}

int __wrap_close(int file) {
    const int result = __real_close(file);
    return strikes("close") ? -1 : result;
}

}  // extern "C"
