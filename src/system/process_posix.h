#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel::posix {

// The path of the program `name`: its own, or where the search path has a bare name. Throws
// RunTimeError for one that is nowhere, and for what would be of the current folder.
std::wstring programPath(std::wstring_view name);

// The files that a started program has as its standard streams; -1 is one without content.
struct Streams {
    int input = -1;
    int output = -1;
    int error = -1;
};

// Starts the file words[0] with these words, no other file of ours, every signal as a program
// finds it, and a session of its own, so that what ends ours does not end it. Returns the
// process, a child of this one. Throws RunTimeError with the system's reason, about `program`.
pid_t spawn(std::wstring_view program, std::vector<std::string> words, const Streams& streams);

// Has a program of the system's read what comes out of `pipe`, to lose it, as long as somebody
// writes there, this program's life or longer. It is no child of this one.
void drain(int pipe) noexcept;

}  // namespace kestrel::posix
