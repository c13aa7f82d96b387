#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Starting other programs. No shell is involved, and nothing waits for a started
// program: it outlives this one.
namespace kestrel {

// A program and the text behind it on its command line.
struct CommandParts {
    std::wstring program;
    std::wstring arguments;

    bool operator==(const CommandParts&) const = default;
};

// Which part of `commandLine` (not quoted) is the program: `configured`, or the line
// itself where that is empty. A path is taken whole, there or not, so that nothing at a
// shorter part of it ever runs in its place; a bare name may have words behind it.
CommandParts splitCommandLine(std::wstring_view commandLine, std::wstring_view configured);

// The words of `arguments`; the longest part at its end that names a file is one
// word, so that a file's name may hold blanks.
std::vector<std::wstring> splitArguments(std::wstring_view arguments,
                                         const std::function<bool(std::wstring_view)>& isFile);

// What the process settles before anything else: where the system may take
// libraries from.
void settleProcess();

// Starts the program that `commandLine` names, in a normal window with the
// focus. `configured` is the path that the user chose, when there is one. Nothing of the
// current folder runs: a path is one from the root, and a bare name is looked for in such
// folders alone. Throws RunTimeError with the system's reason when it cannot be started.
void startProgram(std::wstring_view commandLine, std::wstring_view configured = {});

// True when `name` is a program that the search path or its own path finds.
bool isProgram(std::wstring_view name);

}  // namespace kestrel
