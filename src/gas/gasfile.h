#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "gas/recordtext.h"

namespace kestrel {

// A property, or the header of a sub-block, inside a block.
struct GasProperty {
    Text Name;               // as written, cleaned; a header's sub-block name
    Text Value;              // cleaned; empty for a header
    Text Group;              // sub-blocks around it, joined by "\"
    bool IsBlock = false;    // stands for a sub-block header
    std::int16_t Level = 0;  // sub-block headers met so far in the block, as far as it counts

    bool operator==(const GasProperty&) const = default;
};

// What the records of one loaded file are slices of: its bytes, and what had to be composed
// beside them. Records share it; it does not change once they do.
class GasFile {
  public:
    static constexpr std::size_t kMostBytes = std::size_t{1} << 31;

    // A part of the bytes, or one of the texts that are kept beside them.
    struct Slice {
        std::uint32_t place = 0;
        std::uint32_t size = 0;

        std::uint32_t end() const noexcept { return place + size; }
    };
    // A property.
    struct Entry {
        Slice name;
        Slice value;
        std::uint32_t group = 0;  // 0 for none
        std::int16_t level = 0;
        bool isBlock = false;
    };

    // Throws RunTimeError for kMostBytes and more.
    GasFile(std::string bytes, const CodePage& page);

    std::string_view bytes() const noexcept { return bytes_; }
    const CodePage& page() const noexcept { return page_; }

    // Copies `text`, for as long as this lives.
    std::string_view keep(std::string_view text);
    // For a text that is not a part of the bytes: of a copy.
    Slice slice(std::string_view text) {
        // Before the bytes it is a number beyond their size.
        const auto place = reinterpret_cast<std::uintptr_t>(text.data()) -
                           reinterpret_cast<std::uintptr_t>(bytes_.data());
        if (place > bytes_.size()) return keptSlice(text);
        return {static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(text.size())};
    }
    std::string_view view(Slice slice) const noexcept {
        if ((slice.size & kKept) != 0) return kept_[slice.place];
        return std::string_view(bytes_).substr(slice.place, slice.size);
    }

    // For who makes the bytes as it goes: a slice of `text` at their end. More than there is
    // room for in the first ones must not be appended.
    Slice append(std::string_view text) {
        bytes_ += text;
        return {static_cast<std::uint32_t>(bytes_.size() - text.size()),
                static_cast<std::uint32_t>(text.size())};
    }

    // The group of the sub-block `name` in `around` (null for none). A name with "\" counts
    // as several. Of one name in one group it mostly is the same one.
    const GasGroup* inside(const GasGroup* around, std::string_view name);

    void add(const Entry& entry) {
        const Slice value = entry.value.size != 0 ? entry.value : Slice{entry.name.end(), 0};
        const std::uint32_t gap = value.place - entry.name.end();
        if (entry.name.size > 0xFF || value.size >= kRare || gap > 0xFF ||
            entry.group > kMostGroup || entry.level > kMostLevel) {
            return addRare(entry);
        }
        packed_.push_back({entry.name.place, static_cast<std::uint8_t>(entry.name.size),
                           static_cast<std::uint8_t>(gap), static_cast<std::uint16_t>(value.size),
                           static_cast<std::uint32_t>(entry.group << kGroupShift |
                                                      entry.level << 1 | (entry.isBlock ? 1 : 0))});
    }
    std::uint32_t entries() const noexcept { return static_cast<std::uint32_t>(packed_.size()); }
    GasProperty property(std::size_t index) const noexcept {
        const Entry entry = entryAt(index);
        return {{view(entry.name), page_},
                {view(entry.value), page_},
                Text(entry.group == 0 ? nullptr : &groups_[entry.group - 1]),
                entry.isBlock,
                entry.level};
    }

  private:
    static constexpr std::uint32_t kKept = std::uint32_t{1} << 31;
    static constexpr unsigned kSlotBits = 8;

    // A property as nearly all of them are stored: its value stands shortly behind its name.
    struct Packed {
        std::uint32_t name;  // its place
        std::uint8_t nameSize;
        std::uint8_t gap;
        std::uint16_t valueSize;  // kRare: `name` is an index of rare_
        std::uint32_t rest;       // the group, the level and whether it is a block
    };
    static constexpr std::uint16_t kRare = 0xFFFF;
    static constexpr unsigned kGroupShift = 12;
    static constexpr std::uint32_t kMostGroup = (std::uint32_t{1} << (32 - kGroupShift)) - 1;
    static constexpr std::int16_t kMostLevel = (1 << (kGroupShift - 1)) - 1;

    void addRare(const Entry& entry);
    Entry entryAt(std::size_t index) const noexcept {
        const Packed& packed = packed_[index];
        if (packed.valueSize == kRare) return rare_[packed.name];
        const Slice name{packed.name, packed.nameSize};
        return {name,
                {name.end() + packed.gap, packed.valueSize},
                packed.rest >> kGroupShift,
                static_cast<std::int16_t>(packed.rest >> 1 & kMostLevel),
                (packed.rest & 1) != 0};
    }

    Slice keptSlice(std::string_view text);
    const GasGroup* with(const GasGroup* around, std::string_view name);

    std::string bytes_;
    const CodePage& page_;
    std::pmr::monotonic_buffer_resource room_;
    std::vector<std::string_view> kept_;
    std::vector<Packed> packed_;
    std::vector<Entry> rare_;
    std::deque<GasGroup> groups_;
    std::array<const GasGroup*, std::size_t{1} << kSlotBits> latest_{};  // by names
};

}  // namespace kestrel
