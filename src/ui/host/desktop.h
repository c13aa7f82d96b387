#pragma once

#include <string>

class wxDialog;
class wxDirDialog;
class wxFileDialog;
class wxWindow;

// What the desktop does for us, where the toolkit has no call for it.
namespace kestrel {

// Asks the desktop's file manager for its own properties sheet; false when there
// is none.
bool showDesktopProperties(const std::wstring& path);

// Opens `path` in the desktop's text editor. Throws RunTimeError when it has
// none, or the editor cannot be started.
void openTextEditor(const std::wstring& path);

// What stands chosen in the system's dialog for it when it opens, and when it has ended:
// names that are no text keep their bytes.
void startIn(wxFileDialog& dialog, const std::wstring& folder);
void startIn(wxDirDialog& dialog, const std::wstring& folder);
std::wstring chosenPath(const wxFileDialog& dialog);
std::wstring chosenPath(const wxDirDialog& dialog);

// The system's own dialog for a file or folder, which the toolkit does not know as a window:
// whether one is open; brings it back where it was minimised; cancels it, false when there is
// none. On Windows it needs none of this, and none is found.
bool systemDialogIsOpen();
void restoreSystemDialog();
bool cancelSystemDialog();

// Keys and mouse are a dialog's alone, or no more, as those of one that is shown modal are. The
// toolkit on GTK gives them to a modal one behind it, once it was disabled or is not modal.
void takeInput(wxDialog& dialog, bool takes);

// Waits until the desktop has put a window that was just shown in its place; half a
// second at most.
void awaitPlace(const wxWindow& window);

// The resolution of the window's screen, with the size of texts that the user chose.
int dotsPerInch(const wxWindow& window);

// The time of day and the date of now as the user's system writes them at
// length.
std::wstring longTimeText();
std::wstring longDateText();

}  // namespace kestrel
