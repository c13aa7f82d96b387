#pragma once

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

}  // namespace kestrel
