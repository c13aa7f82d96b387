#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Short texts as machine words: loops over single bytes, whose length no
// processor foresees, are what the fields of a file cost most. Private to the
// loader and its pool of texts.
namespace kestrel {

inline constexpr std::size_t kWordSize = 8;

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
