#pragma once

#include <wx/window.h>

namespace kestrel {

// Does what Alt and `letter` stand for in `window`: presses the shown button,
// check box or option whose caption marks that letter, or gives the keyboard to the first
// control of such a frame or behind such a label. False when there is none.
//
// The toolkits do not agree on this: one reaches only the innermost panel, the
// other presses the default button for the caption of a frame.
bool pressMnemonic(wxWindow& window, int letter);

}  // namespace kestrel
