#include "ui/events.h"

#include <wx/app.h>
#include <wx/evtloop.h>

namespace kestrel::test {

void runEvents() {
    // A slow display may ask for more painting than it gets done.
    constexpr int kMost = 1000;
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    for (int i = 0; i < kMost && loop->Pending(); ++i) loop->Dispatch();
    wxTheApp->ProcessPendingEvents();
    loop->ProcessIdle();
}

void settle() {
    for (int i = 0; i < 4; ++i) runEvents();
}

void send(wxWindow& window, wxEventType type, int selection) {
    wxCommandEvent event(type, window.GetId());
    event.SetEventObject(&window);
    event.SetInt(selection);
    window.ProcessWindowEvent(event);
}

wxKeyEvent keyEvent(wxWindow& window, wxEventType type, int code, int modifiers) {
    wxKeyEvent event(type);
    event.m_keyCode = code;
    event.m_uniChar = static_cast<wxChar>(code < WXK_START ? code : 0);
    event.SetRawControlDown((modifiers & wxMOD_CONTROL) != 0);
    event.SetControlDown((modifiers & wxMOD_CONTROL) != 0);
    event.SetShiftDown((modifiers & wxMOD_SHIFT) != 0);
    event.SetAltDown((modifiers & wxMOD_ALT) != 0);
    event.SetEventObject(&window);
    event.SetId(window.GetId());
    return event;
}

}  // namespace kestrel::test
