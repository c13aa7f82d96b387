#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace kestrel::cli {

enum ExitCode : int {
    kFine = 0,
    kFailed = 1,  // or something was found that should not be there
    kWrongUsage = 2,
};

// Runs kestrel-cli with `words`, its command line without the program's name, and
// returns its exit code. Results go to `out`, all else to `err`: messages, and
// progress where `showsProgress`. It throws nothing.
int run(const std::vector<std::wstring>& words, std::ostream& out, std::ostream& err,
        bool showsProgress) noexcept;

}  // namespace kestrel::cli
