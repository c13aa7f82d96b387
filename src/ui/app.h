#pragma once

#include <wx/app.h>

#include "ui/common/host_wx.h"

namespace kestrel {

class App final : public wxApp {
  public:
    bool OnInit() override;
    // A failure in a window's handler is reported like any other.
    bool OnExceptionInMainLoop() override;

  private:
    HostWx host_;
};

}  // namespace kestrel
