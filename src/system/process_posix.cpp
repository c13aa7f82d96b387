#include "system/process_posix.h"

#include <fcntl.h>
#include <signal.h>
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
[[noreturn]] void becomeProgram(char* const* words, int report) {
    setsid();
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0) dup2(null, STDIN_FILENO);
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
void forkTwice(char* const* words, int report) {
    const pid_t child = fork();
    if (child < 0) throwSystemError(errno, L"Cannot start", fromUtf8(words[0]));
    if (child == 0) {
        const pid_t program = fork();
        if (program == 0) becomeProgram(words, report);
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

void start(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throwSystemError(errno, L"Cannot start", fromUtf8(words[0]));
    }
    try {
        forkTwice(pointers.data(), ends[1]);
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
