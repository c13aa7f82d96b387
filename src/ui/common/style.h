#pragma once

#include <wx/toolbar.h>
#include <wx/toplevel.h>

// What the toolkits' controls need to fit, and to be reached, beyond what the toolkit
// offers.
namespace kestrel {

// Takes the room out of the controls that a desktop's theme leaves for fingers, and the
// choice of emoji out of the text boxes. To be called once, before the first window.
void settleStyle();

// Names the arrows of the drop-downs for assistive programs, and keeps a click on a tool
// from taking the keyboard away. Both for a tool bar that has all its tools.
void finishToolBar(wxToolBar& toolBar);

// Gives the keyboard to the tool bar's first tool, and whether one has it.
void focusToolBar(wxToolBar& toolBar);
bool holdsFocus(const wxToolBar& toolBar);

// Puts a window that is not shown yet to a place where the desktop leaves it.
void placeAt(wxTopLevelWindow& window, const wxPoint& place);

// Gives a window with a tool bar its size before it is shown first.
void settleSize(wxTopLevelWindow& window);

// Shows the key of a menu's entry without making it an accelerator: keys are the
// window's own.
void showKey(wxMenu& menu, wxMenuItem& item, const wxString& key);

}  // namespace kestrel
