#pragma once

#include <filesystem>
#include <string>
#include <vector>

// What tests ask of the system in its own way, implemented by system_posix.cpp and
// system_win32.cpp.
namespace kestrel::test {

// Makes `folder` the one in which programs keep folders for the user: of settings, and of
// what they remember.
void setSettingsFolder(const std::filesystem::path& folder);

// Makes `folder` the one for temporary files; an empty one is the system's own.
void setTemporaryFolder(const std::filesystem::path& folder);

// Runs `program` with `words` to its end; its streams go into the files `out` and
// `err`. Returns the exit code, -1 when it has none.
int runProgram(const std::filesystem::path& program, const std::vector<std::wstring>& words,
               const std::filesystem::path& out, const std::filesystem::path& err);

}  // namespace kestrel::test
