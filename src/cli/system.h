#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

// The seam to the operating system's console, implemented by system_posix.cpp and
// system_win32.cpp.
namespace kestrel::cli::system {

// Prepares the standard streams: bytes go out as they are, a stream that the
// caller has closed leads nowhere, and a reader that goes ends the program
// quietly where the system can do that.
void prepareStreams();

// Writes UTF-8 to a standard stream: as it is, or to a console as the characters that
// it shows. False when not all of it was written.
bool write(std::FILE* stream, std::string_view bytes);

// The command line without the program's name, names with "*" and "?" as the files that
// they stand for. `values` are main's own.
std::vector<std::wstring> commandLine(int count, char** values);

// True when the write that has just failed did so because nobody reads any more.
bool readerIsGone() noexcept;

// From now on an interrupt (Ctrl+C, or a request to end) is only noted, unless the user
// repeats it after a while.
void catchInterrupts();
bool isInterrupted() noexcept;

// Ends the program as an interrupt that was noted would have ended it; returns when there
// was none.
void passInterruptOn() noexcept;

bool isTerminal(std::FILE* stream);

}  // namespace kestrel::cli::system
