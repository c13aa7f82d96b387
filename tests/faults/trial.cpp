// trial OPERATION FOLDER: performs one of the program's writes, tells what came of it
// in a line ("REPORTS CALLS STRUCK"), waits for a line and performs it once more,
// without faults. The last line is the number of reports of that.
//
// trial session FOLDER NAME FIELD: starts as the program does, says "started", waits for
// a line, changes the setting of that index and ends as the program does.
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "faults/operations.h"
#include "services/bytes.h"
#include "services/histories.h"
#include "services/settings.h"
#include "support/vectortextlist.h"

namespace {

using namespace kestrel;

void say(const std::string& text) {
    std::puts(text.c_str());
    std::fflush(stdout);
}

int perform(const test::Operation& operation, const std::wstring& folder) {
    using End = int (*)(const char**);
    const auto end = reinterpret_cast<End>(::dlsym(RTLD_DEFAULT, "kestrelFaultsEnd"));
    test::RecordingHost host;
    gProgram().folder = folder;
    operation.run(host, folder);
    const char* struck = "";
    const int calls = end == nullptr ? 0 : end(&struck);
    say(std::to_string(test::reports(host)) + " " + std::to_string(calls) + " " + struck);
    std::getchar();
    host.log.clear();
    operation.run(host, folder);
    say(std::to_string(test::reports(host)));
    return 0;
}

int session(const std::wstring& folder, std::wstring_view name, std::size_t field) {
    test::RecordingHost host;
    gProgram().folder = folder;
    test::VectorTextList list;
    gReadSettings();
    gLoadHistory(list, L"info.his");
    say("started");
    std::getchar();
    Settings& settings = gProgram().settings;
    (field < 3 ? *std::array{&settings.orvane, &settings.zeltor, &settings.skritpad}[field]
               : settings.tools[0]) = name;
    gWriteSettings();
    gAddHistoryItem(list, name);
    gSaveHistory(list, L"info.his");
    return test::reports(host) == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** words) {
    if (count == 5) {
        return session(fromUtf8(words[2]), fromUtf8(words[3]),
                       static_cast<std::size_t>(*words[4] - '0'));
    }
    if (count != 3) return 2;
    const auto& all = test::operations();
    const auto operation = std::ranges::find(all, std::string(words[1]), &test::Operation::name);
    return operation == all.end() ? 2 : perform(*operation, fromUtf8(words[2]));
}
