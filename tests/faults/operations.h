#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/recordinghost.h"

namespace kestrel::test {

using FileBytes = std::map<std::string, std::string>;

// One of the program's writes, as a user brings it about, but for the windows.
struct Operation {
    std::string name;
    FileBytes before;                  // the folder's files before it
    std::vector<std::string> targets;  // those that it replaces or makes
    bool keepsBackup = false;          // of its target, as ".bak"
    std::function<void(RecordingHost& host, const std::wstring& folder)> run;
};

// A file for another program, each with a name of its own, and the folder that it is in.
inline constexpr const char* kTemporary = "gsv";
inline constexpr const char* kPrivate = "kestrel";

// All of them. Run in a `folder` that holds the files of `before`, which is the
// one below which that folder is, too.
const std::vector<Operation>& operations();

// The number of error reports that the user has seen.
std::size_t reports(const RecordingHost& host);

}  // namespace kestrel::test
