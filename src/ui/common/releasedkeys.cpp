#include "ui/common/releasedkeys.h"

#include <wx/menu.h>

#include <utility>

namespace kestrel {

ReleasedKeys::ReleasedKeys(wxTopLevelWindow& window, std::function<bool(const KeyPress&)> wants,
                           std::function<void(const KeyPress&)> run)
    : window_(window), wants_(std::move(wants)), run_(std::move(run)) {
    wxEvtHandler::AddFilter(this);
}

ReleasedKeys::~ReleasedKeys() {
    wxEvtHandler::RemoveFilter(this);
}

int ReleasedKeys::FilterEvent(wxEvent& event) {
    const wxEventType type = event.GetEventType();
    if (type == wxEVT_CHAR_HOOK) return pressed(static_cast<wxKeyEvent&>(event));
    if (type == wxEVT_KEY_UP) return released(static_cast<wxKeyEvent&>(event));
    if (type == wxEVT_ACTIVATE && event.GetEventObject() == &window_) pressed_.reset();
    return Event_Skip;
}

int ReleasedKeys::pressed(const wxKeyEvent& event) {
    auto* control = dynamic_cast<wxWindow*>(event.GetEventObject());
    if (control == nullptr || wxGetTopLevelParent(control) != &window_) return Event_Skip;
    // An open menu has its own keys.
    if (dynamic_cast<wxMenuBar*>(control) != nullptr) return Event_Skip;
    const KeyPress key{event.GetKeyCode(), event.GetModifiers()};
    // Told apart before anything else asks: a repeated one belongs to its first press.
    const bool repeated = isRepeated(event);
    if (!wants_(key)) {
        if (!repeated) pressed_.reset();
        return Event_Skip;
    }
    if (!repeated) pressed_ = key;
    return Event_Processed;
}

int ReleasedKeys::released(const wxKeyEvent& event) {
    if (!pressed_ || pressed_->code != event.GetKeyCode()) return Event_Skip;
    const KeyPress key = *std::exchange(pressed_, std::nullopt);
    auto* control = dynamic_cast<wxWindow*>(event.GetEventObject());
    if (control == nullptr || wxGetTopLevelParent(control) != &window_) return Event_Skip;
    // The window, and this with it, may be gone after that.
    run_(key);
    return Event_Processed;
}

}  // namespace kestrel
