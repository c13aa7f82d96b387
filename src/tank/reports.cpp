#include "tank/reports.h"

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/letters.h"
#include "tank/walk.h"
#include "tank/wrappers.h"

namespace kestrel {
namespace {

constexpr std::size_t kMostText = std::size_t{1} << 29;

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

void appendNames(std::wstring& report, TankHandle tank, const WalkedEntry& entry) {
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

void appendKind(std::wstring& report, const WalkedEntry& entry) {
    appendLine(report, L"IsDirectory: \t", entry.isDirectory ? L"Yes" : L"No");
    report += kLineEnd;
}

void appendData(std::wstring& report, TankHandle tank, const WalkedEntry& entry) {
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

void appendHit(std::wstring& report, TankHandle tank, const WalkedEntry& entry) {
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
        Walk(tank, progress).find(directory, [&](const WalkedEntry& entry) {
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
        return Walk(tank, progress).find(directory, [&](const WalkedEntry& entry) {
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
        ChildHandle first = 0;
        glngGetChild(archive.handle(), root, 0, first);
        gstrGetChildName(archive.handle(), first);
        gstrGetChildPath(archive.handle(), first);
        gblnIsDirectory(archive.handle(), first);
        return !archive.isLost();
    });
}

}  // namespace kestrel
