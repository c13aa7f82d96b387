#pragma once

#include <string>

// The fixed pieces of every tab-delimited text.
namespace kestrel {

inline const std::wstring kTopRuler = std::wstring(50, L'=') + L"\r\n";
inline const std::wstring kColumnRuler = std::wstring(50, L'-') + L"\r\n";
inline const std::wstring kClosingRuler = std::wstring(50, L'*') + L"\r\n";
inline constexpr const wchar_t* kTextHeading = L"DS Template for: ";
inline constexpr const wchar_t* kFormatLine = L"Format: TAB Delimited with CR+LF\r\n";

}  // namespace kestrel
