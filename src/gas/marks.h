#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "gas/words.h"

// The search for the characters that structure a `.gas` text. Private to the
// loader.
namespace kestrel::loading {

inline constexpr std::size_t kMarkBlock = 64;

// Set for `[ ] { } = / : ;` and CR.
inline Bytes16 areMarks(Bytes16 bytes) noexcept {
    const Bytes16 even = bytes | 1;       // ":" and ";" become one
    const Bytes16 folded = bytes | 0x20;  // "[" and "{", "]" and "}"
    return reinterpret_cast<Bytes16>((bytes == '\r') | (bytes == '/') | (bytes == '=') |
                                     (even == ';') | (folded == '{') | (folded == '}'));
}

// Bit i tells whether byte i of the kMarkBlock bytes at `text` is a mark.
inline std::uint64_t markBits(const char* text) noexcept {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < kMarkBlock; i += kWideSize) {
        bits |= bitsOf(areMarks(bytesAt(text + i))) << i;
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
