#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The programs that Kestrel hands files to. Each path is asked for once, when it
// is first needed, and kept in the program's settings; a prompt that the user
// cancels leaves its setting empty and starts nothing. When a program cannot be started
// the user is told why and may choose another one at once.
namespace kestrel {

inline constexpr std::size_t kUserTools = 5;

// The configured path, asked for when there is none; empty when cancelled.
std::wstring skritPadPath();
std::wstring zeltorPath();

// Tells `reason`, for which Zeltor was not started, and lets the user choose another one;
// false when nothing was chosen.
bool replaceZeltor(std::wstring_view reason);

// Opens `file` in SkritPad; false when the user named no program that can be started.
bool openInSkritPad(std::wstring_view file);

// Opens `file` in Notepad, or in the desktop's text editor where that is none of
// the system's programs. Throws RunTimeError when that cannot be started.
void openInNotepad(std::wstring_view file);

// Starts Orvane; false as for SkritPad.
bool runOrvane();

// "Tool1" to "Tool5" for the indexes 0 to 4.
std::wstring userToolKey(std::size_t index);

// What the user tool is called: its own caption, or its key when it is not set.
std::wstring userToolCaption(std::size_t index);

// Starts the user tool, without any file; false as for SkritPad.
bool runUserTool(std::size_t index);

// Asks "Reset ALL User Tool Settings?" and on Yes empties all of them; true then.
bool resetUserTools();

// The setting of the user tool at `path`: its file's name without ".exe" or
// ".com", "|" and the path.
std::wstring userToolSetting(std::wstring_view path);

}  // namespace kestrel
