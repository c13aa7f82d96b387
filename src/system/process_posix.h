#pragma once

#include <string>
#include <string_view>

namespace kestrel::posix {

// The path of the program `name`: its own, or where the search path has a bare name. Throws
// RunTimeError for one that is nowhere, and for what would be of the current folder.
std::wstring programPath(std::wstring_view name);

}  // namespace kestrel::posix
