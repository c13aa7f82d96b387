#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

// The file that the command line `line` (the text after the program's name)
// names: the part inside its first pair of quotes, or the whole trimmed line
// when it holds no quotes; nothing when that is empty.
std::optional<std::wstring> gvarCommandFile(std::wstring_view line);

// The same for a system that hands over its arguments one by one, the program's
// name not among them: they count as the words of the line, and blanks and
// quotes inside an argument belong to it.
std::optional<std::wstring> gvarCommandFile(const std::vector<std::wstring>& arguments);

}  // namespace kestrel
