#pragma once

#include <wx/timer.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tank/launcher.h"

namespace kestrel {

// A launcher that is asked by a timer for as long as its program runs, also when
// nobody wants the output. It belongs to the program's main window, so that a
// builder is still known as running when its dialog has gone.
class TimedLauncher final : public Launcher, private wxTimer {
  public:
    explicit TimedLauncher(std::unique_ptr<Launcher> launcher = makeLauncher());

    Result start(std::wstring_view commandLine, std::wstring_view configured,
                 const std::vector<std::wstring>& words) override;
    std::wstring errorText() const override { return launcher_->errorText(); }
    bool poll() override { return launcher_->poll(); }
    void stop() override { launcher_->stop(); }
    std::shared_ptr<OutputLog> log() const override { return launcher_->log(); }

    // False once the program has ended and all of its output is in its log.
    bool running() const { return log() && !log()->end; }

  private:
    void Notify() override;
    void takeOutput();

    std::unique_ptr<Launcher> launcher_;
    std::shared_ptr<OutputLog> told_;  // that it was too long
};

}  // namespace kestrel
