#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

#include "cli/system.h"
#include "services/bytes.h"

namespace kestrel::cli::system {

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

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

}  // namespace kestrel::cli::system
