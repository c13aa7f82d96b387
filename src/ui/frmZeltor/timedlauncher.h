#pragma once

#include <wx/timer.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

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
    ProgramOutput poll() override { return launcher_->poll(); }

    // False once the program has ended and all of its output was handed out.
    bool running() const noexcept { return running_; }

    std::function<void(std::wstring_view text)> onData;

  private:
    void Notify() override;
    void handOut();

    std::unique_ptr<Launcher> launcher_;
    bool running_ = false;
};

}  // namespace kestrel
