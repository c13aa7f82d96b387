#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "services/host.h"
#include "tank/library.h"

namespace kestrel {

// An open archive, closed at the end of its life.
class OpenArchive {
  public:
    // By gOpenTank().
    explicit OpenArchive(std::wstring_view path);
    // One that is open.
    explicit OpenArchive(TankHandle handle) : handle_(handle) {}
    ~OpenArchive();
    OpenArchive(const OpenArchive&) = delete;
    OpenArchive& operator=(const OpenArchive&) = delete;

    // 0 where it could not be opened.
    TankHandle handle() const noexcept { return handle_; }
    // 0 where it has none.
    ChildHandle root() const;
    // True once nothing more is told of it.
    bool isLost() const;

  private:
    TankHandle handle_;
};

// An entry that a walk has come to.
struct WalkedEntry {
    ChildHandle handle = 0;
    std::wstring name;
    bool isDirectory = false;
    std::int32_t index = 0;  // in its directory
    std::size_t level = 0;   // how many directories of the walk are around it
};

// A walk over all that stands below a directory, a directory before what it
// holds. It needs no stack of calls: archives may nest deeper than that goes. A
// directory inside itself is not entered again; beyond what an archive can hold
// (4,000,000 entries, 100,000 levels) it throws a RunTimeError.
class Walk {
  public:
    // `progress` may be null.
    Walk(TankHandle tank, Progress* progress) : tank_(tank), progress_(progress) {}

    // Calls visit(entry) until it returns true; false when it never did, and after
    // a cancel, and where nothing more is told.
    template <class Visit>
    bool find(ChildHandle directory, Visit visit) {
        if (tank_ != 0) enter(directory);
        while (!levels_.empty()) {
            if (levels_.back().index >= levels_.back().count) {
                leave();
                continue;
            }
            WalkedEntry entry = fetch();
            if (isLost()) return false;
            if (visit(std::as_const(entry))) return true;
            levels_.back().name = std::move(entry.name);
            if (!entry.isDirectory || !descend(entry.handle)) finishEntry();
        }
        return false;
    }

  private:
    // A directory at one of its entries.
    struct Level {
        ChildHandle directory;
        std::int32_t count;
        std::int32_t index;
        std::wstring name;  // of the entry, once it was visited
    };

    WalkedEntry fetch();
    bool isLost() const;
    bool enter(ChildHandle directory);
    bool descend(ChildHandle directory);
    void leave();
    void finishEntry();

    TankHandle tank_;
    Progress* progress_;
    std::int32_t told_ = 0;
    std::vector<Level> levels_;
    std::unordered_set<ChildHandle> open_;  // the directories of the levels
    std::wstring message_;
};

}  // namespace kestrel
