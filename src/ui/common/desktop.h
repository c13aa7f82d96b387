#pragma once

#include <string>

// What the desktop does for us, where the toolkit has no call for it.
namespace kestrel {

// Asks the desktop's file manager for its own properties sheet; false when there
// is none.
bool showDesktopProperties(const std::wstring& path);

// Opens `path` in the desktop's text editor. Throws RunTimeError when it has
// none, or the editor cannot be started.
void openTextEditor(const std::wstring& path);

// The time of day and the date of now as the user's system writes them at
// length.
std::wstring longTimeText();
std::wstring longDateText();

}  // namespace kestrel
