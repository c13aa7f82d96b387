#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

// The search for the characters that structure a `.gas` text. Private to the
// loader.
namespace kestrel::loading {

// Zero for `[ ] { } = / : ;` and CR alone: the least of the differences to them.
// The plain test for equality would not become vector code in the loop below.
constexpr std::uint8_t distanceToMark(char c) noexcept {
    const auto byte = static_cast<std::uint8_t>(c);
    std::uint8_t least = 0xFF;
    const auto compare = [&least](unsigned value, unsigned mark) {
        least = std::min(least, static_cast<std::uint8_t>(value ^ mark));
    };
    compare(byte, '\r');
    compare(byte, '/');
    compare(byte, '=');
    compare(byte | 1U, ';');     // and ":"
    compare(byte | 0x20U, '{');  // and "["
    compare(byte | 0x20U, '}');  // and "]"
    return least;
}

inline constexpr std::size_t kMarkBlock = 64;

// Bit i tells whether byte i of the kMarkBlock bytes at `text` is a mark.
inline std::uint64_t markBits(const char* text) noexcept {
    std::array<std::uint8_t, kMarkBlock> hits{};
    for (std::size_t i = 0; i < kMarkBlock; ++i) hits[i] = distanceToMark(text[i]) == 0 ? 1 : 0;
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < kMarkBlock; i += 8) {
        std::uint64_t eight = 0;
        for (std::size_t j = 8; j-- > 0;) eight = eight << 8U | hits[i + j];
        // The product brings the lowest bits of the eight bytes side by side.
        bits |= (eight * 0x0102040810204080U >> 56U) << i;
    }
    return bits;
}

// Calls `visit` with a pointer to each mark of `text`, in order.
template <class Visit>
void forEachMark(std::string_view text, Visit&& visit) {
    const char* at = text.data();
    std::array<char, kMarkBlock> rest{};
    for (std::size_t left = text.size(); left > 0;) {
        const char* block = at;
        const std::size_t length = left < kMarkBlock ? left : kMarkBlock;
        if (length < kMarkBlock) {
            std::memcpy(rest.data(), at, length);
            block = rest.data();
        }
        for (std::uint64_t bits = markBits(block); bits != 0; bits &= bits - 1) {
            visit(at + std::countr_zero(bits));
        }
        at += length;
        left -= length;
    }
}

}  // namespace kestrel::loading
