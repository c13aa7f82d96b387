#pragma once

#include <wx/timer.h>

#include <memory>

#include "ui/frmZeltor/timedlauncher.h"
#include "ui/textpane/textwindow.h"

namespace kestrel {

// Shows what the builder that was started last writes, as it comes, and how it stands. The
// builder runs on when this is closed.
class BuilderLog final : public TextWindow {
  public:
    // `launcher` must outlive the window, and has a log.
    BuilderLog(wxWindow* parent, TimedLauncher& launcher, OpenFile openFile);

    // True once nothing more will be shown.
    bool isDone() const { return log_->end && !timer_.IsRunning(); }

    wxButton* const cmdStop;

  private:
    void stop();
    void takeOutput();
    bool cutStart();
    bool takePiece();
    void showState();
    bool saveAll() const;

    TimedLauncher& launcher_;
    const std::shared_ptr<OutputLog> log_;
    LogReader reader_;
    bool cut_ = false;  // the pane lacks the start
    wxTimer timer_;
};

}  // namespace kestrel
