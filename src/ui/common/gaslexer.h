#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Which part of a `.gas` text a character belongs to, for its colour. No part
// goes over the end of its line, so that any lines can be coloured on their own.
namespace kestrel {

enum class GasToken : char { plain, header, name, value, comment, brace };
inline constexpr std::size_t kGasTokens = 6;

// The token of each byte of `lines`, which begin at the start of a line: each
// character of the result is a GasToken's number.
std::string gasTokens(std::string_view lines);

// True when `text` reads as `.gas` text: its first line that is not blank and no
// comment begins with a header.
bool looksLikeGas(std::string_view text) noexcept;

// The place of the brace or bracket that belongs to the one at `at`, without
// those in comments and quotes. Nothing when there is none in `lines`, or none
// stands at `at`.
std::optional<std::size_t> matchingBrace(std::string_view lines, std::size_t at);

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
