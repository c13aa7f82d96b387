#pragma once

#include <string>

namespace kestrel::bench {

// Measures starts until they are painted: of `program`, which is this one, as others.
void addStarts(const char* program);

// Is the start of `who`; the exit status.
int startAs(const std::string& who, int count, char** words);

}  // namespace kestrel::bench
