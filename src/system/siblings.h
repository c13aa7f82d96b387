#pragma once

#include <algorithm>
#include <string_view>

// How the temporary siblings of files that are replaced are named: the file's own name, a
// dot, digits, "-", hexadecimal digits and an end. The digits hold no meaning.
namespace kestrel::siblings {

inline constexpr std::string_view kDigits = "0123456789abcdef";
inline constexpr std::string_view kEnd = ".tmp";
inline constexpr std::size_t kMostDecimals = 10;
inline constexpr std::size_t kHexDigits = 16;

// True for what follows the dot in the name of such a sibling.
template <class Char>
constexpr bool isEnd(std::basic_string_view<Char> rest) noexcept {
    const auto isDigit = [](std::string_view digits) {
        return [digits](Char c) {
            return c < 0x80 && digits.find(static_cast<char>(c)) != digits.npos;
        };
    };
    const std::size_t dash = rest.find(Char{'-'});
    if (dash == 0 || dash > kMostDecimals || rest.size() != dash + 1 + kHexDigits + kEnd.size()) {
        return false;
    }
    return std::ranges::all_of(rest.substr(0, dash), isDigit(kDigits.substr(0, 10))) &&
           std::ranges::all_of(rest.substr(dash + 1, kHexDigits), isDigit(kDigits)) &&
           std::ranges::equal(rest.substr(dash + 1 + kHexDigits), kEnd);
}

}  // namespace kestrel::siblings
