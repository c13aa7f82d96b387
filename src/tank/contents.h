#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tank/walk.h"

namespace kestrel {

// One of the things that an archive holds.
struct TankItem {
    static constexpr std::uint32_t kNoParent = static_cast<std::uint32_t>(-1);
    std::uint32_t parent = kNoParent;  // the number of its folder; none of the root
    std::uint32_t end = 0;             // the number behind the last of those that it holds
    std::int32_t index = 0;            // in its folder
    bool isFolder = false;
    std::int16_t format = 0;
    std::int32_t size = 0;  // bytes of its data; a library may tell less than none
    std::int32_t packed = 0;
    std::int32_t crc = 0;
};

enum class TankColumn : std::size_t { name, folder, size, packed, ratio, format, crc };

// Sums over files.
struct TankTotals {
    std::size_t folders = 0;
    std::size_t files = 0;
    std::uint64_t size = 0;  // bytes
    std::uint64_t packed = 0;
};

// The number and what it counts: `one` behind 1, else `many`.
std::wstring counted(std::uint64_t count, std::wstring_view one, std::wstring_view many);

// "1 folder, 2 files, 30 bytes, 15 packed (50 %)".
std::wstring textOf(const TankTotals& totals);

// What an archive holds, listed once and known by numbers: 0 is the root, and each folder
// stands right before all that it holds. The archive stays open.
class TankContents {
  public:
    using Numbers = std::vector<std::uint32_t>;

    // Lists the archive at `path`; `progress` may be null. Throws RunTimeError when it cannot
    // be opened. What stops the listing later is reported, or was the user's cancel.
    TankContents(std::wstring path, Progress* progress);

    const std::wstring& path() const noexcept { return path_; }
    // False when the listing was stopped: it then ends anywhere.
    bool isWhole() const noexcept { return whole_; }
    const std::vector<TankItem>& items() const noexcept { return items_; }
    std::wstring name(std::uint32_t number) const;
    // The names of the folders around the item and its own, with "\" between.
    std::wstring pathOf(std::uint32_t number) const;
    // As pathOf(), of a very long one the end, behind "...".
    std::wstring shownPath(std::uint32_t number) const;
    // The items with that path, whatever the case; either slash separates.
    Numbers at(std::wstring_view path) const;
    // The text of a column of a list.
    std::wstring text(std::uint32_t number, TankColumn column) const;

    // All numbers, sorted by a column; equal ones as they stand in the archive. `breathe` (may
    // be null) is called often enough for a window.
    Numbers sorted(TankColumn column, bool descending, const std::function<void()>& breathe) const;
    // Those of `order` that stand in `folder`; with a filter those anywhere below it whose name
    // holds it, whatever the case.
    Numbers inFolder(std::uint32_t folder, std::wstring_view filter, const Numbers& order) const;
    TankTotals totals(const Numbers& numbers) const;
    // Of all that a folder holds.
    TankTotals totals(std::uint32_t folder) const;

    // The data of a file, whole. Opens the archive anew where the library has stopped working.
    // Throws RunTimeError, which says why it could not be had.
    std::string read(std::uint32_t number);

    // False once it was closed, or nothing more is told of it.
    bool isOpen() const { return archive_ != nullptr && !archive_->isLost(); }
    // read() opens it again.
    void close() { archive_.reset(); }

  private:
    std::wstring pathOf(std::uint32_t number, std::size_t most) const;
    std::string_view bytes(const std::string& names, std::uint32_t number) const;
    std::uint64_t sortKey(std::uint32_t number, TankColumn column) const;
    void open();
    void add(const WalkedEntry& entry, std::vector<std::uint32_t>& open);
    void addName(std::wstring_view name);
    void count(std::uint32_t number, TankTotals& totals) const;
    ChildHandle locate(std::uint32_t number);
    ChildHandle step(ChildHandle folder, std::uint32_t number) const;

    std::wstring path_;
    std::unique_ptr<OpenArchive> archive_;
    bool whole_ = true;
    std::vector<TankItem> items_;
    // The names as UTF-8, each behind a NUL, and the same in small letters.
    std::string names_;
    std::string folded_;
    std::vector<std::size_t> ends_;  // of each name
    std::vector<std::size_t> foldedEnds_;
};

}  // namespace kestrel
