#pragma once

#include <string>
#include <string_view>
#include <vector>

// Which files hold `.gas` text.
namespace kestrel {

// True when `name` ends in ".gas", whatever its case.
bool isGasName(std::wstring_view name);

// The names of the `.gas` files in `folder`, in the file system's order; none when
// there is no such folder. Throws RunTimeError when it cannot be read.
std::vector<std::wstring> gasNames(std::wstring_view folder);

}  // namespace kestrel
