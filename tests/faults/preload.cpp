// A library for tests that is loaded before the system's (LD_PRELOAD) and counts the
// calls by which a process changes the files of one folder. At a call of a chosen
// number it makes the call fail or ends the process.
//
//     KESTREL_FAULTS_FOLDER  the folder
//     KESTREL_FAULTS_AT      the number of the call, counted from 1; else calls are
//                            only counted
//     KESTREL_FAULTS_KIND    "error": the call fails with KESTREL_FAULTS_CODE, an
//                            errno; "short": a write takes one byte; "interrupt":
//                            a signal interrupts it; "kill": the process is killed,
//                            a write having taken half of its bytes
//
// Files that are only read are left alone.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace {

enum class Kind { none, error, shortWrite, interrupt, kill };

constexpr int kMostFiles = 1024;

struct State {
    const char* folder = std::getenv("KESTREL_FAULTS_FOLDER");
    int at = number("KESTREL_FAULTS_AT");
    int code = number("KESTREL_FAULTS_CODE");
    Kind kind = kindOf(std::getenv("KESTREL_FAULTS_KIND"));
    int count = 0;
    const char* struck = "";
    bool open[kMostFiles] = {};  // the descriptors of the folder's files

    static int number(const char* name) {
        const char* text = std::getenv(name);
        return text == nullptr ? 0 : std::atoi(text);
    }
    static Kind kindOf(const char* text) {
        if (text == nullptr) return Kind::none;
        switch (*text) {
            case 'e':
                return Kind::error;
            case 's':
                return Kind::shortWrite;
            case 'i':
                return Kind::interrupt;
            case 'k':
                return Kind::kill;
            default:
                return Kind::none;
        }
    }
};

State& state() {
    static State all;
    return all;
}

bool isOurs(const char* path) {
    const char* folder = state().folder;
    return folder != nullptr && std::strncmp(path, folder, std::strlen(folder)) == 0;
}

bool isOurs(int file) {
    return file >= 0 && file < kMostFiles && state().open[file];
}

int track(int file) {
    if (file >= 0 && file < kMostFiles) state().open[file] = true;
    return file;
}

// Counts a call; true when it is the one to strike.
bool isStruck(const char* call) {
    State& now = state();
    if (now.folder == nullptr || ++now.count != now.at || now.kind == Kind::none) return false;
    now.struck = call;
    return true;
}

// Strikes; true when the call fails, with errno set.
bool strike(bool canBeInterrupted) {
    switch (state().kind) {
        case Kind::error:
            errno = state().code;
            return true;
        case Kind::interrupt:
            if (!canBeInterrupted) state().struck = "";
            errno = EINTR;
            return canBeInterrupted;
        case Kind::kill:
            ::kill(::getpid(), SIGKILL);
            ::pause();
            return true;
        default:
            state().struck = "";
            return false;
    }
}

bool fails(const char* call, bool canBeInterrupted = false) {
    return isStruck(call) && strike(canBeInterrupted);
}

template <class Call>
Call systems(const char* name, Call) {
    return reinterpret_cast<Call>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// The system's own call of that name.
#define KESTREL_SYSTEMS(call) systems(#call, &call)

extern "C" {

// Ends counting and striking. Returns how many calls there were; `struck` gets the
// name of the one that was struck, or an empty one.
int kestrelFaultsEnd(const char** struck) {
    state().folder = nullptr;
    *struck = state().struck;
    return state().count;
}

int open(const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const bool ours =
        isOurs(name) && ((flags & O_ACCMODE) != O_RDONLY || (flags & O_DIRECTORY) != 0);
    if (ours && fails("open", true)) return -1;
    const int file = KESTREL_SYSTEMS(open)(name, flags, mode);
    return ours ? track(file) : file;
}

int mkostemp(char* name, int flags) {
    const bool ours = isOurs(name);
    if (ours && fails("mkostemp")) return -1;
    const int file = KESTREL_SYSTEMS(mkostemp)(name, flags);
    return ours ? track(file) : file;
}

ssize_t write(int file, const void* bytes, size_t size) {
    const auto real = KESTREL_SYSTEMS(write);
    if (!isOurs(file) || !isStruck("write")) return real(file, bytes, size);
    if (state().kind == Kind::shortWrite) return real(file, bytes, 1);
    if (state().kind == Kind::kill) (void)!real(file, bytes, size / 2);
    return strike(true) ? -1 : real(file, bytes, size);
}

int close(int file) {
    const bool ours = isOurs(file);
    if (ours) state().open[file] = false;
    const bool failed = ours && fails("close", true);
    const int code = errno;
    const int result = KESTREL_SYSTEMS(close)(file);
    if (!failed) return result;
    errno = code;
    return -1;
}

#define KESTREL_CALL(call, on, parameters, values, interrupted) \
    int call parameters {                                       \
        if (isOurs(on) && fails(#call, interrupted)) return -1; \
        return KESTREL_SYSTEMS(call) values;                    \
    }

KESTREL_CALL(fsync, file, (int file), (file), true)
KESTREL_CALL(syncfs, file, (int file) noexcept, (file), false)
KESTREL_CALL(fchmod, file, (int file, mode_t mode) noexcept, (file, mode), false)
KESTREL_CALL(fchown, file, (int file, uid_t user, gid_t group) noexcept, (file, user, group), false)
KESTREL_CALL(lstat, name, (const char* name, struct stat* status) noexcept, (name, status), false)
KESTREL_CALL(rename, from, (const char* from, const char* to) noexcept, (from, to), false)
KESTREL_CALL(link, from, (const char* from, const char* to) noexcept, (from, to), false)
KESTREL_CALL(unlink, name, (const char* name) noexcept, (name), false)

}  // extern "C"
