#pragma once

#include <string>

namespace kestrel::bench {

// How long the program takes from its start until its window is painted, beside the
// least program with a window: a table. Both are started as processes of their own by
// `program`, this one.
std::string startsTable(const char* program);

// What those processes do: start as `who` ("empty" or "kestrel") says, and end once they are
// painted.
int startAs(const std::string& who, int count, char** words);

}  // namespace kestrel::bench
