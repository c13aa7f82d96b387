#include "gas/gasfile.h"

#include <algorithm>

#include "base/error.h"
#include "gas/words.h"
#include "system/largepages.h"

namespace kestrel {

GasFile::GasFile(std::string bytes, const CodePage& page) : bytes_(std::move(bytes)), page_(page) {
    if (bytes_.size() >= kMostBytes) {
        throw RunTimeError(kOutOfMemory, L"The file is too large: files of 2 GB cannot be loaded");
    }
    // Most files have at least as many bytes as two entries take for each of theirs.
    packed_.reserve(bytes_.capacity() / sizeof(Packed) / 2 + 1);
    wishForLargePages(packed_.data(), bytes_.capacity() / 2);
}

void GasFile::addRare(const Entry& entry) {
    packed_.push_back({static_cast<std::uint32_t>(rare_.size()), 0, 0, kRare, 0});
    rare_.push_back(entry);
}

std::string_view GasFile::keep(std::string_view text) {
    if (text.empty()) return {};
    auto* copy = static_cast<char*>(room_.allocate(text.size(), 1));
    std::ranges::copy(text, copy);
    return {copy, text.size()};
}

GasFile::Slice GasFile::keptSlice(std::string_view text) {
    if (text.empty()) return {};
    kept_.push_back(keep(text));
    return {static_cast<std::uint32_t>(kept_.size() - 1),
            static_cast<std::uint32_t>(text.size()) | kKept};
}

const GasGroup* GasFile::with(const GasGroup* around, std::string_view name) {
    const std::uint64_t word =
        name.size() < kWordSize
            ? wordOfShort(name)
            : wordAt(name.data()) ^ wordAt(name.data() + name.size() - kWordSize);
    const std::uint64_t key = word ^ (around == nullptr ? 0 : around->id);
    const GasGroup*& slot =
        latest_[static_cast<std::size_t>(key * 0x9E3779B97F4A7C15U >> (64 - kSlotBits))];
    if (slot != nullptr && slot->around == around && slot->name.bytes() == name) return slot;
    const std::size_t size = name.size() + (around == nullptr ? 0 : around->size + 1);
    GasGroup& made = groups_.emplace_back();
    made = {around, Text(view(slice(name)), page_), nullptr, size,
            static_cast<std::uint32_t>(groups_.size())};
    made.start = size <= GasGroup::kStart ? &made : around == nullptr ? nullptr : around->start;
    return slot = &made;
}

const GasGroup* GasFile::inside(const GasGroup* around, std::string_view name) {
    if (around == nullptr && name.empty()) return nullptr;
    for (std::size_t end; (end = name.find('\\')) != name.npos; name.remove_prefix(end + 1)) {
        around = with(around, name.substr(0, end));
    }
    return with(around, name);
}

}  // namespace kestrel
