#pragma once

#include <wx/window.h>

namespace kestrel {

// Tells assistive programs the name of a control that does not show it: of what has
// the keyboard in it, too.
void setAccessibleName(wxWindow& control, const wxString& name);

// Tells them that a window is a message, to be read at once.
void markAsMessage(wxWindow& window);

}  // namespace kestrel
