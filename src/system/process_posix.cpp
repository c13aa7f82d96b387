#include "system/process_posix.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "base/bytes.h"
#include "system/filesystem.h"
#include "system/process.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

// Runs in the started program's process: only calls that are safe between fork
// and exec. Never returns.
[[noreturn]] void becomeProgram(char* const* words, int report, int input) {
    setsid();
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0) dup2(input < 0 ? null : input, STDIN_FILENO);
    if (null >= 0 && input >= 0) {
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    // Not the call that hands a file of no known format to a shell.
    execv(words[0], words);
    const int error = errno;
    // Nobody is left to tell when this write fails.
    [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    _exit(127);
}

// The child ends at once, so that the program is no child of ours that would be
// left as a zombie.
void forkTwice(char* const* words, int report, int input) {
    const pid_t child = fork();
    if (child < 0) throwSystemError(errno, L"Cannot start", fromUtf8(words[0]));
    if (child == 0) {
        const pid_t program = fork();
        if (program == 0) becomeProgram(words, report, input);
        const int error = errno;
        if (program < 0 && write(report, &error, sizeof error) < 0) _exit(1);
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}

// The error that the started process reports; 0 when it became the program,
// which closes its end of the pipe.
int reportedError(int pipe) {
    int error = 0;
    ssize_t count = 0;
    do {
        count = read(pipe, &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

// The words as the system takes them, which they must outlive.
std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

// With `input` the program reads that, and what it writes is lost.
void start(std::vector<std::string>& words, int input = -1) {
    const std::vector<char*> pointers = pointersTo(words);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throwSystemError(errno, L"Cannot start", fromUtf8(words[0]));
    }
    try {
        forkTwice(pointers.data(), ends[1], input);
    } catch (...) {
        close(ends[0]);
        close(ends[1]);
        throw;
    }
    close(ends[1]);
    const int error = reportedError(ends[0]);
    close(ends[0]);
    if (error != 0) throwSystemError(error, L"Cannot start", fromUtf8(words[0]));
}

bool canRun(const std::wstring& path) {
    return filesystem::isFile(path) && access(toUtf8(path).c_str(), X_OK) == 0;
}

// Where programs run from: not from a folder that is another one in each folder.
bool isWhole(std::wstring_view path) {
    return path.starts_with(L'/');
}

// What the program gets in place of ours.
class Files {
  public:
    explicit Files(const posix::Streams& streams) {
        posix_spawn_file_actions_init(&actions_);
        add(streams.input, STDIN_FILENO, O_RDONLY);
        add(streams.output, STDOUT_FILENO, O_WRONLY);
        add(streams.error, STDERR_FILENO, O_WRONLY);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~Files() { posix_spawn_file_actions_destroy(&actions_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

  private:
    void add(int file, int stream, int mode) {
        if (file < 0) {
            posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", mode, 0);
        } else {
            posix_spawn_file_actions_adddup2(&actions_, file, stream);
        }
    }

    posix_spawn_file_actions_t actions_{};
};

class Attributes {
  public:
    Attributes() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const noexcept { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

// Empty for a program that is nowhere.
std::wstring foundProgram(std::wstring_view name) {
    if (name.find(L'/') != name.npos) return std::wstring(isWhole(name) ? name : L"");
    const char* path = std::getenv("PATH");
    std::wstring rest = fromUtf8(path == nullptr ? "/usr/bin:/bin" : path) + L':';
    for (std::size_t end; (end = rest.find(L':')) != rest.npos; rest.erase(0, end + 1)) {
        std::wstring candidate = rest.substr(0, end) + L'/' + std::wstring(name);
        if (isWhole(candidate) && end != 0 && canRun(candidate)) return candidate;
    }
    return {};
}

}  // namespace

std::wstring posix::programPath(std::wstring_view name) {
    std::wstring path = foundProgram(name);
    if (path.empty()) throwSystemError(ENOENT, L"Cannot start", name);
    return path;
}

pid_t posix::spawn(std::wstring_view program, std::vector<std::string> words,
                   const Streams& streams) {
    const std::vector<char*> pointers = pointersTo(words);
    const Files files(streams);
    const Attributes attributes;
    pid_t process = 0;
    const int error =
        posix_spawn(&process, pointers[0], files.get(), attributes.get(), pointers.data(), environ);
    if (error != 0) throwSystemError(error, L"Cannot start", program);
    return process;
}

void posix::drain(int pipe) noexcept {
    try {
        std::vector<std::string> words{toUtf8(programPath(L"cat"))};
        fcntl(pipe, F_SETFL, 0);
        start(words, pipe);
    } catch (...) {
        // Nobody is left to tell.
    }
}

void settleProcess() {}

void startProgram(std::wstring_view commandLine, std::wstring_view configured) {
    const CommandParts parts = splitCommandLine(commandLine, configured);
    std::vector<std::string> words{toUtf8(posix::programPath(parts.program))};
    for (const std::wstring& word : splitArguments(parts.arguments, filesystem::isFile)) {
        words.push_back(toUtf8(word));
    }
    start(words);
}

bool isProgram(std::wstring_view name) {
    return canRun(foundProgram(name));
}

}  // namespace kestrel
