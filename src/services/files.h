#pragma once

#include <string>
#include <string_view>

// Whole files. Paths are wide; on Linux their bytes are UTF-8.
namespace kestrel {

// Returns the content of the file as text, one character a byte. Empty when the
// file is missing (a folder, a device, a pipe and, on Windows, a hidden or
// system file count as missing) or cannot be read, which is reported.
std::wstring gstrReadFile(std::wstring_view path);

// As gstrReadFile, before the bytes become text.
std::string readFileBytes(std::wstring_view path);

// Puts `text` into the file at `path`, whole or not at all: on any failure the
// failure is reported and an existing file stays as it was. Text that the code page cannot
// hold is written in UTF-8, behind its mark; gstrReadFile() reads both. An empty path does
// nothing. Returns nothing; the windows call writeFile(), which does.
void gWriteFile(std::wstring_view path, std::wstring_view text);

// As gWriteFile; true when the file was written. With `backup` the file that it
// replaces is kept at `backup`, replacing what stood there; a missing file
// leaves the backup alone.
bool writeFile(std::wstring_view path, std::wstring_view text, std::wstring_view backup = {});

// Puts `bytes` into the file as writeFile() does; the file as it was before this run of the
// program first wrote it here is kept at backupPath().
bool writeBytesKeeping(std::wstring_view path, std::string_view bytes);

// `path` with ".bak" appended, and shortened for that where its name is too long.
std::wstring backupPath(std::wstring_view path);

// Returns the path of a new, empty file in a folder of this program's that is closed to
// other users; its name begins with "gsv". Empty on failure, which is reported.
std::wstring gstrTempFile();

// Removes such files that are older than a day.
void removeOldTempFiles();

// Returns the long form of `path`; empty when the system knows no such path.
std::wstring gstrLongPath(std::wstring_view path);

// True when `path` names an ordinary file.
bool fileExists(std::wstring_view path);

// `name` in the program's folder.
std::wstring programFile(std::wstring_view name);

// The file, program or folder `name` that came with the program: beside its executable, or
// where an installed copy has it. Empty when it is nowhere.
std::wstring sharedFile(std::wstring_view name);

// The folder for settings and histories: the executable's own when files can be
// made there and it is not a "bin", which many programs share; else the user's
// folder for this program, made when it is missing.
std::wstring chooseProgramFolder();

// As chooseProgramFolder(), for an executable in the folder `executables`.
std::wstring chooseProgramFolder(std::wstring_view executables);

}  // namespace kestrel
