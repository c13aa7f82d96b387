#pragma once

#include <cstddef>
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

}  // namespace kestrel
