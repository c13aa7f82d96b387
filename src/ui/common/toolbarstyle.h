#pragma once

#include <wx/toolbar.h>

namespace kestrel {

// Takes the room between the tools that a desktop's theme leaves for fingers, so
// that all of them are seen in the smallest window.
void makeCompact(wxToolBar& toolBar);

}  // namespace kestrel
