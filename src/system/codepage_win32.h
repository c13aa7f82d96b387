#pragma once

#include <string>
#include <string_view>

namespace kestrel {

// The text of `bytes` in any page of the system, those of several bytes a character
// included; what is no text in it becomes the system's sign for that.
std::wstring textInPage(unsigned page, std::string_view bytes);

}  // namespace kestrel
