#pragma once

#include <wx/event.h>
#include <wx/window.h>

// What the toolkit sends to a window, sent by a program that plays its user.
namespace kestrel::test {

// Lets what is pending run once.
void runEvents();

// Lets pending events run until there are none.
void settle();

// Sends a control's own event; `selection` is its number, if it has one.
void send(wxWindow& window, wxEventType type, int selection = 0);

// A key for the window, not sent yet; `modifiers` are wxMOD_*.
wxKeyEvent keyEvent(wxWindow& window, wxEventType type, int code, int modifiers = wxMOD_NONE);

}  // namespace kestrel::test
