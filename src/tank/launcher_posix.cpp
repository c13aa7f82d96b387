#include "tank/launcher.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "base/bytes.h"
#include "services/pagetext.h"
#include "system/file_posix.h"
#include "system/filesystem.h"
#include "system/process_posix.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kStart = L"Cannot start";
constexpr int kSignalled = 128;  // and the signal, as shells tell it

// What the program gets in place of ours: no input, the output file as both
// streams, no other file.
class Files {
  public:
    explicit Files(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~Files() { posix_spawn_file_actions_destroy(&actions_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

// A session of its own, so that what ends ours does not end it, and every signal
// as a program finds it.
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

pid_t spawn(const CommandParts& parts, int output) {
    std::vector<std::string> words{posix::nameOf(posix::programPath(parts.program))};
    for (const std::wstring& word : optionWords(parts.arguments)) words.push_back(toUtf8(word));
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    pid_t process = 0;
    const Files files(output);
    const Attributes attributes;
    const int error =
        posix_spawn(&process, pointers[0], files.get(), attributes.get(), pointers.data(), environ);
    if (error != 0) throwSystemError(error, kStart, parts.program);
    return process;
}

class PosixChild final : public Child {
  public:
    explicit PosixChild(const CommandParts& parts) : name_(filesystem::makeTemporary(L"kst")) {
        try {
            const std::string name = posix::nameOf(name_);
            const posix::File::Failure failure{kStart, name_};
            // Two openings: what the program writes does not move where we read.
            output_.emplace(name, O_RDWR | O_CLOEXEC, mode_t{0}, failure);
            const posix::File input(name, O_WRONLY | O_APPEND | O_CLOEXEC, 0, failure);
            process_ = spawn(parts, input.descriptor());
        } catch (...) {
            removeName();
            throw;
        }
        removeName();
    }

    // Once more, since a process that has ended stays one until it is asked for.
    ~PosixChild() override { ask(); }
    PosixChild(const PosixChild&) = delete;
    PosixChild& operator=(const PosixChild&) = delete;

    std::optional<int> exitCode() override {
        ask();
        return exitCode_;
    }

    std::string read(std::size_t most) override {
        const off_t waiting = output_->status().st_size - read_;
        if (waiting <= 0) return {};
        std::string bytes(std::min(most, static_cast<std::size_t>(waiting)), '\0');
        bytes.resize(output_->read(bytes.data(), bytes.size()));
        read_ += static_cast<off_t>(bytes.size());
        // What was handed out takes no more room on the disk, however much comes. Not
        // every disk can do that.
        fallocate(output_->descriptor(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, read_);
        return bytes;
    }

  private:
    void removeName() const { unlink(posix::nameOf(name_).c_str()); }

    void ask() {
        int status = 0;
        pid_t asked = 0;
        while (!exitCode_ && (asked = waitpid(process_, &status, WNOHANG)) < 0 && errno == EINTR) {
        }
        if (asked == 0) return;
        exitCode_ = asked < 0           ? -1
                    : WIFEXITED(status) ? WEXITSTATUS(status)
                                        : kSignalled + WTERMSIG(status);
    }

    std::wstring name_;
    std::optional<posix::File> output_;
    off_t read_ = 0;
    pid_t process_ = -1;
    std::optional<int> exitCode_;
};

}  // namespace

std::wstring consoleText(std::string_view bytes) {
    return widen(bytes);
}

std::unique_ptr<Child> startChild(const CommandParts& parts, std::wstring_view) {
    return std::make_unique<PosixChild>(parts);
}

}  // namespace kestrel
