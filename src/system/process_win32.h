#pragma once

#include <windows.h>

#include <string>

// Starting programs on Windows, for the *_win32.cpp sources alone.
namespace kestrel::win32 {

// Starts `program`, the path of its file or a bare name, with the command line
// `line`. Bare names are looked for in the system's folders, the executable's own
// and the search path, and like paths never in the current folder; a name without an extension is
// that of an ".exe". The file is named beside the line, so that an unquoted line can
// run none that was planted at a shorter part of the path. A batch file is run by the
// command processor. With `inherits` the program gets the handles that may be
// inherited. Returns its process; null when it wants the rights of an administrator
// and went to the shell, which one that inherits does not. Throws RunTimeError with
// the system's reason.
HANDLE createProcess(const std::wstring& program, std::wstring line, STARTUPINFOW startup,
                     bool inherits, DWORD flags);

}  // namespace kestrel::win32
