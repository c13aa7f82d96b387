#include "base/keys.h"

#include <limits>

namespace kestrel {

std::int32_t gintKeyIndex(std::wstring_view key) {
    if (!key.starts_with(L'K')) return 0;
    std::int64_t number = 0;
    for (wchar_t c : key.substr(1)) {
        if (c < L'0' || c > L'9') break;
        number = number * 10 + (c - L'0');
        if (number > std::numeric_limits<std::int32_t>::max()) return 0;
    }
    return static_cast<std::int32_t>(number);
}

std::wstring makeKey(std::size_t index) {
    return L"K" + std::to_wstring(index);
}

}  // namespace kestrel
