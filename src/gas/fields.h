#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "gas/words.h"

// How the bytes of statements become the texts of records. Private to the loader.
namespace kestrel::loading {

// What cleaning removes everywhere, and what it removes from the ends alone.
enum Junk : std::uint8_t { kRemoved = 1, kBlank = 2 };

inline constexpr auto kJunkOfByte = [] {
    std::array<std::uint8_t, 256> junk{};
    for (const char c : {'"', '[', ']', '{', '}'}) junk[static_cast<unsigned char>(c)] = kRemoved;
    junk[' '] = junk['\t'] = kBlank;
    return junk;
}();

inline unsigned junkOf(char c) {
    return kJunkOfByte[static_cast<unsigned char>(c)];
}

// `text` without what cleaning removes at its ends.
inline std::string_view trimJunk(std::string_view text) {
    const char* start = text.data();
    const char* end = start + text.size();
    // Mostly a blank and perhaps a quote come first, perhaps a quote comes last:
    // two steps and one without a branch.
    if (text.size() > 2) {
        start += junkOf(*start) != 0 ? 1 : 0;
        start += junkOf(*start) != 0 ? 1 : 0;
        end -= junkOf(end[-1]) != 0 ? 1 : 0;
    }
    while (start < end && junkOf(*start) != 0) ++start;
    while (start < end && junkOf(end[-1]) != 0) --end;
    return {start, end};
}

constexpr std::uint64_t eightTimes(unsigned char c) {
    return c * std::uint64_t{0x0101010101010101U};
}

// Not zero when some byte of `word` is zero.
constexpr std::uint64_t anyZero(std::uint64_t word) {
    return (word - eightTimes(0x01)) & ~word & eightTimes(0x80);
}

// What is known of a text that is to be cleaned.
enum Known : std::uint8_t { kNothing, kNoBrackets };

// Not zero when one of the eight bytes of `word` is a quote, a bracket or a tab.
template <Known known>
constexpr std::uint64_t anySpecial(std::uint64_t word) {
    const std::uint64_t some = anyZero(word ^ eightTimes('"')) | anyZero(word ^ eightTimes('\t'));
    if constexpr (known == kNoBrackets) return some;
    const std::uint64_t folded = word | eightTimes(0x20);  // "[" and "{" become one
    return some | anyZero(folded ^ eightTimes('{')) | anyZero(folded ^ eightTimes('}'));
}

// The same of sixteen, in each byte.
template <Known known>
Bytes16 areSpecial(Bytes16 bytes) {
    const auto some = (bytes == '"') | (bytes == '\t');
    if constexpr (known == kNoBrackets) return reinterpret_cast<Bytes16>(some);
    const Bytes16 folded = bytes | 0x20;
    return reinterpret_cast<Bytes16>(some | (folded == '{') | (folded == '}'));
}

// True when cleaning leaves `text` as it is, blanks at its ends aside.
template <Known known>
bool isClean(std::string_view text) {
    const char* const start = text.data();
    const std::size_t size = text.size();
    if (size < kWordSize) return anySpecial<known>(wordOfShort(text)) == 0;
    if (size < kWideSize) {
        return (anySpecial<known>(wordAt(start)) |
                anySpecial<known>(wordAt(start + size - kWordSize))) == 0;
    }
    Bytes16 special = areSpecial<known>(bytesAt(start + size - kWideSize));
    for (std::size_t i = 0; i + kWideSize < size; i += kWideSize) {
        special |= areSpecial<known>(bytesAt(start + i));
    }
    return bitsOf(special) == 0;
}

// `text` cleaned into `buffer`.
std::string_view cleanedCopy(std::string_view text, std::string& buffer);

// The cleaned form of `text`, which holds no ";": without quotes and brackets, with four
// spaces for each tab, then without blanks at its ends. It is a part of `text` itself, or of
// `buffer` when its middle had to change.
template <Known known = kNothing>
std::string_view cleaned(std::string_view text, std::string& buffer) {
    text = trimJunk(text);
    return isClean<known>(text) ? text : cleanedCopy(text, buffer);
}

}  // namespace kestrel::loading
