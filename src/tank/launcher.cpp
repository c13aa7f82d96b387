#include "tank/launcher.h"

#include <algorithm>
#include <utility>

#include "base/error.h"

namespace kestrel {
namespace {

// As much as takes no time.
constexpr std::size_t kPiece = std::size_t{256} * 1024;

class ProcessLauncher final : public Launcher {
  public:
    explicit ProcessLauncher(std::uint64_t mostKept) : mostKept_(mostKept) {}

    Result start(std::wstring_view commandLine, std::wstring_view configured,
                 const std::vector<std::wstring>& words) override {
        if (child_ && !child_->end()) return kStillRunning;
        child_.reset();
        try {
            auto log = std::make_shared<OutputLog>(mostKept_);
            child_ =
                startChild(splitCommandLine(commandLine, configured).program, commandLine, words);
            log_ = std::move(log);
        } catch (const RunTimeError& error) {
            errorText_ = error.description();
            return kRefused;
        }
        left_ = kPipeSize;
        return kStarted;
    }

    std::wstring errorText() const override { return errorText_; }

    bool poll() override {
        if (!child_) return false;
        // Asked before reading, so that nothing it wrote before its end is missed. All of that
        // is in the pipe by then: what comes behind it is of others, who may never end.
        const std::optional<ProgramEnd> end = child_->end();
        const std::string bytes = child_->read(end ? std::min(kPiece, left_) : kPiece);
        if (end) left_ -= bytes.size();
        if (end && bytes.empty()) {
            log_->end = end;
            child_.reset();
        }
        log_->add(bytes);
        if (log_->isFull()) stop();
        return !bytes.empty();
    }

    void stop() override {
        if (!child_ || std::exchange(log_->stopping, true)) return;
        child_->stop();
    }

    std::shared_ptr<OutputLog> log() const override { return log_; }

  private:
    std::uint64_t mostKept_;
    std::unique_ptr<Child> child_;
    std::shared_ptr<OutputLog> log_;
    std::size_t left_ = 0;  // of what it wrote before its end
    std::wstring errorText_;
};

}  // namespace

std::unique_ptr<Launcher> makeLauncher(std::uint64_t mostKept) {
    return std::make_unique<ProcessLauncher>(mostKept);
}

}  // namespace kestrel
