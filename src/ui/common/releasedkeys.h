#pragma once

#include <wx/event.h>
#include <wx/eventfilter.h>
#include <wx/toplevel.h>

#include <functional>
#include <optional>

namespace kestrel {

// A key with its modifiers (wxMOD_*).
struct KeyPress {
    int code = 0;
    int modifiers = 0;

    bool operator==(const KeyPress&) const = default;
};

// The keys that a window acts on when they are let go, and only if they were pressed in
// it: a key that is held down does not close one window after the other, and one whose
// press closed a box in front does nothing here.
class ReleasedKeys final : public wxEventFilter {
  public:
    // `wants` tells whether the window acts on a key now; such a key reaches no control.
    ReleasedKeys(wxTopLevelWindow& window, std::function<bool(const KeyPress&)> wants,
                 std::function<void(const KeyPress&)> run);
    ~ReleasedKeys() override;
    ReleasedKeys(const ReleasedKeys&) = delete;
    ReleasedKeys& operator=(const ReleasedKeys&) = delete;

    int FilterEvent(wxEvent& event) override;

  private:
    int pressed(const wxKeyEvent& event);
    int released(const wxKeyEvent& event);

    wxTopLevelWindow& window_;
    std::function<bool(const KeyPress&)> wants_;
    std::function<void(const KeyPress&)> run_;
    std::optional<KeyPress> pressed_;
};

// True when the key that `event` tells of was down before, wherever in the program.
bool isRepeated(const wxKeyEvent& event);

}  // namespace kestrel
