#include <windows.h>

#include "system/letters_system.h"

namespace kestrel {
namespace {

wchar_t mapped(wchar_t c, DWORD how) noexcept {
    wchar_t result = c;
    ::LCMapStringEx(LOCALE_NAME_INVARIANT, how, &c, 1, &result, 1, nullptr, nullptr, 0);
    return result;
}

}  // namespace

wchar_t systemLower(wchar_t c) noexcept {
    return mapped(c, LCMAP_LOWERCASE);
}

wchar_t systemUpper(wchar_t c) noexcept {
    return mapped(c, LCMAP_UPPERCASE);
}

}  // namespace kestrel
