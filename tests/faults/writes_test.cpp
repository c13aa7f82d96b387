#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>

#include "faults/faults.h"
#include "gas/load.h"
#include "gas/saving.h"
#include "services/bytes.h"
#include "services/files.h"
#include "services/histories.h"
#include "services/settings.h"
#include "services/viewtext.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "support/vectortextlist.h"
#include "text/convert.h"

// Each of the program's writes, failed or ended at its first call, its second, and so
// on until it is done before that; and over links and what is no ordinary file.
namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

using Kind = Fault::Kind;
using Names = std::vector<std::string>;

using FileBytes = std::map<std::string, std::string>;

// One of the program's writes, as a user brings it about, but for the windows. A target
// whose ".bak" stands in `before` is kept there.
struct Operation {
    FileBytes before;  // the folder's files before it
    Names targets;     // those that it replaces or makes
    std::function<void(RecordingHost& host, const std::wstring& folder)> run;

    const std::string& target() const { return targets.front(); }
    std::string backup() const { return target() + ".bak"; }
    bool keepsBackup() const { return before.contains(backup()); }
};

// A file for another program goes by the one name, in a folder of the other.
constexpr const char* kTemporary = "gsv";
constexpr const char* kPrivate = "kestrel";

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

template <std::int16_t Options>
void convert(RecordingHost&, std::wstring folder) {
    gProgram().kept.clear();
    std::wstring summary;
    Progress* progress = nullptr;
    gblnConvertFolder(folder, summary, L"", Options, L"Title: \r\n", nullptr, progress);
}

void saveText(RecordingHost&, const std::wstring& folder) {
    const std::wstring target = joinPath(folder, L"saved.tab");
    writeFile(target, kText, backupPath(target));
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
    ::unsetenv("XDG_CACHE_HOME");
}

FileBytes withBackup(const std::string& name, const std::string& old) {
    return {{name, old}, {name + ".bak", kOlder}};
}

FileBytes sourcesWith(FileBytes others) {
    for (const char* name : {"a", "b", "c"}) others[std::string(name) + ".gas"] = gasText(name);
    return others;
}

Operation history(const std::string& file, FileBytes before) {
    const auto run = [file](RecordingHost&, const std::wstring&) { saveHistory(fromUtf8(file)); };
    return {std::move(before), {file}, run};
}

Operation viewer(const std::string& target, FileBytes before) {
    const auto run = [target](RecordingHost& host, const std::wstring& folder) {
        saveFromViewer(host, folder, fromUtf8(target));
    };
    return {std::move(before), {target}, run};
}

std::vector<Operation> makeOperations() {
    const std::string lines = "/old/" + std::string(4000, 'o') + "\r\n/older\r\n";
    const std::string lists = "of nobody\r\norvane=" + kOld + "\r\n";
    const FileBytes tabs{{"a.tab", kOld}, {"b.tab", kOlder}};
    std::vector<Operation> all{
        history("info.his", {}),
        {withBackup("spec.his", lines), {"spec.his"}, saveFileList},
        {withBackup("settings.set", lists), {"settings.set"}, settings},
        {{}, {"settings.set"}, settings},
        {sourcesWith(tabs), {"a.tab", "b.tab", "c.tab"}, convert<0>},
        {sourcesWith(withBackup("Converted.tab", kOld)), {"Converted.tab"}, convert<kSingleFile>},
        {withBackup("saved.tab", kOld), {"saved.tab"}, saveText},
        viewer(std::string(255, 'x'), {}),
        viewer("old.txt", {{"old.txt", kOld}}),
        viewer("open.gas", withBackup("open.gas", gasText("old"))),
        {{}, {kTemporary}, handOver},
    };
    for (const char* name :
         {"info.his", "cnv1.his", "cnv2.his", "mor.his", "zeltor1.his", "zeltor2.his"}) {
        all.push_back(history(name, withBackup(name, lines)));
    }
    return all;
}

const std::vector<Operation> kOperations = makeOperations();

std::string bytesOf(const FileBytes& files, const std::string& name) {
    const auto at = files.find(name);
    return at == files.end() ? "(missing)" : at->second;
}

// A folder in which a program tries an operation.
class Trial {
  public:
    // Learns what the operation makes of its files when nothing is in its way.
    explicit Trial(const Operation& tried) : operation(tried) {
        reset();
        EXPECT_EQ(perform(), 0);
        good = files;
        for (const std::string& target : operation.targets) {
            EXPECT_NE(good[target], bytesOf(operation.before, target));
        }
        if (operation.keepsBackup()) {
            EXPECT_EQ(good[operation.backup()], operation.before.at(operation.target()));
        }
    }

    // A new program over the files of before.
    void reset() {
        for (const std::string& name : folder.names()) fs::remove_all(native(name));
        for (const auto& [name, bytes] : operation.before) folder.put(fromUtf8(name), bytes);
        host.emplace();
    }

    // Performs the operation and looks at the folder. Returns the number of error reports.
    int perform() {
        host->log.clear();
        gProgram().folder = folder.path();
        operation.run(*host, folder.path());
        look();
        return static_cast<int>(host->logged("ask: Error").size());
    }

    void look() {
        files.clear();
        strays = 0;
        std::error_code ignored;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(native(""))) {
            const std::string name = entry.path().filename();
            const bool isTemporary = name.starts_with(kTemporary);
            if (name.starts_with('.') && name.ends_with(".tmp")) {
                ++strays;
            } else if (entry.is_regular_file(ignored) && !name.ends_with(".lock")) {
                // The system makes a temporary one before there is anything to write.
                if (isTemporary && entry.file_size() == 0) continue;
                files[isTemporary ? kTemporary : name] =
                    folder.bytes(fromUtf8(entry.path().native()));
            }
        }
    }

    fs::path native(const std::string& name) const { return folder.native(fromUtf8(name)); }

    // Performs the operation under the fault; false when that struck nothing.
    bool strike(const Fault& fault) {
        reset();
        const auto work = [&] {
            const Faults faults(fault);
            return perform();
        };
        const bool kills = fault.kind == Kind::kill;
        reports = kills ? Child(work).wait() : work();
        call = !kills ? Faults::struck : reports == -SIGKILL ? "a kill" : "";
        where_.emplace(__FILE__, __LINE__,
                       operation.target() + ", errno " + std::to_string(fault.code) + " at call " +
                           std::to_string(fault.at) + (fault.lasts ? " and on: " : ": ") + call);
        look();
        expectWhole();
        if (call.empty()) {
            EXPECT_EQ(reports, 0);
            EXPECT_TRUE(isDone());
            return false;
        }
        ++strikes;
        return true;
    }

    bool isDone() const {
        return std::ranges::all_of(operation.targets, [&](const std::string& target) {
            return bytesOf(files, target) == bytesOf(good, target);
        });
    }

    // Writes with nothing in its way over what stands there.
    void expectGoodRun() {
        fs::remove_all(native(kPrivate));
        look();
        const FileBytes before = files;
        const bool wasDone = isDone();
        EXPECT_EQ(perform(), 0);
        EXPECT_TRUE(isDone());
        // What has nothing new to write leaves the backup alone.
        if (!operation.keepsBackup() || (wasDone && files == before)) return;
        EXPECT_EQ(files[operation.backup()], bytesOf(before, operation.target()));
    }

    // A program of its own has something to write again, and removes what the one before
    // has left.
    void expectGoodNextStart() {
        for (const std::string& target : operation.targets) {
            const auto old = operation.before.find(target);
            fs::remove(native(target));
            if (old != operation.before.end()) folder.put(fromUtf8(target), old->second);
        }
        host.emplace();
        expectGoodRun();
        EXPECT_EQ(strays, 0U);
    }

    // True when the error was told, once, and left all as it was. Where a step failed that is
    // not needed all is done, and nothing told.
    bool expectToldOrDone() {
        const std::string backup = bytesOf(files, operation.backup());
        const bool done = isDone() && backup == bytesOf(good, operation.backup());
        EXPECT_EQ(reports, done ? 0 : 1);
        EXPECT_TRUE(done || backup == bytesOf(operation.before, operation.backup()));
        // What cannot be removed stays until the program has ended.
        const bool stuck = call == "unlink";
        EXPECT_LE(strays, stuck ? operation.targets.size() : 0U);
        expectGoodRun();
        if (stuck) expectGoodNextStart();
        return !done;
    }

    int reports = 0;   // negative where it was killed
    std::string call;  // that was struck
    static inline int strikes = 0;

    const Operation& operation;
    TempFolder folder;
    std::optional<RecordingHost> host;
    FileBytes good;
    // What was seen. The writer's temporary siblings are only counted, locks stand for
    // nothing, and what is no ordinary file is left out.
    FileBytes files;
    std::size_t strays = 0;

  private:
    // Each file is the old one or the new one; the old one is in its backup before it is
    // replaced. A history does without its backup where that was told.
    void expectWhole() const {
        FileBytes old = files;
        for (const auto& [name, bytes] : good) {
            if (bytesOf(files, name) != bytes) continue;
            old.erase(name);
            if (operation.before.contains(name)) old[name] = operation.before.at(name);
        }
        EXPECT_TRUE(old == operation.before);
        if (!operation.keepsBackup() || !isDone()) return;
        if (reports == 1 && operation.target().ends_with(".his")) return;
        EXPECT_EQ(bytesOf(files, operation.backup()), operation.before.at(operation.target()));
    }

    std::optional<testing::ScopedTrace> where_;
};

class Writes : public testing::Test {
  protected:
    Writes() { Trial::strikes = 0; }
    ~Writes() override { std::printf("%d calls struck\n", Trial::strikes); }
};

TEST_F(Writes, AKillLeavesTheOldFileOrTheNewOne) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        const std::size_t files = operation.targets.size() + (operation.keepsBackup() ? 2 : 0);
        for (Fault fault{Kind::kill}; trial.strike(fault); ++fault.at) {
            EXPECT_LE(trial.strays, files) << "one a file that is written, and the backup before";
            trial.expectGoodNextStart();
        }
    }
}

TEST_F(Writes, AnErrorLeavesTheOldFileAndIsReportedOnce) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        for (const int code : {ENOSPC, EIO, EDQUOT, EROFS, EACCES, EMFILE}) {
            int failures = 0;
            for (Fault fault{Kind::error, code}; trial.strike(fault); ++fault.at) {
                failures += trial.expectToldOrDone() ? 1 : 0;
            }
            EXPECT_GE(failures, 3) << "opening, writing and renaming";
        }
        // A full disk, a read-only one, one without links and so on.
        for (const char* call :
             {"chmod", "close", "fchmod", "fchown", "flock", "fsync", "link", "lstat", "mkdir",
              "mkostemp", "open", "rename", "syncfs", "unlink", "write"}) {
            if (trial.strike({Kind::error, ENOSPC, call, 1, true})) trial.expectToldOrDone();
        }
    }
}

TEST_F(Writes, ShortWritesAndSignalsAreGoneOnWith) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        for (Fault fault : {Fault{Kind::shortWrite}, Fault{Kind::error, EINTR}}) {
            for (; trial.strike(fault); ++fault.at) {
                EXPECT_EQ(trial.reports, 0);
                EXPECT_TRUE(trial.isDone());
                EXPECT_EQ(trial.strays, 0U);
                trial.expectGoodRun();
            }
            EXPECT_GT(fault.at, 1U) << "nothing was struck";
        }
    }
}

constexpr const char* kNoFile = "it is not an ordinary file";

const struct Oddity {
    std::string reason;  // why it is refused
    bool isLink;
    int (*make)(const char* path);
} kOddities[] = {
    {"Is a directory", false, [](const char* path) { return ::mkdir(path, 0700); }},
    {kNoFile, false, [](const char* path) { return ::mkfifo(path, 0600); }},
    {kNoFile, false, [](const char* path) { return ::mknod(path, S_IFSOCK, 0); }},
    {kNoFile, true, [](const char* path) { return ::symlink("/dev/zero", path); }},
    {"Too many levels of symbolic links", true,
     [](const char* path) { return ::symlink(path, path); }},
};

class Oddities : public testing::Test {
  protected:
    // Puts the oddity in the place of `name` and performs the operation, which must not wait,
    // and leaves all as it is but for `written`.
    void expect(bool refused, Trial& trial, const std::string& name, const Oddity& oddity,
                const Names& written) {
        const fs::path path = trial.native(name);
        const testing::ScopedTrace where(__FILE__, __LINE__, name + ": " + oddity.reason);
        trial.reset();
        fs::remove(path);
        ASSERT_EQ(oddity.make(path.c_str()), 0);
        const fs::file_type type = fs::symlink_status(path).type();
        trial.look();
        FileBytes before = trial.files;
        EXPECT_EQ(trial.perform(), refused ? 1 : 0);
        const std::string report =
            "ask: Error (75): Cannot write '" + path.native() + "': " + oddity.reason + " in ";
        EXPECT_EQ(trial.host->logged(report).size(), refused ? 1U : 0U);
        EXPECT_EQ(fs::symlink_status(path).type(), type);
        EXPECT_EQ(trial.strays, 0U);
        for (const std::string& file : written) {
            EXPECT_NE(trial.files[file], before[file]) << file;
            before[file] = trial.files[file];
        }
        EXPECT_TRUE(trial.files == before);
        ++runs;
    }

    ~Oddities() override { std::printf("%d runs\n", runs); }

    int runs = 0;
};

TEST_F(Oddities, AreRefusedAsTargetsAndBackups) {
    for (const Operation& operation : kOperations) {
        if (operation.target() == kTemporary) continue;
        Trial trial(operation);
        const Names others(operation.targets.begin() + 1, operation.targets.end());
        for (const Oddity& oddity : kOddities) {
            expect(true, trial, operation.target(), oddity, others);
            // A link is no file to keep the old one in; it is replaced by it.
            if (!operation.keepsBackup() || oddity.isLink) continue;
            // A history does without its backup.
            const bool writes = operation.target().ends_with(".his");
            expect(true, trial, operation.backup(), oddity, writes ? operation.targets : others);
        }
    }
}

TEST_F(Oddities, AreLeftOutAsSources) {
    for (const Operation& operation : kOperations) {
        if (!operation.before.contains("a.gas")) continue;
        Trial trial(operation);
        Names written = operation.targets;
        if (operation.keepsBackup()) written.push_back(operation.backup());
        std::erase(written, "a.tab");
        for (const Oddity& oddity : kOddities) expect(false, trial, "a.gas", oddity, written);
    }
}

TEST_F(Oddities, LinksStayAndWhoHasAFileOpenKeepsItsContent) {
    for (const Operation& operation : kOperations) {
        const std::string& target = operation.target();
        if (target == kTemporary) continue;
        const testing::ScopedTrace where(__FILE__, __LINE__, operation.target());
        Trial trial(operation);
        const fs::path path = trial.native(target);
        const fs::path near = trial.native("near");
        const fs::path behind = trial.native("behind");
        const bool there = operation.before.contains(target);
        for (const bool dangling : {false, true}) {
            trial.reset();
            if (there) fs::rename(path, behind);
            if (there && dangling) fs::remove(behind);
            std::ifstream reader(behind, std::ios::binary);
            fs::create_symlink("behind", near);
            fs::create_symlink(near, path);
            EXPECT_EQ(trial.perform(), 0);
            EXPECT_EQ(fs::read_symlink(path), near);
            EXPECT_EQ(fs::read_symlink(near), "behind");
            // Where there was no old content the new one is another.
            const std::string made = trial.folder.bytes(L"behind");
            EXPECT_TRUE(made == trial.good[target] || (dangling && there && made != "(missing)"));
            const std::string read{std::istreambuf_iterator<char>(reader), {}};
            EXPECT_EQ(read, there && !dangling ? operation.before.at(target) : "");
            ++runs;
        }
    }
}

}  // namespace
}  // namespace kestrel::test
