#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <thread>
#include <utility>

#include "system/file_posix.h"
#include "system/pipedchild.h"
#include "system/process_posix.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kStart = L"Cannot start";
constexpr int kPipeSize = 1 << 20;  // as far as the system allows that

struct Pipe {
    explicit Pipe(std::wstring_view program) {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwSystemError(errno, kStart, program);
        ::fcntl(ends[0], F_SETPIPE_SZ, kPipeSize);
    }
    ~Pipe() {
        for (const int end : ends) {
            if (end >= 0) ::close(end);
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    void close(std::size_t end) { ::close(std::exchange(ends[end], -1)); }

    std::array<int, 2> ends{};  // to read from, to write to
};

}  // namespace

struct PipedChild::System {
    explicit System(std::wstring_view program) : questions(program), answers(program) {}

    Pipe questions;
    Pipe answers;
    pid_t process = -1;
};

PipedChild::PipedChild(const std::wstring& program, const std::vector<std::wstring>& words)
    : system_(std::make_unique<System>(program)) {
    std::vector<std::string> all{posix::nameOf(posix::programPath(program))};
    for (const std::wstring& word : words) all.push_back(posix::nameOf(word));
    system_->process = posix::spawn(program, std::move(all),
                                    {system_->questions.ends[0], system_->answers.ends[1], -1});
    system_->questions.close(0);
    system_->answers.close(1);
    ::fcntl(system_->questions.ends[1], F_SETFL, O_NONBLOCK);
}

PipedChild::~PipedChild() {
    end();
}

bool PipedChild::send(std::string_view bytes) {
    // What has ended is told by the call, not by a signal.
    sigset_t pipe;
    sigset_t before;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
    const ssize_t count = ::write(system_->questions.ends[1], bytes.data(), bytes.size());
    const timespec now{};
    if (count < 0 && errno == EPIPE) ::sigtimedwait(&pipe, nullptr, &now);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return count == static_cast<ssize_t>(bytes.size());
}

std::optional<std::string> PipedChild::receive(std::chrono::milliseconds wait) {
    const int answers = system_->answers.ends[0];
    pollfd waiting{answers, POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(wait.count())) <= 0) return std::string();
    std::string bytes(std::size_t{1} << 17, '\0');
    const ssize_t count = ::read(answers, bytes.data(), bytes.size());
    if (count == 0 || (count < 0 && errno != EINTR)) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
}

std::wstring PipedChild::end() {
    if (system_->process < 0) return {};
    system_->questions.close(1);
    int status = 0;
    const auto ended = [&] {
        constexpr int kTries = 100;  // of a millisecond
        pid_t asked = 0;
        for (int i = 0; asked == 0 && i < kTries; ++i) {
            if (i > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            asked = ::waitpid(system_->process, &status, WNOHANG);
        }
        return asked > 0;
    };
    // What has closed its output by itself is about to end: how it does is told.
    pollfd waiting{system_->answers.ends[0], POLLIN, 0};
    const bool closed = ::poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLHUP) != 0;
    bool told = closed && ended();
    // With all that it has started. A call of the system's that hangs outlasts even this.
    ::kill(-system_->process, SIGKILL);
    told = told || ended();
    system_->process = -1;
    if (!told) return L"no end";
    return WIFSIGNALED(status) ? L"signal " + std::to_wstring(WTERMSIG(status))
                               : L"exit code " + std::to_wstring(WEXITSTATUS(status));
}

}  // namespace kestrel
