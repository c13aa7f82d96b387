#include "faults/operations.h"

#include <cstdlib>

#include "gas/load.h"
#include "gas/saving.h"
#include "services/bytes.h"
#include "services/files.h"
#include "services/histories.h"
#include "services/program.h"
#include "services/settings.h"
#include "services/viewtext.h"
#include "support/vectortextlist.h"
#include "text/convert.h"
#include "text/render.h"

namespace kestrel::test {
namespace {

// More than a page, so that half of it is no whole number of them.
const std::wstring kText =
    L"[t:template,n:new]\r\n{\r\ndoc = \"" + std::wstring(7000, L'n') + L"\";\r\n}\r\n";
const std::string kOld(5000, 'o');
const std::string kOlder(6000, 'b');

std::string gasText(const std::string& name) {
    return "[t:template,n:" + name + "]\r\n{\r\ndoc = \"" + std::string(3000, 'd') +
           "\";\r\n[look]\r\n{\r\nmodel = \"m\";\r\n}\r\n}\r\n";
}

void settings(RecordingHost&, const std::wstring&) {
    gProgram().settings = {};
    gReadSettings();
    gProgram().settings.skritpad = std::wstring(7000, L's');
    gWriteSettings();
}

void saveHistory(std::wstring_view name) {
    VectorTextList list;
    gLoadHistory(list, name);
    gAddHistoryItem(list, L"/new/" + std::wstring(7000, L'n'));
    gSaveHistory(list, name);
}

void saveFileList(RecordingHost&, const std::wstring& folder) {
    std::vector<std::wstring> files = loadFileHistory(joinPath(folder, L"spec.his"));
    if (files.empty() || files.back() != L"/new") files.push_back(L"/new");
    mSaveFileHistory(files, L"spec.his");
}

void convert(std::wstring folder, std::int16_t options) {
    gProgram().kept.clear();
    std::wstring summary;
    Progress* progress = nullptr;
    gblnConvertFolder(folder, summary, L"", options, L"Title: \r\n", nullptr, progress);
}

void saveTexts(RecordingHost&, const std::wstring& folder) {
    std::wstring path = joinPath(folder, L"a.gas");
    std::vector<GasTemplate> templates;
    gblnLoadGas(path, templates, nullptr);
    const std::wstring text = gstrMakeFileText(path, templates, nullptr, 0, nullptr);
    const std::wstring target = joinPath(folder, L"saved.tab");
    writeFile(target, text, backupPath(target));
}

void saveFromViewer(RecordingHost& host, const std::wstring& folder, std::wstring_view name) {
    const std::wstring open = joinPath(folder, L"open.gas");
    host.files = {joinPath(folder, name)};
    // Each is the first of its run: a later one leaves the backup alone.
    gProgram().kept.clear();
    ViewedText text{[] { return kText; }, true, true};
    saveViewedText(text, {[&] { return open; },
                          [&] {
                              std::wstring path = open;
                              std::vector<GasTemplate> templates;
                              gblnLoadGas(path, templates, nullptr);
                          },
                          [&] { return fileStamp(open); }});
}

void handOver(RecordingHost&, const std::wstring& folder) {
    ::setenv("XDG_CACHE_HOME", toUtf8(folder).c_str(), 1);
    gProgram().settings.skritpad = L"/opt/pad";
    openInScriptEditor({[] { return kText; }, false, false});
}

FileBytes withBackup(const std::string& name, const std::string& old) {
    return {{name, old}, {name + ".bak", kOlder}};
}

Operation historyOperation(const std::string& name, const std::string& old) {
    return {name, withBackup(name, old), {name}, true, [name](RecordingHost&, const std::wstring&) {
                saveHistory(fromUtf8(name));
            }};
}

Operation viewerOperation(const std::string& name, const std::string& target, FileBytes before,
                          bool keepsBackup) {
    return {name,
            std::move(before),
            {target},
            keepsBackup,
            [target](RecordingHost& host, const std::wstring& folder) {
                saveFromViewer(host, folder, fromUtf8(target));
            }};
}

FileBytes sourcesWith(FileBytes others) {
    for (const char* name : {"a", "b", "c"}) others[std::string(name) + ".gas"] = gasText(name);
    return others;
}

std::vector<Operation> makeOperations() {
    const std::string lines = "/old/" + std::string(4000, 'o') + "\r\n/older\r\n";
    std::vector<Operation> all;
    for (const char* name :
         {"info.his", "cnv1.his", "cnv2.his", "mor.his", "zeltor1.his", "zeltor2.his"}) {
        all.push_back(historyOperation(name, lines));
    }
    all.push_back({"first_history", {}, {"info.his"}, true, historyOperation("info.his", "").run});
    all.push_back({"spec.his", withBackup("spec.his", lines), {"spec.his"}, true, saveFileList});
    all.push_back({"settings",
                   withBackup("settings.set", "of nobody\r\norvane=" + kOld + "\r\n"),
                   {"settings.set"},
                   true,
                   settings});
    all.push_back({"first_settings", {}, {"settings.set"}, false, settings});
    all.push_back({"converted_files",
                   sourcesWith({{"a.tab", kOld}, {"b.tab", kOlder}}),
                   {"a.tab", "b.tab", "c.tab"},
                   false,
                   [](RecordingHost&, const std::wstring& folder) { convert(folder, 0); }});
    all.push_back(
        {"Converted.tab",
         sourcesWith(withBackup("Converted.tab", kOld)),
         {"Converted.tab"},
         true,
         [](RecordingHost&, const std::wstring& folder) { convert(folder, kSingleFile); }});
    all.push_back(
        {"saved_list", sourcesWith(withBackup("saved.tab", kOld)), {"saved.tab"}, true, saveTexts});
    all.push_back(viewerOperation("new_text", "new.txt", {}, false));
    all.push_back(viewerOperation("viewer_text", "old.txt", {{"old.txt", kOld}}, false));
    all.push_back(
        viewerOperation("edited_source", "open.gas", withBackup("open.gas", gasText("old")), true));
    all.push_back({"temporary_file", {}, {kTemporary}, false, handOver});
    return all;
}

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = makeOperations();
    return all;
}

std::size_t reports(const RecordingHost& host) {
    return host.logged("ask: Error").size();
}

}  // namespace kestrel::test
