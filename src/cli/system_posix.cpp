#include "cli/system.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "base/bytes.h"

namespace kestrel::cli::system {

namespace {

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): signals reach no other.
volatile std::sig_atomic_t interrupt = 0;
volatile std::time_t noted = 0;  // in seconds
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

// Who runs a program sends it a signal twice sometimes, to it and to its group: only one that
// comes later means that the user does not want to wait.
void note(int signal) {
    constexpr std::time_t kPatience = 2;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    if (interrupt == 0) {
        noted = now.tv_sec;
        interrupt = signal;
    } else if (now.tv_sec - noted >= kPatience) {
        ::signal(signal, SIG_DFL);
        ::raise(signal);
    }
}

}  // namespace

void prepareStreams() {
    ::signal(SIGPIPE, SIG_DFL);
    // Otherwise the next file to be opened would take the stream's place.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) < 0) ::_exit(1);
    }
}

bool write(std::FILE* stream, std::string_view bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

// The shell has put the names of files in their place.
std::vector<std::wstring> commandLine(int count, char** values) {
    std::vector<std::wstring> words;
    for (int i = 1; i < count; ++i) words.push_back(fromUtf8(values[i]));
    return words;
}

bool readerIsGone() noexcept {
    return errno == EPIPE;
}

void catchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        struct sigaction action {};
        action.sa_handler = note;
        action.sa_flags = SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

bool isInterrupted() noexcept {
    return interrupt != 0;
}

void passInterruptOn() noexcept {
    if (interrupt == 0) return;
    ::signal(interrupt, SIG_DFL);
    ::raise(interrupt);
}

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

}  // namespace kestrel::cli::system
