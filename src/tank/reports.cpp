#include "tank/reports.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/letters.h"
#include "tank/wrappers.h"

namespace kestrel {
namespace {

// Far more than an archive holds, and the end for one that lies.
constexpr std::int32_t kMostEntries = 4'000'000;
constexpr std::size_t kMostLevels = 100'000;
constexpr std::size_t kMostText = std::size_t{1} << 29;

// An open archive, closed at the end of its life.
class OpenArchive {
  public:
    explicit OpenArchive(std::wstring_view path) : handle_(gOpenTank(path)) {}
    ~OpenArchive() { glngCloseTank(handle_); }
    OpenArchive(const OpenArchive&) = delete;
    OpenArchive& operator=(const OpenArchive&) = delete;

    TankHandle handle() const noexcept { return handle_; }
    ChildHandle root() const {
        return handle_ == 0 ? 0 : gProgram().host.tank->GetRootDir(handle_);
    }

  private:
    TankHandle handle_;
};

struct Entry {
    ChildHandle handle = 0;
    std::wstring name;
    bool isDirectory = false;
};

Entry fetchEntry(TankHandle tank, ChildHandle directory, std::int32_t index) {
    Entry entry;
    glngGetChild(tank, directory, index, entry.handle);
    entry.name = gstrGetChildName(tank, entry.handle);
    entry.isDirectory = gblnIsDirectory(tank, entry.handle);
    return entry;
}

// True once nothing more is told of the archive.
bool isLost(TankHandle tank) {
    const TankLibrary* library = gProgram().host.tank;
    return library != nullptr && library->isLost(tank);
}

// A walk over all that stands below a directory, a directory before what it
// holds. It needs no stack of calls: archives may nest deeper than that goes.
class Walk {
  public:
    Walk(TankHandle tank, Progress* progress) : tank_(tank), progress_(progress) {}

    // Calls visit(entry) until it returns true; false when it never did, and after
    // a cancel.
    template <class Visit>
    bool find(ChildHandle directory, Visit visit) {
        if (tank_ != 0) enter(directory);
        while (!levels_.empty()) {
            const Level& level = levels_.back();
            if (level.index >= level.count) {
                leave();
                continue;
            }
            if (--left_ < 0) refuse();
            Entry entry = fetchEntry(tank_, level.directory, level.index);
            if (isLost(tank_)) return false;
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

    [[noreturn]] static void refuse() {
        throw RunTimeError(kOverflow, L"The archive lists more entries than it can hold");
    }

    // False for a directory that is not there or that stands inside itself.
    bool enter(ChildHandle directory) {
        if (directory == 0 || !open_.insert(directory).second) return false;
        if (levels_.size() == kMostLevels) refuse();
        levels_.push_back({directory, glngGetChildCount(tank_, directory), 0, {}});
        return true;
    }

    bool descend(ChildHandle directory) {
        if (progress_ != nullptr) progress_->Process(L"Parent: " + levels_.back().name);
        return enter(directory);
    }

    void leave() {
        open_.erase(levels_.back().directory);
        levels_.pop_back();
        if (!levels_.empty()) finishEntry();
    }

    // After an entry, and all that it holds. A cancel skips the rest of its level,
    // and so of each level above.
    void finishEntry() {
        Level& level = levels_.back();
        if (progress_ != nullptr) {
            message_.replace(kMessage.size(), message_.npos, level.name);
            // Kept: the last entry never reaches 100.
            const std::size_t steps = static_cast<std::size_t>(level.count) + 1;
            progress_->ShowProgress(percentage(static_cast<std::size_t>(level.index), steps),
                                    message_);
            // The percentage of a folder with many entries stays the same for long.
            progress_->breathe();
        }
        const bool cancelled = progress_ != nullptr && progress_->DidCancel();
        level.index = cancelled ? level.count : level.index + 1;
    }

    static constexpr std::wstring_view kMessage = L"Child: ";

    TankHandle tank_;
    Progress* progress_;
    std::int32_t left_ = kMostEntries;
    std::vector<Level> levels_;
    std::unordered_set<ChildHandle> open_;  // the directories of the levels
    std::wstring message_{kMessage};
};

void appendLine(std::wstring& report, std::wstring_view label, std::wstring_view value) {
    report.append(label).append(value).append(kLineEnd);
}

void appendNumberLine(std::wstring& report, std::wstring_view label, std::int32_t number,
                      std::wstring_view unit = {}) {
    report += label;
    report += std::to_wstring(number);
    report.append(unit).append(kLineEnd);
}

void appendHeading(std::wstring& report, std::wstring_view label, std::wstring_view value) {
    const Clock* clock = gProgram().host.clock;
    appendLine(report, label, value);
    appendLine(report, L"Time: ", clock != nullptr ? clock->longTime() : std::wstring());
    appendLine(report, L"Date: ", clock != nullptr ? clock->longDate() : std::wstring());
    report += kLineEnd;
}

void appendNames(std::wstring& report, TankHandle tank, const Entry& entry) {
    appendLine(report, L"Name: \t", entry.name);
    report += L"Path: \t\\Root";
    appendLine(report, {}, gstrGetChildPath(tank, entry.handle));
}

void appendFacts(std::wstring& report, TankHandle tank, ChildHandle child) {
    constexpr std::wstring_view kBytes = L" (bytes)";
    appendNumberLine(report, L"Size: \t", glngGetChildSize(tank, child), kBytes);
    appendNumberLine(report, L"CompSize: \t", glngGetChildCompSize(tank, child), kBytes);
    appendNumberLine(report, L"CRC: \t", glngGetChildCRC(tank, child));
    appendNumberLine(report, L"Flags: \t", gintGetChildFlags(tank, child));
    appendLine(report, L"Format: \t", gstrFormatName(gintGetChildFormat(tank, child)));
}

void appendKind(std::wstring& report, const Entry& entry) {
    appendLine(report, L"IsDirectory: \t", entry.isDirectory ? L"Yes" : L"No");
    report += kLineEnd;
}

void appendData(std::wstring& report, TankHandle tank, const Entry& entry) {
    const std::wstring ruler(25, L'+');
    std::int32_t count = 0;
    const std::wstring data = gstrGetChildDataRAW(tank, entry.handle, count);
    if (data.empty()) {
        report += entry.isDirectory ? L"Child is a directory and has no data."
                                    : L"Unable to get child data...";
        return;
    }
    const bool raw = endsWithoutCase(entry.name, L".raw");
    report += raw ? L"Unable to show non-text data(" : L"Data follows(";
    report += std::to_wstring(glngGetChildSize(tank, entry.handle));
    report += L" bytes)";
    if (raw) {
        report += L'.';
        return;
    }
    appendLine(report, L": ", {});
    appendLine(report, ruler, {});
    appendLine(report, data, {});
    report += ruler;
}

void appendHit(std::wstring& report, TankHandle tank, const Entry& entry) {
    appendNames(report, tank, entry);
    appendFacts(report, tank, entry.handle);
    appendKind(report, entry);
    appendData(report, tank, entry);
}

// Runs `walk` on the root; tells when there is none.
template <class Action>
bool withRoot(const OpenArchive& archive, std::wstring& report, Action walk) {
    const ChildHandle root = archive.root();
    if (root != 0) return walk(root);
    appendLine(report, L"Tank has no Root.", {});
    return false;
}

}  // namespace

bool gblnListTank(std::wstring_view path, std::wstring& report, Owner* owner,
                  std::int16_t listType) {
    if (path.empty()) return false;
    return guarded(L"gblnListTank", [&] {
        report.clear();
        const OpenArchive archive(path);
        appendHeading(report, L"Filename: ", path);
        const ProgressScope scope(nullptr, owner, L"Processing: " + std::wstring(fileName(path)));
        if (archive.handle() == 0) return false;
        withRoot(archive, report, [&](ChildHandle root) {
            return gblnListChildren(archive.handle(), root, report, scope.dialog(), listType);
        });
        return true;
    });
}

bool gblnListChildren(TankHandle tank, ChildHandle directory, std::wstring& report,
                      Progress* progress, std::int16_t listType) {
    return guarded(L"gblnListChildren", [&] {
        bool listed = false;
        Walk(tank, progress).find(directory, [&](const Entry& entry) {
            if (report.size() > kMostText) throw RunTimeError(kOutOfMemory, L"Out of memory");
            appendNames(report, tank, entry);
            if (listType == kFullList) appendFacts(report, tank, entry.handle);
            appendKind(report, entry);
            listed = true;
            return false;
        });
        return listed;
    });
}

bool gblnFindChild(std::wstring_view path, std::wstring_view searched, std::int32_t passed,
                   std::wstring& report, Owner* owner) {
    if (searched.empty()) return false;
    return guarded(L"gblnFindChild", [&] {
        report.clear();
        const OpenArchive archive(path);
        appendHeading(report, L"Searched For: ", searched);
        const ProgressScope scope(nullptr, owner, std::nullopt);
        if (archive.handle() == 0) return false;
        return withRoot(archive, report, [&](ChildHandle root) {
            return gblnSearchChildren(searched, passed, archive.handle(), root, report,
                                      scope.dialog());
        });
    });
}

bool gblnSearchChildren(std::wstring_view searched, std::int32_t /*passed*/, TankHandle tank,
                        ChildHandle directory, std::wstring& report, Progress* progress) {
    return guarded(L"gblnSearchChildren", [&] {
        const std::wstring wanted = lowerCase(searched);
        return Walk(tank, progress).find(directory, [&](const Entry& entry) {
            if (lowerCase(entry.name).find(wanted) == std::wstring::npos) return false;
            appendHit(report, tank, entry);
            return true;
        });
    });
}

bool gblnTestTank(std::wstring_view path) {
    if (path.empty()) return false;
    // Named as the routine that opens: that is what fails when a test fails.
    return guarded(L"gOpenTank", [&] {
        const OpenArchive archive(path);
        const ChildHandle root = archive.root();
        if (root == 0) return false;
        if (glngGetChildCount(archive.handle(), root) <= 0) return false;
        // Kept: only the first entry is read. Once is enough for a library that answers.
        const Entry entry = fetchEntry(archive.handle(), root, 0);
        gstrGetChildPath(archive.handle(), entry.handle);
        return !isLost(archive.handle());
    });
}

}  // namespace kestrel
