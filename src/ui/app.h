#pragma once

#include <wx/app.h>

#include <optional>
#include <string>

#include "ui/host/host_wx.h"

namespace kestrel {

class App final : public wxApp {
  public:
    // True once there was a display to show windows on.
    static bool hasStarted() noexcept { return started(); }

    // The file of the command line; nothing when it names none. Each system's main has it.
    static std::optional<std::wstring> commandFile();

    bool OnInit() override;
    int OnExit() override;
    // A failure in a window's handler is reported like any other.
    bool OnExceptionInMainLoop() override;

  private:
    static bool& started() noexcept {
        // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): one program.
        static bool started = false;
        return started;
    }

    HostWx host_;
};

}  // namespace kestrel
