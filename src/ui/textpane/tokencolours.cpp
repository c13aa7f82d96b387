#include "ui/textpane/tokencolours.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrel {
namespace {

double luminance(Rgb colour) noexcept {
    const auto linear = [](std::uint8_t part) {
        const double share = part / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) +
           0.0722 * linear(colour.blue);
}

using Palette = std::array<Rgb, kGasTokens>;

// By token; the plain one is not used.
constexpr Palette kOnLight{{{0, 0, 0},
                            {0x0B, 0x4C, 0x9C},
                            {0x7A, 0x2E, 0x6E},
                            {0x17, 0x63, 0x2B},
                            {0x50, 0x54, 0x58},
                            {0x0B, 0x4C, 0x9C}}};
constexpr Palette kOnDark{{{0, 0, 0},
                           {0x8F, 0xBC, 0xFF},
                           {0xE3, 0xB0, 0xDC},
                           {0x9C, 0xD9, 0xA4},
                           {0xB0, 0xB4, 0xB8},
                           {0x8F, 0xBC, 0xFF}}};

}  // namespace

double contrast(Rgb a, Rgb b) noexcept {
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

Rgb tokenColour(GasToken token, Rgb text, Rgb background) noexcept {
    if (token == GasToken::plain) return text;
    const bool dark = contrast(background, {255, 255, 255}) > contrast(background, {0, 0, 0});
    return (dark ? kOnDark : kOnLight)[static_cast<std::size_t>(token)];
}

}  // namespace kestrel
