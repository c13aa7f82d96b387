#pragma once

// What letters.cpp asks the system.
namespace kestrel {

wchar_t systemLower(wchar_t c) noexcept;
wchar_t systemUpper(wchar_t c) noexcept;

}  // namespace kestrel
