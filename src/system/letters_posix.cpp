#include <clocale>
#include <cwctype>

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale()

#include "system/letters_system.h"

namespace kestrel {
namespace {

// The user's own locale may know ASCII alone. Null where the system has not even this one.
locale_t letters() noexcept {
    static const locale_t all = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return all;
}

}  // namespace

wchar_t systemLower(wchar_t c) noexcept {
    if (letters() == nullptr) return c;
    return static_cast<wchar_t>(::towlower_l(static_cast<wint_t>(c), letters()));
}

wchar_t systemUpper(wchar_t c) noexcept {
    if (letters() == nullptr) return c;
    return static_cast<wchar_t>(::towupper_l(static_cast<wint_t>(c), letters()));
}

}  // namespace kestrel
