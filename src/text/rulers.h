#pragma once

#include <string>
#include <string_view>

// The fixed pieces of every tab-delimited text.
namespace kestrel {

inline const std::string kTopRuler = std::string(50, '=') + "\r\n";
inline const std::string kColumnRuler = std::string(50, '-') + "\r\n";
inline const std::string kClosingRuler = std::string(50, '*') + "\r\n";
inline constexpr std::string_view kTextHeading = "DS Template for: ";
inline constexpr std::string_view kFormatLine = "Format: TAB Delimited with CR+LF\r\n";

}  // namespace kestrel
