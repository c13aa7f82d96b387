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

int __real_open(const char*, int, ...);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_write(int, const void*, size_t);
int __real_close(int);
int __real_fsync(int);
int __real_fchmod(int, mode_t);
int __real_fchown(int, uid_t, gid_t);
int __real_lstat(const char*, struct stat*);
int __real_rename(const char*, const char*);
int __real_link(const char*, const char*);
int __real_unlink(const char*);

int __wrap_open(const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return strikes("open") ? -1 : __real_open(name, flags, mode);
}

ssize_t __wrap_read(int file, void* bytes, size_t size) {
    return strikes("read") ? -1 : __real_read(file, bytes, size);
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

int __wrap_fsync(int file) {
    return strikes("fsync") ? -1 : __real_fsync(file);
}
int __wrap_fchmod(int file, mode_t mode) {
    return strikes("fchmod") ? -1 : __real_fchmod(file, mode);
}
int __wrap_fchown(int file, uid_t user, gid_t group) {
    return strikes("fchown") ? -1 : __real_fchown(file, user, group);
}
int __wrap_lstat(const char* name, struct stat* status) {
    return strikes("lstat") ? -1 : __real_lstat(name, status);
}
int __wrap_rename(const char* from, const char* to) {
    return strikes("rename") ? -1 : __real_rename(from, to);
}
int __wrap_link(const char* from, const char* to) {
    return strikes("link") ? -1 : __real_link(from, to);
}
int __wrap_unlink(const char* name) {
    return strikes("unlink") ? -1 : __real_unlink(name);
}

}  // extern "C"
