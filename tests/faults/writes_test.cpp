#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>

#include "base/text.h"
#include "faults/faults.h"
#include "services/files.h"
#include "services/histories.h"
#include "services/settings.h"
#include "support/vectortextlist.h"
#include "text/convert.h"
#include "view/saving.h"

// Each of the program's writes, failed or ended at its first call, its second, and so
// on until it is done before that; and over links and what is no ordinary file.
namespace kestrel::test {
namespace {

using Kind = Fault::Kind;

using FileBytes = std::map<std::string, std::string>;

// One of the program's writes, as a user brings it about, but for the windows. A target
// whose ".bak" stands in `before` is kept there.
struct Operation {
    Lines targets;     // those that it replaces or makes
    FileBytes before;  // the folder's files before it
    std::function<void(RecordingHost& host)> run;

    const std::string& target() const { return targets.front(); }
    std::string backup() const { return target() + ".bak"; }
    bool keepsBackup() const { return before.contains(backup()); }
    bool isHistory() const { return target().ends_with(".his"); }
};

const std::string kOld(5000, 'o');
const std::string kLines = "/old/" + std::string(4000, 'o') + "\r\n/older\r\n";
const std::string kLongest(255, 'x');

void saveSettings(RecordingHost&) {
    gProgram().settings = {};
    gReadSettings();
    gProgram().settings.skritpad = std::wstring(7000, L's');
    gWriteSettings();
}

void saveHistory(RecordingHost&) {
    VectorTextList list;
    gLoadHistory(list, L"info.his");
    gAddHistoryItem(list, L"/new/" + std::wstring(7000, L'n'));
    gSaveHistory(list, L"info.his");
}

void saveFileList(RecordingHost&) {
    std::vector<std::wstring> files = loadFileHistory(programFile(L"spec.his"));
    if (files.empty() || files.back() != L"/new") files.push_back(L"/new");
    mSaveFileHistory(files, L"spec.his");
}

template <std::int16_t Options>
void convert(RecordingHost&) {
    std::wstring folder = gProgram().folder;
    std::wstring summary;
    Progress* progress = nullptr;
    gblnConvertFolder(folder, summary, L"", Options, L"Title: \r\n", nullptr, progress);
    if (Options == kSingleFile) return;
    // The first two lines count the files that were processed, and those that were converted.
    const auto lines = split(summary, kLineEnd);
    const bool all = lines.at(0).substr(17) == lines.at(1).substr(17);
    EXPECT_EQ(all, summary.find(L"Not converted:") == summary.npos) << shown(summary);
}

auto savingAs(const std::string& name) {
    return [name](RecordingHost& host) {
        host.files = {programFile(fromUtf8(name))};
        // More than a page, so that half of it is no whole number of them.
        ViewedText text{[] { return std::wstring(7001, L'n'); }, true, true};
        saveViewedText(text, {});
    };
}

FileBytes withBackup(const std::string& name, const std::string& old) {
    return {{name, old}, {name + ".bak", std::string(6000, 'b')}};
}

FileBytes sourcesWith(FileBytes others) {
    for (const std::string name : {"a", "b", "c"}) {
        others[name + ".gas"] =
            "[t:template,n:" + name + "]\r\ndoc = \"" + std::string(3000, 'd') + "\";\r\n";
    }
    return others;
}

const Operation kOperations[] = {
    {{"info.his"}, {}, saveHistory},
    {{"info.his"}, withBackup("info.his", kLines), saveHistory},
    {{"spec.his"}, withBackup("spec.his", kLines), saveFileList},
    {{"settings.set"}, {}, saveSettings},
    {{"settings.set"}, withBackup("settings.set", "of nobody\r\norvane=o\r\n"), saveSettings},
    {{"a.tab", "b.tab", "c.tab"}, sourcesWith({{"a.tab", kOld}, {"b.tab", "b"}}), convert<0>},
    {{"Converted.tab"}, sourcesWith(withBackup("Converted.tab", kOld)), convert<kSingleFile>},
    {{kLongest}, {}, savingAs(kLongest)},
    {{"old.txt"}, {{"old.txt", kOld}}, savingAs("old.txt")},
    {{"open.gas"}, {{"open.gas", kOld}}, savingAs("open.gas")},
    {{"open.gas"}, withBackup("open.gas", kOld), savingAs("open.gas")},
};

std::string bytesOf(const FileBytes& files, const std::string& name) {
    const auto at = files.find(name);
    return at == files.end() ? "(missing)" : at->second;
}

// A folder in which a program tries an operation.
struct Trial {
    // Learns what the operation makes of its files when nothing is in its way.
    explicit Trial(const Operation& tried) : operation(tried) {
        restart({});
        EXPECT_EQ(perform(), 0);
        good = files;
        EXPECT_NE(good[operation.target()], bytesOf(operation.before, operation.target()));
    }

    // A new program over the files of before, without those that are told.
    void restart(const Lines& removed) {
        for (const std::string& name : removed) fs::remove_all(native(name));
        for (const auto& [name, bytes] : operation.before) folder.put(fromUtf8(name), bytes);
        host.emplace();
        gProgram().folder = folder.path();
    }

    // Performs the operation and looks at the folder. Returns the number of error reports.
    int perform() {
        host->log.clear();
        // Each is the first of its run: a later one leaves the backup alone.
        gProgram().kept.clear();
        operation.run(*host);
        look();
        return static_cast<int>(host->logged("ask: Error").size());
    }

    void look() {
        files.clear();
        strays = 0;
        std::error_code ignored;
        for (const std::string& name : folder.names()) {
            if (name.starts_with('.') && name.ends_with(".tmp")) {
                ++strays;
            } else if (fs::is_regular_file(native(name), ignored) && !name.ends_with(".lock")) {
                files[name] = folder.bytes(fromUtf8(name));
            }
        }
    }

    fs::path native(const std::string& name) const { return folder.native(fromUtf8(name)); }

    // Performs the operation under the fault; false when that struck nothing.
    bool strike(const Fault& fault) {
        restart(folder.names());
        const auto work = [&] {
            under(fault, [this] { reports = perform(); });
            return reports;
        };
        const bool kills = fault.kind == Kind::kill;
        reports = kills ? endOf(startProcess(work)) : work();
        call = !kills ? struckCall : reports == -SIGKILL ? "a kill" : "";
        where.emplace(__FILE__, __LINE__,
                      operation.target() + ", errno " + std::to_string(fault.code) + " at call " +
                          std::to_string(fault.at) + (fault.lasts ? " and on: " : ": ") + call);
        look();
        expectWhole();
        if (!call.empty()) return true;
        EXPECT_EQ(reports, 0);
        EXPECT_TRUE(isDone());
        return false;
    }

    bool isDone() const {
        return std::ranges::all_of(operation.targets, [&](const std::string& target) {
            return bytesOf(files, target) == bytesOf(good, target);
        });
    }

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
        if (reports == 1 && operation.isHistory()) return;
        EXPECT_EQ(bytesOf(files, operation.backup()), operation.before.at(operation.target()));
    }

    // Writes with nothing in its way over what stands there.
    void expectGoodRun() {
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
        restart(operation.targets);
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

    const Operation& operation;
    TempFolder folder;
    std::optional<RecordingHost> host;
    FileBytes good;
    // What was seen. The writer's temporary siblings are only counted, locks stand for
    // nothing, and what is no ordinary file is left out.
    FileBytes files;
    std::size_t strays = 0;
    int reports = 0;   // negative where it was killed
    std::string call;  // that was struck
    std::optional<testing::ScopedTrace> where;
};

TEST(Writes, AKillLeavesTheOldFileOrTheNewOne) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        const std::size_t backups = trial.good.contains(operation.backup()) ? 2 : 0;
        Fault fault{Kind::kill};
        for (; trial.strike(fault); ++fault.at) {
            EXPECT_LE(trial.strays, operation.targets.size() + backups);
            trial.expectGoodNextStart();
        }
        EXPECT_GT(fault.at, 5U) << "hardly anything was struck";
    }
}

TEST(Writes, AnErrorLeavesTheOldFileAndIsReportedOnce) {
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
        for (const char* call : {"close", "fchmod", "fchown", "flock", "fsync", "link", "lstat",
                                 "open", "rename", "syncfs", "unlink", "write"}) {
            if (trial.strike({Kind::error, ENOSPC, call, 1, true})) trial.expectToldOrDone();
        }
    }
}

TEST(Writes, ShortWritesAndSignalsAreGoneOnWith) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        for (Fault fault : {Fault{Kind::shortWrite}, Fault{Kind::error, EINTR}}) {
            for (; trial.strike(fault); ++fault.at) EXPECT_FALSE(trial.expectToldOrDone());
            EXPECT_GT(fault.at, 1U) << "nothing was struck";
        }
    }
}

constexpr const char* kNoFile = "it is not an ordinary file";

const struct Oddity {
    std::string reason;  // why it is refused
    int (*make)(const char* path);
    bool isLink = false;
} kOddities[] = {
    {"Is a directory", [](const char* path) { return ::mkdir(path, 0700); }},
    {kNoFile, [](const char* path) { return ::mkfifo(path, 0600); }},
    {kNoFile, [](const char* path) { return ::mknod(path, S_IFSOCK, 0); }},
    {kNoFile, [](const char* path) { return ::symlink("/dev/zero", path); }, true},
    {"Too many levels of symbolic links", [](const char* path) { return ::symlink(path, path); },
     true},
};

// Puts the oddity in the place of `name` and performs the operation, which must not wait,
// and leaves all as it is but for `written`.
void expectLeft(const Oddity& oddity, Trial& trial, const std::string& name, bool refused,
                const Lines& written) {
    const fs::path path = trial.native(name);
    const testing::ScopedTrace where(__FILE__, __LINE__, name + ": " + oddity.reason);
    trial.restart(trial.folder.names());
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
}

TEST(Oddities, AreRefusedAsTargetsAndBackupsAndLeftOutAsSources) {
    for (const Operation& operation : kOperations) {
        Trial trial(operation);
        const std::string& target = operation.target();
        const Lines others(operation.targets.begin() + 1, operation.targets.end());
        for (const Oddity& oddity : kOddities) {
            expectLeft(oddity, trial, target, true, others);
            const Lines kept{target, operation.backup()};
            if (operation.before.contains("a.gas")) {
                expectLeft(oddity, trial, "a.gas", false, operation.keepsBackup() ? kept : others);
            }
            // A link is no file to keep the old one in; it is replaced by it.
            if (!operation.keepsBackup() || oddity.isLink) continue;
            // A history does without its backup.
            const Lines written = operation.isHistory() ? operation.targets : others;
            expectLeft(oddity, trial, operation.backup(), true, written);
        }
    }
}

TEST(Oddities, LinksStayAndWhoHasAFileOpenKeepsItsContent) {
    for (const Operation& operation : kOperations) {
        const std::string& target = operation.target();
        const testing::ScopedTrace where(__FILE__, __LINE__, target);
        Trial trial(operation);
        const fs::path path = trial.native(target);
        const fs::path near = trial.native("near");
        const fs::path behind = trial.native("behind");
        const bool there = operation.before.contains(target);
        for (const bool dangling : {false, true}) {
            trial.restart(trial.folder.names());
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
        }
    }
}

using Conversions = Services;

// Each file of a batch is open until all of them are put in their place.
TEST_F(Conversions, OfManyFilesKeepsFewOpen) {
    for (int i = 0; i < 300; ++i) folder.put(std::to_wstring(i) + L".gas", "[t:template,n:a]");
    const int process = startProcess([&] {
        const rlimit few{250, 250};
        if (::setrlimit(RLIMIT_NOFILE, &few) != 0) return 2;
        convert<0>(host);
        return static_cast<int>(host.logged("ask: ").size());
    });
    EXPECT_EQ(endOf(process), 0);
    EXPECT_EQ(folder.names().size(), 600U);
}

}  // namespace
}  // namespace kestrel::test
