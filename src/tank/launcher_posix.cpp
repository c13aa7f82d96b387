#include "tank/launcher.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "base/bytes.h"
#include "services/pagetext.h"
#include "system/file_posix.h"
#include "system/filesystem.h"
#include "system/process_posix.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kStart = L"Cannot start";
constexpr int kSignalled = 128;  // and the signal, as shells tell it

class PosixChild final : public Child {
  public:
    PosixChild(const std::wstring& program, const std::vector<std::wstring>& words)
        : name_(filesystem::makeTemporary(L"kst")) {
        try {
            const std::string name = posix::nameOf(name_);
            const posix::File::Failure failure{kStart, name_};
            // Two openings: what the program writes does not move where we read.
            output_.emplace(name, O_RDWR | O_CLOEXEC, mode_t{0}, failure);
            const posix::File input(name, O_WRONLY | O_APPEND | O_CLOEXEC, 0, failure);
            std::vector<std::string> all{posix::nameOf(posix::programPath(program))};
            for (const std::wstring& word : words) all.push_back(toUtf8(word));
            process_ =
                posix::spawn(program, std::move(all), {-1, input.descriptor(), input.descriptor()});
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

std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view /*commandLine*/,
                                  const std::vector<std::wstring>& words) {
    return std::make_unique<PosixChild>(program, words);
}

}  // namespace kestrel
