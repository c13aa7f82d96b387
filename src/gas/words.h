#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Texts as machine words: loops over single bytes, whose length no
// processor foresees, are what the fields of a file cost most. Private to the
// loader.
namespace kestrel {

inline constexpr std::size_t kWordSize = 8;

// Sixteen bytes, compared at once: each byte of a result is 0xFF where it holds, else 0.
using Bytes16 [[gnu::vector_size(16)]] = std::uint8_t;
inline constexpr std::size_t kWideSize = sizeof(Bytes16);

inline Bytes16 bytesAt(const char* bytes) noexcept {
    Bytes16 all;
    std::memcpy(&all, bytes, sizeof all);
    return all;
}

// Bit i tells whether byte i of a comparison's result is set.
inline std::uint64_t bitsOf(Bytes16 mask) noexcept {
#ifdef __SSE2__
    using Chars [[gnu::vector_size(16)]] = char;
    return static_cast<std::uint16_t>(__builtin_ia32_pmovmskb128(reinterpret_cast<Chars>(mask)));
#else
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < kWideSize; ++i) bits |= std::uint64_t{mask[i] & 1U} << i;
    return bits;
#endif
}

inline std::uint64_t wordAt(const char* bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// All bytes of `text`, which has less than kWordSize; some may come twice. Texts
// of one length that differ give different words.
inline std::uint64_t wordOfShort(std::string_view text) noexcept {
    const std::size_t size = text.size();
    if (size >= 4) {
        std::uint32_t head = 0;
        std::uint32_t tail = 0;
        std::memcpy(&head, text.data(), sizeof head);
        std::memcpy(&tail, text.data() + size - sizeof tail, sizeof tail);
        return std::uint64_t{tail} << 32U | head;
    }
    if (size == 0) return 0;
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    return std::uint64_t{byte(0)} | std::uint64_t{byte(size / 2)} << 8U |
           std::uint64_t{byte(size - 1)} << 16U;
}

}  // namespace kestrel
