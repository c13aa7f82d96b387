#include "services/histories.h"

#include <algorithm>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/text.h"

namespace kestrel {

namespace {

constexpr std::size_t kMostEntries = 16;
constexpr std::size_t kLongestPath = 32767;  // of any system; nothing longer is an entry

// An entry that the file can hold. One that 8-bit text has no bytes for is left
// out, since it would cost all the others.
bool isKept(const std::wstring& entry) {
    return !trim(entry).empty() && isNarrow(entry);
}

void loadLines(TextList& list, std::string_view bytes) {
    constexpr std::string_view kEnd = "\r\n";
    for (std::size_t line = 0; line < kMostEntries && !bytes.empty(); ++line) {
        const std::size_t length = std::min(bytes.find(kEnd), bytes.size());
        const std::string_view entry = bytes.substr(0, length);
        bytes.remove_prefix(std::min(length + kEnd.size(), bytes.size()));
        const bool blank = entry.find_first_not_of(' ') == std::string_view::npos;
        if (!blank && entry.size() <= kLongestPath) list.append(widen(entry));
    }
}

}  // namespace

void gLoadHistory(TextList& list, std::wstring_view name) {
    guarded(L"gLoadHistory", [&] { loadLines(list, readFileBytes(programFile(name))); });
}

void gSaveHistory(const TextList& list, std::wstring_view name) {
    guarded(L"gSaveHistory", [&] {
        std::wstring text;
        const std::size_t count = std::min(list.count(), kMostEntries);
        for (std::size_t i = 0; i < count; ++i) {
            const std::wstring entry = list.at(i);
            if (isKept(entry)) text.append(entry).append(kLineEnd);
        }
        if (text.empty()) return;
        const std::wstring path = programFile(name);
        writeFile(path, text, backupPath(path));
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
        const std::wstring text = gstrReadFile(path);
        const auto lines = split(text, kLineEnd);
        return std::vector<std::wstring>(lines.begin(), lines.end());
    });
}

void mSaveFileHistory(const std::vector<std::wstring>& files, std::wstring_view name) {
    guarded(L"mSaveFileHistory", [&] {
        std::wstring text;
        for (const std::wstring& file : files) {
            if (isNarrow(file)) text.append(file).append(kLineEnd);
        }
        if (text.size() <= kLineEnd.size()) return;
        text.resize(text.size() - kLineEnd.size());
        const std::wstring path = programFile(name);
        filesystem::replace(path, narrow(text), backupPath(path));
    });
}

}  // namespace kestrel
