#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "gas/words.h"

// Texts that are kept once however many records bear them.
namespace kestrel {

// A text whose copies share one storage: most properties of a file bear few names. A value like any
// text; it never changes. Copies must stay in one thread: the program has no other.
// NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): one assignment does both.
class SharedText {
  public:
    SharedText() = default;
    SharedText(std::wstring text);
    SharedText(const wchar_t* text) : SharedText(std::wstring(text)) {}
    SharedText(const SharedText& other) noexcept : shared_(other.shared_) {
        if (shared_ != nullptr) ++shared_->owners;
    }
    SharedText(SharedText&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
    SharedText& operator=(SharedText other) noexcept {
        std::swap(shared_, other.shared_);
        return *this;
    }
    ~SharedText() {
        if (shared_ != nullptr && --shared_->owners == 0) delete shared_;
    }

    const std::wstring& text() const noexcept {
        return shared_ == nullptr ? kEmpty : shared_->text;
    }
    operator const std::wstring&() const noexcept { return text(); }
    operator std::wstring_view() const noexcept { return text(); }
    bool empty() const noexcept { return shared_ == nullptr; }
    // Equal for copies, and for nothing else while one of them lives.
    std::uint64_t id() const noexcept { return std::bit_cast<std::uintptr_t>(shared_); }

    bool operator==(const SharedText& other) const noexcept {
        return shared_ == other.shared_ || text() == other.text();
    }
    bool operator==(std::wstring_view other) const noexcept { return text() == other; }
    bool operator==(const std::wstring& other) const noexcept { return text() == other; }
    bool operator==(const wchar_t* other) const noexcept { return text() == other; }

  private:
    static const std::wstring kEmpty;

    struct Shared {
        std::wstring text;
        std::size_t owners = 1;
    };
    Shared* shared_ = nullptr;  // null for the empty text
};

// Gives texts made from equal bytes one shared copy, as far as it remembers
// them: one text may push out another, which bounds its size and the time of a
// call.
class TextPool {
  public:
    // The text that `make` gives for `bytes`, each time the same one.
    template <class Make>
    SharedText share(std::string_view bytes, Make&& make) {
        const Key key(bytes);
        Slot& slot = slots_[static_cast<std::size_t>(key.hash() >> (64 - kSlotBits))];
        if (slot.key != key || (!key.isWhole() && slot.bytes != bytes)) {
            slot = {key, std::string(bytes), SharedText(make(bytes))};
        }
        return slot.text;
    }

  private:
    // The first and the last eight bytes: all of most names, and compared
    // without a call.
    struct Key {
        Key() = default;
        explicit Key(std::string_view bytes) noexcept;
        bool operator==(const Key&) const = default;
        bool isWhole() const noexcept { return size <= 2 * kWordSize; }
        std::uint64_t hash() const noexcept {
            return (std::rotl(head, 29) ^ tail ^ size) * 0x9E3779B97F4A7C15U;
        }

        std::size_t size = 0;
        std::uint64_t head = 0;
        std::uint64_t tail = 0;
    };
    struct Slot {
        Key key;
        std::string bytes;
        SharedText text;
    };
    static constexpr unsigned kSlotBits = 8;

    std::array<Slot, std::size_t{1} << kSlotBits> slots_;
};

inline TextPool::Key::Key(std::string_view bytes) noexcept : size(bytes.size()) {
    if (size < kWordSize) {
        head = wordOfShort(bytes);
    } else {
        head = wordAt(bytes.data());
        tail = wordAt(bytes.data() + size - kWordSize);
    }
}

}  // namespace kestrel
