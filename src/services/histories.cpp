#include "services/histories.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "base/error.h"
#include "base/text.h"
#include "services/files.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/program.h"
#include "services/settings.h"
#include "system/filesystem.h"

namespace kestrel {

namespace {

constexpr std::size_t kMostEntries = 16;
constexpr std::size_t kLongestPath = 32767;  // of any system; nothing longer is an entry

bool isKept(const std::wstring& entry) {
    return !trim(entry).empty();
}

using Entries = std::vector<std::wstring>;

Entries linesOf(std::string_view bytes) {
    const std::wstring text = fileText(bytes);
    const auto lines = split(text, kLineEnd);
    return {lines.begin(), lines.end()};
}

// Those among the first lines that can be entries.
Entries entriesOf(std::string_view bytes) {
    const std::wstring text = fileText(bytes);
    Entries entries;
    std::wstring_view rest = text;
    for (std::size_t line = 0; line < kMostEntries && !rest.empty(); ++line) {
        const std::size_t length = std::min(rest.find(kLineEnd), rest.size());
        const std::wstring_view entry = rest.substr(0, length);
        rest.remove_prefix(std::min(length + kLineEnd.size(), rest.size()));
        const bool blank = entry.find_first_not_of(L' ') == entry.npos;
        if (!blank && entry.size() <= kLongestPath) entries.emplace_back(entry);
    }
    return entries;
}

// As the shared routines write them: blank ones count towards the most, and are left out.
std::wstring linesAmongTheFirst(const Entries& entries) {
    std::wstring text;
    for (std::size_t i = 0; i < std::min(entries.size(), kMostEntries); ++i) {
        if (isKept(entries[i])) text.append(entries[i]).append(kLineEnd);
    }
    return text;
}

// All of them, with nothing behind the last one.
std::wstring joinedLines(const Entries& entries) {
    std::wstring text;
    for (const std::wstring& entry : entries) {
        text.append(entry).append(kLineEnd);
    }
    text.resize(text.size() - std::min(text.size(), kLineEnd.size()));
    return text;
}

// How a file of entries is read and written.
struct Form {
    Entries (*entries)(std::string_view bytes);
    std::wstring (*text)(const Entries& entries);
    bool newestFirst;
};

std::string bytesAt(const std::wstring& path) {
    return filesystem::read(path).value_or(std::string());
}

// The entries of `from` that are not among `taken`.
Entries without(const Entries& from, const Entries& taken) {
    const std::set<std::wstring_view> known(taken.begin(), taken.end());
    Entries rest;
    std::ranges::copy_if(from, std::back_inserter(rest),
                         [&](const std::wstring& entry) { return !known.contains(entry); });
    return rest;
}

// What the file holds `now`, without what this run took away and with what it added to
// what it `found`.
Entries merged(const Entries& mine, const Entries& found, const Entries& now, bool newestFirst) {
    const Entries added = without(mine, found);
    Entries others = without(now, without(found, mine));
    if (!newestFirst) {
        std::ranges::copy(without(added, now), std::back_inserter(others));
        return others;
    }
    others = without(others, added);
    Entries entries;
    std::ranges::copy_if(added, std::back_inserter(entries), isKept);
    std::ranges::copy(others, std::back_inserter(entries));
    return entries;
}

bool isSame(const Entries& mine, const Entries& found) {
    return without(mine, found).empty() && without(found, mine).empty();
}

// A backup that cannot be made does not keep the file from being written.
void replaceKeeping(const std::wstring& path, const std::string& bytes,
                    const std::wstring& backup) {
    try {
        filesystem::replace(path, bytes, backup);
    } catch (const RunTimeError&) {
        if (backup.empty()) throw;
        filesystem::replace(path, bytes, {});
        throw;
    }
}

void save(const std::wstring& path, const Entries& mine, const Form& form) {
    Entries& found = gProgram().found.histories[path];
    if (isSame(mine, found)) return;
    const FileLock lock = lockSettings();
    const std::optional<std::string> old = filesystem::read(path);
    const Entries now = form.entries(old.value_or(std::string()));
    const std::wstring text =
        form.text(now == found ? mine : merged(mine, found, now, form.newestFirst));
    if (text.empty()) return;
    if (text != form.text(now)) {
        replaceKeeping(path, fileBytes(text), old ? backupPath(path) : std::wstring());
    }
    found = mine;
}

}  // namespace

void gLoadHistory(TextList& list, std::wstring_view name) {
    guarded(L"gLoadHistory", [&] {
        const std::wstring path = programFile(name);
        Entries& found = gProgram().found.histories[path];
        found.clear();
        found = entriesOf(bytesAt(path));
        for (const std::wstring& entry : found) list.append(entry);
    });
}

void gSaveHistory(const TextList& list, std::wstring_view name) {
    guarded(L"gSaveHistory", [&] {
        Entries entries;
        for (std::size_t i = 0; i < list.count(); ++i) entries.push_back(list.at(i));
        save(programFile(name), entries, {entriesOf, linesAmongTheFirst, true});
    });
}

void gAddHistoryItem(TextList& list, std::wstring_view text) {
    guarded(L"gAddHistoryItem", [&] {
        for (std::size_t i = 0; i < list.count(); ++i) {
            if (list.at(i) == text) return;
        }
        list.insert(0, text);
    });
}

void gRemoveHistoryItem(TextList& list, std::wstring_view text) {
    guarded(L"gRemoveHistoryItem", [&] {
        if (text.empty()) return;
        // The walk goes on behind a removed entry, so the second of two equal
        // neighbours stays.
        for (std::size_t i = 0; i < list.count(); ++i) {
            if (list.at(i) == text) list.removeAt(i);
        }
    });
}

std::vector<std::wstring> loadFileHistory(std::wstring_view path) {
    return guarded(L"loadFileHistory", [&] {
        Entries& found = gProgram().found.histories[filesystem::absolutePath(path)];
        found.clear();
        return found = linesOf(bytesAt(std::wstring(path)));
    });
}

void mSaveFileHistory(const std::vector<std::wstring>& files, std::wstring_view name) {
    guarded(L"mSaveFileHistory", [&] {
        save(programFile(name), files, {linesOf, joinedLines, false});
    });
}

}  // namespace kestrel
