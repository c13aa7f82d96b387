// The histories: any bytes as their file, and lists that are kept and saved.
#include <set>
#include <vector>

#include "fuzz/fuzz.h"
#include "services/histories.h"
#include "services/text.h"
#include "support/vectortextlist.h"

namespace kestrel::fuzz {
namespace {

using test::VectorTextList;

constexpr std::wstring_view kName = L"a.his";
constexpr std::wstring_view kFiles = L"files.his";
constexpr std::size_t kMostEntries = 16;

VectorTextList loaded() {
    VectorTextList list;
    gLoadHistory(list, kName);
    require(list.items.size() <= kMostEntries);
    return list;
}

// What a saved list is when it is loaded again.
std::vector<std::wstring> kept(const std::vector<std::wstring>& items) {
    std::vector<std::wstring> entries;
    for (std::size_t i = 0; i < std::min(items.size(), kMostEntries); ++i) {
        if (!trim(items[i]).empty()) entries.push_back(items[i]);
    }
    return entries;
}

using Entries = std::set<std::wstring>;

bool holdSame(const std::vector<std::wstring>& one, const std::vector<std::wstring>& other) {
    return Entries(one.begin(), one.end()) == Entries(other.begin(), other.end());
}

// Saves the list that was `found` in the file: only another one is written, and the
// backup is what the file held before.
void checkSave(const VectorTextList& list, const std::vector<std::wstring>& found) {
    const std::string before = workFolder().bytes(kName);
    gSaveHistory(list, kName);
    const std::string after = workFolder().bytes(kName);
    const std::vector<std::wstring> entries = kept(list.items);
    if (entries.empty() || holdSame(list.items, found)) return require(after == before);
    require(loaded().items == entries);
    require(after == before || workFolder().bytes(L"a.his.bak") == before);
}

void checkHistory(Input input) {
    workFolder().put(kName, input.rest());
    VectorTextList list = loaded();
    const std::vector<std::wstring> found = list.items;
    checkSave(list, found);
    for (std::size_t step = 0; step < 2 * kMostEntries && !input.empty(); ++step) {
        const bool adds = input.byte() % 2 == 0;
        std::wstring entry = input.text();
        std::erase(entry, L'\r');
        entry = fromUtf8(toUtf8(entry));  // bytes that were apart may be a letter now
        const auto before = std::ranges::count(list.items, entry);
        if (adds) {
            gAddHistoryItem(list, entry);
            require(std::ranges::count(list.items, entry) == std::max(before, std::ptrdiff_t{1}));
        } else {
            gRemoveHistoryItem(list, entry);
            require(std::ranges::count(list.items, entry) <= before);
        }
    }
    checkSave(list, found);
}

// The list of files keeps every line.
void checkFiles(std::string_view bytes) {
    const std::wstring path = workFolder().put(kFiles, bytes);
    const std::vector<std::wstring> files = loadFileHistory(path);
    mSaveFileHistory(files, kFiles);
    require(loadFileHistory(path) == files);
    require(workFolder().bytes(kFiles) == bytes);
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    gProgram().folder = workFolder().path();
    checkHistory(input);
    checkFiles(input.rest());
    require(host.told == 0);
}

}  // namespace kestrel::fuzz
