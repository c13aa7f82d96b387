#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "gas/sharedtext.h"

namespace kestrel {

// The sub-blocks around a property, outermost first. It holds the name of the last one
// and shares those around it: the texts of 5,000 groups, each in the one before, would
// take the square of what their names take. A value like any text; it never changes.
// Copies must stay in one thread: the program has no other.
// NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): one assignment does both.
class SharedGroup {
  public:
    SharedGroup() = default;
    // Of names joined by "\".
    SharedGroup(std::wstring_view text);
    SharedGroup(const std::wstring& text) : SharedGroup(std::wstring_view(text)) {}
    SharedGroup(const wchar_t* text) : SharedGroup(std::wstring_view(text)) {}
    SharedGroup(const SharedGroup& other) noexcept : shared_(other.shared_) {
        if (shared_ != nullptr) ++shared_->owners;
    }
    SharedGroup(SharedGroup&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
    SharedGroup& operator=(SharedGroup other) noexcept {
        std::swap(shared_, other.shared_);
        return *this;
    }
    ~SharedGroup() {
        if (shared_ != nullptr && --shared_->owners == 0) release(shared_);
    }

    // The group of the sub-block `name` in this one. A name with "\" counts as several.
    SharedGroup inside(const SharedText& name) const;

    // The group around the last name; empty for a single name.
    SharedGroup around() const noexcept;

    // The sub-blocks of it that fit into kStart characters, outermost first.
    static constexpr std::size_t kStart = 256;
    SharedGroup start() const noexcept {
        return share(shared_ == nullptr ? nullptr : shared_->start);
    }

    // The names joined by "\", made anew by each call.
    std::wstring text() const;
    void appendTo(std::wstring& text) const;
    std::size_t size() const noexcept { return shared_ == nullptr ? 0 : shared_->size; }
    bool empty() const noexcept { return shared_ == nullptr; }
    // The last one.
    std::wstring_view name() const noexcept;

    // Equal for copies, and for nothing else while one of them lives.
    std::uint64_t id() const noexcept { return std::bit_cast<std::uintptr_t>(shared_); }

    // True when this is inside(name) of `around`, made from the same two.
    bool isInside(const SharedGroup& around, const SharedText& name) const noexcept {
        return shared_ != nullptr && shared_->around == around.shared_ &&
               shared_->name.id() == name.id();
    }

    bool operator==(const SharedGroup& other) const noexcept;

  private:
    struct Shared {
        Shared* around;  // owned with others
        SharedText name;
        Shared* start;     // itself, or around it; null where the first name does not fit
        std::size_t size;  // of the joined text
        std::size_t owners = 1;
    };
    explicit SharedGroup(Shared* shared) noexcept : shared_(shared) {}
    static SharedGroup share(Shared* shared) noexcept {
        if (shared != nullptr) ++shared->owners;
        return SharedGroup(shared);
    }
    SharedGroup with(SharedText name) const;
    static void release(Shared* shared) noexcept;

    Shared* shared_ = nullptr;  // null for no sub-block
};

// Gives sub-blocks of one name in one group a single group, as far as it remembers them.
class GroupPool {
  public:
    SharedGroup inside(const SharedGroup& around, const SharedText& name);

  private:
    static constexpr unsigned kSlotBits = 8;

    std::array<SharedGroup, std::size_t{1} << kSlotBits> slots_;
};

}  // namespace kestrel
