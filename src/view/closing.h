#pragma once

namespace kestrel {

// How the main window ends. Logging out closes it in the midst of anything; nothing of it
// may be at work any more when it goes: no dialog, and nothing that shows its progress.
class Closing {
  public:
    enum class State {
        open,
        closed,         // and hidden; goes when nothing of it is at work
        endingDialogs,  // one in front was told to end
        gone,
    };
    // What is at work now.
    struct Work {
        bool yields = false;      // something shows its progress
        bool inDialog = false;    // a dialog waits for its user
        bool dialogEnds = false;  // one that was told to end is still there
    };
    enum class Step { none, endDialog, go };

    State state() const noexcept { return state_; }
    bool begun() const noexcept { return state_ != State::open; }
    void begin() noexcept {
        if (!begun()) state_ = State::closed;
    }

    // What is to be done now. Dialogs end one by one: the toolkit leaves one for ever that was
    // told to end behind another.
    Step next(const Work& work) noexcept {
        if (!begun() || state_ == State::gone || work.yields) return Step::none;
        state_ = work.inDialog ? State::endingDialogs : State::gone;
        if (!work.inDialog) return Step::go;
        return work.dialogEnds ? Step::none : Step::endDialog;
    }

  private:
    State state_ = State::open;
};

}  // namespace kestrel
