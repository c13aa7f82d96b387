#include "ui/frmZeltor/timedlauncher.h"

#include <chrono>

#include "services/guard.h"

namespace kestrel {
namespace {

using Steady = std::chrono::steady_clock;

constexpr int kPause = 50;  // milliseconds
// How long output may be handed out at a time, and the pause when there is more,
// in which the windows are painted.
constexpr std::chrono::milliseconds kBusy{20};
constexpr int kShortPause = 10;

}  // namespace

TimedLauncher::TimedLauncher(std::unique_ptr<Launcher> launcher) : launcher_(std::move(launcher)) {}

Launcher::Result TimedLauncher::start(std::wstring_view commandLine, std::wstring_view configured,
                                      const std::vector<std::wstring>& words) {
    const Result result = launcher_->start(commandLine, configured, words);
    if (result == kStarted) StartOnce(kPause);
    running_ = result != kRefused;
    return result;
}

void TimedLauncher::Notify() {
    // What fails once is not asked again.
    running_ = false;
    guarded(L"redLauncher_DataReceived", [&] { handOut(); });
}

void TimedLauncher::handOut() {
    const auto until = Steady::now() + kBusy;
    ProgramOutput output;
    do {
        output = poll();
        if (onData && !output.text.empty()) onData(output.text);
    } while (!output.ended && !output.text.empty() && Steady::now() < until);
    if (!output.ended) running_ = StartOnce(output.text.empty() ? kPause : kShortPause);
}

}  // namespace kestrel
