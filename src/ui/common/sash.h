#pragma once

#include <wx/utils.h>
#include <wx/window.h>

#include <functional>
#include <utility>

namespace kestrel {

// The gap between two neighbours that can be dragged; `drag` gets the position
// of the mouse in the parent.
class Sash final : public wxWindow {
  public:
    Sash(wxWindow* parent, int width, std::function<void(int)> drag)
        : wxWindow(parent, wxID_ANY, wxDefaultPosition, wxSize(width, -1)), drag_(std::move(drag)) {
        SetCursor(wxCursor(wxCURSOR_SIZEWE));
        Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent&) { CaptureMouse(); });
        Bind(wxEVT_LEFT_UP, [this](wxMouseEvent&) {
            if (HasCapture()) ReleaseMouse();
        });
        Bind(wxEVT_MOUSE_CAPTURE_LOST, [](wxMouseCaptureLostEvent&) {});
        // The place that an event tells is of where the gap was then.
        Bind(wxEVT_MOTION, [this](wxMouseEvent&) {
            if (HasCapture()) drag_(GetParent()->ScreenToClient(wxGetMousePosition()).x);
        });
    }
    bool AcceptsFocus() const override { return false; }

  private:
    std::function<void(int)> drag_;
};

}  // namespace kestrel
