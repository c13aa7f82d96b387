#pragma once

#include <cstdint>

#include "gas/lexer.h"

// The colours of `.gas` text.
namespace kestrel {

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

// The contrast of two colours, from 1 to 21; text is read well from 4.5 on.
double contrast(Rgb a, Rgb b) noexcept;

// The colour of a token on `background`, dark or light. That of a plain one is
// `text`.
Rgb tokenColour(GasToken token, Rgb text, Rgb background) noexcept;

}  // namespace kestrel
