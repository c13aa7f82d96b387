// The program's own files: the input's first byte tells which of them the others are.
#include <array>
#include <set>

#include "base/text.h"
#include "fuzz/fuzz.h"
#include "services/histories.h"
#include "services/settings.h"
#include "support/vectortextlist.h"

namespace kestrel::fuzz {
namespace {

// Any file gives eight fields, and any values that are written are read again: up to the
// first "=", where a value ends.
void checkSettings(Input input) {
    workFolder().put(L"settings.set", input.rest());
    gReadSettings();
    Settings& s = gProgram().settings;
    const std::array<std::wstring*, 8> fields{&s.orvane,   &s.zeltor,   &s.skritpad, &s.tools[0],
                                              &s.tools[1], &s.tools[2], &s.tools[3], &s.tools[4]};
    for (std::wstring* field : fields) {
        require(field->find_first_of(L"=\n") == field->npos);
        if (input.byte() % 2 == 0) *field = input.text();
    }
    gWriteSettings();
    for (std::wstring* field : fields) field->resize(std::min(field->find(L'='), field->size()));
    const Settings written = s;
    s = {};
    gReadSettings();
    require(s == written);
}

// What is saved is loaded; only another list is written, and the backup is the file before.
void checkHistory(Input input) {
    constexpr std::wstring_view kName = L"a.his";
    constexpr std::size_t kMostEntries = 16;
    workFolder().put(kName, input.rest());
    const std::string before(input.rest());
    test::VectorTextList list;
    gLoadHistory(list, kName);
    const std::set<std::wstring> found(list.items.begin(), list.items.end());
    for (int more = input.byte() % 32; more > 0; --more) {
        gAddHistoryItem(list, std::to_wstring(more));
    }
    for (std::size_t step = 0; step < 2 * kMostEntries && !input.empty(); ++step) {
        const bool adds = input.byte() % 2 == 0;
        std::wstring entry = input.text();
        std::erase(entry, L'\r');
        entry = fromUtf8(toUtf8(entry));  // bytes that were apart may be a letter now
        (adds ? gAddHistoryItem : gRemoveHistoryItem)(list, entry);
    }
    gSaveHistory(list, kName);
    const std::string after = workFolder().bytes(kName);
    Words kept = list.items;
    kept.resize(std::min(kept.size(), kMostEntries));
    std::erase_if(kept, [](const std::wstring& entry) { return trim(entry).empty(); });
    if (kept.empty() || std::set(list.items.begin(), list.items.end()) == found) {
        return require(after == before);
    }
    require(after == before || workFolder().bytes(L"a.his.bak") == before);
    list.items.clear();
    gLoadHistory(list, kName);
    require(list.items == kept);
}

// The list of files keeps every line.
void checkFiles(Input input) {
    const std::wstring path = workFolder().put(L"files.his", input.rest());
    Words files = loadFileHistory(path);
    files.push_back(L"new");
    mSaveFileHistory(files, L"files.his");
    if (std::ranges::count(files, L"new") > 1) files.pop_back();
    require(loadFileHistory(path) == files);
}

constexpr std::array kFormats{checkSettings, checkHistory, checkFiles};

}  // namespace

// Of digits the first one is "0".
void run(Input input, test::RecordingHost& host) {
    kFormats[input.byte() % kFormats.size()](input);
    require(host.log.empty());
}

}  // namespace kestrel::fuzz
