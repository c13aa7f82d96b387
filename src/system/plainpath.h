#pragma once

#include <string>
#include <string_view>

namespace kestrel {

// The path that a user's `text` stands for: one in quotes, or a "file:" address, as file
// managers copy them, is what it names. Anything that is there by that very name is itself.
std::wstring plainPath(std::wstring_view text);

}  // namespace kestrel
