#pragma once

// Letters of all scripts, as the system knows them. text.h has what is asked of them.
namespace kestrel {

wchar_t systemLower(wchar_t c) noexcept;
wchar_t systemUpper(wchar_t c) noexcept;

}  // namespace kestrel
