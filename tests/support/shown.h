#pragma once

#include <string>
#include <string_view>

namespace kestrel::test {

// `text` as UTF-8 in which line ends, tabs and other controls are visible
// escapes, for expectations that read well when they fail.
std::string shown(std::wstring_view text);

}  // namespace kestrel::test
