#include "tank/launcher.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include "base/bytes.h"
#include "services/pagetext.h"
#include "system/file_posix.h"
#include "system/process_posix.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds kGrace{2};

// Of a process by its folder: one that has ended stays there until somebody asks for it.
bool isZombie(const std::filesystem::path& folder) {
    std::string told;
    std::getline(std::ifstream(folder / "stat"), told);
    return told.find(") Z", told.rfind(')')) != told.npos;
}

// The processes of the session of `leader` that have not ended, but for itself.
std::vector<pid_t> companions(pid_t leader) {
    std::vector<pid_t> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        pid_t process = 0;
        const auto number = std::from_chars(name.data(), name.data() + name.size(), process);
        const bool isOne = number.ec == std::errc() && process != leader;
        if (isOne && ::getsid(process) == leader && !isZombie(*entry)) found.push_back(process);
    }
    return found;
}

class PosixChild final : public Child {
  public:
    PosixChild(const std::wstring& program, const std::vector<std::wstring>& words) {
        std::vector<std::string> all{posix::nameOf(posix::programPath(program))};
        for (const std::wstring& word : words) all.push_back(toUtf8(word));
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwSystemError(errno, L"Cannot start", program);
        output_ = ends[0];
        ::fcntl(output_, F_SETFL, O_NONBLOCK);
        ::fcntl(output_, F_SETPIPE_SZ, static_cast<int>(kPipeSize));
        try {
            process_ = posix::spawn(program, std::move(all), {-1, ends[1], ends[1]});
        } catch (...) {
            ::close(ends[0]);
            ::close(ends[1]);
            throw;
        }
        ::close(ends[1]);
    }

    ~PosixChild() override {
        constexpr std::chrono::milliseconds kPause{10};
        // Once at least, since a process that has ended stays one until it is asked for. What the
        // system cannot end is left to it.
        while (!end() && deadline_ && Steady::now() < *deadline_ + kGrace) {
            std::this_thread::sleep_for(kPause);
        }
        pollfd writers{output_, POLLIN, 0};
        const bool hasWriters = ::poll(&writers, 1, 0) == 0 || (writers.revents & POLLHUP) == 0;
        // Who writes into a pipe that nobody reads is ended.
        if (hasWriters) posix::drain(output_);
        ::close(output_);
    }
    PosixChild(const PosixChild&) = delete;
    PosixChild& operator=(const PosixChild&) = delete;

    std::optional<ProgramEnd> end() override {
        if (end_ || !hasEnded()) return end_;
        int status = 0;
        const pid_t asked = ::waitpid(process_, &status, 0);
        if (asked != process_) {
            end_ = ProgramEnd{};
        } else if (WIFSIGNALED(status)) {
            end_ = {ProgramEnd::kSignal, WTERMSIG(status)};
        } else {
            end_ = {ProgramEnd::kCode, WEXITSTATUS(status)};
        }
        return end_;
    }

    std::string read(std::size_t most) override {
        std::string bytes(most, '\0');
        const ssize_t count = ::read(output_, bytes.data(), most);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return bytes;
    }

    void stop() override {
        deadline_ = Steady::now() + kGrace;
        send(SIGTERM);
    }

  private:
    void send(int signal) const {
        for (const pid_t one : companions(process_)) ::kill(one, signal);
        ::kill(process_, signal);
    }

    // Of one that was told to stop, whether all that it has started has ended, too. It stays a
    // process as long as it was not asked for, so that its number is no other's.
    bool hasEnded() {
        siginfo_t ended{};
        const int asked =
            ::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT);
        if (asked != 0 && errno == EINTR) return false;
        const bool itself = asked != 0 || ended.si_pid != 0;
        if (!deadline_ || asked != 0 || (itself && companions(process_).empty())) return itself;
        if (Steady::now() >= *deadline_) send(SIGKILL);
        return itself && Steady::now() >= *deadline_;
    }

    int output_ = -1;
    pid_t process_ = -1;
    std::optional<Steady::time_point> deadline_;  // of one that was told to stop
    std::optional<ProgramEnd> end_;
};

}  // namespace

std::wstring consoleText(std::string_view bytes) {
    return widen(bytes);
}

bool startsByLine() noexcept {
    return false;
}

std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view /*commandLine*/,
                                  const std::vector<std::wstring>& words) {
    return std::make_unique<PosixChild>(program, words);
}

}  // namespace kestrel
