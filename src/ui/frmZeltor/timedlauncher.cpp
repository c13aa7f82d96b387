#include "ui/frmZeltor/timedlauncher.h"

#include <chrono>
#include <utility>

#include "services/guard.h"
#include "services/program.h"

namespace kestrel {
namespace {

using Steady = std::chrono::steady_clock;

constexpr int kPause = 50;  // milliseconds
// How long output may be taken at a time, and the pause when there is more, in which the
// windows live.
constexpr std::chrono::milliseconds kBusy{5};
constexpr int kShortPause = 10;

}  // namespace

TimedLauncher::TimedLauncher(std::unique_ptr<Launcher> launcher) : launcher_(std::move(launcher)) {}

Launcher::Result TimedLauncher::start(std::wstring_view commandLine, std::wstring_view configured,
                                      const std::vector<std::wstring>& words) {
    const Result result = launcher_->start(commandLine, configured, words);
    if (result == kStarted) StartOnce(kPause);
    return result;
}

void TimedLauncher::Notify() {
    // Before anything is told: the program shall not wait for the user.
    StartOnce(kPause);
    guarded(L"redLauncher_DataReceived", [&] { takeOutput(); });
}

void TimedLauncher::takeOutput() {
    const auto until = Steady::now() + kBusy;
    bool more = true;
    while (more && Steady::now() < until) more = poll();
    if (more) StartOnce(kShortPause);
    if (!running()) Stop();
    if (!log()->isFull() || std::exchange(told_, log()) == log()) return;
    tellUser(L"The builder is stopped, since it has written more than 1 GB of output.",
             Icon::exclamation);
}

}  // namespace kestrel
