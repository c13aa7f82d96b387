#pragma once

#include <wx/event.h>
#include <wx/utils.h>
#include <wx/window.h>

namespace kestrel {

// Takes the mouse from the controls of a window that is about to go: a key may
// close it while a button is still held down in one of them.
inline void releaseMouse(const wxWindow& window) {
    wxWindow* holder = wxWindow::GetCapture();
    while (holder != nullptr && window.IsDescendant(holder)) {
        holder->ReleaseMouse();
        holder = wxWindow::GetCapture();
    }
}

// Ends what the user drags in a control of the window, as letting the button go does: a
// key may start a command meanwhile, and the dialog of it takes the mouse away.
inline void endDrag(const wxWindow& window) {
    wxWindow* holder = wxWindow::GetCapture();
    if (holder == nullptr || !window.IsDescendant(holder)) return;
    wxMouseEvent up(wxEVT_LEFT_UP);
    up.SetEventObject(holder);
    up.SetId(holder->GetId());
    up.SetPosition(holder->ScreenToClient(wxGetMousePosition()));
    holder->HandleWindowEvent(up);
    releaseMouse(window);
}

}  // namespace kestrel
