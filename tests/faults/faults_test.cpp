#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "faults/folder.h"
#include "faults/process.h"
#include "services/bytes.h"

// Each of the program's writes, failed or ended at its first call, its second, and so
// on until it is done before that.
namespace kestrel::test {
namespace {

constexpr int kMostCalls = 200;

struct Fault {
    const char* kind;
    int code = 0;
};

// What a run came to: the folder after it, and what it said.
struct Outcome {
    Shot shot;
    std::size_t reports = 0;
    int calls = 0;
    std::string struck;
    bool killed = false;
};

class Faults : public testing::TestWithParam<Operation> {
  protected:
    Process start(const Fault& fault, int at) const {
        const std::string folderName = toUtf8(folder.path());
        return {{KESTREL_TRIAL, GetParam().name, folderName},
                {std::string("LD_PRELOAD=") + KESTREL_FAULTS, "KESTREL_FAULTS_FOLDER=" + folderName,
                 "KESTREL_FAULTS_AT=" + std::to_string(at),
                 std::string("KESTREL_FAULTS_KIND=") + fault.kind,
                 "KESTREL_FAULTS_CODE=" + std::to_string(fault.code),
                 "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0"}};
    }

    // The first attempt of a trial.
    Outcome firstRun(Process& trial) const {
        const std::string line = trial.line();
        Outcome run;
        run.shot = shotOf(folder);
        if (line.empty()) {
            run.killed = trial.wait() == -SIGKILL;
            EXPECT_TRUE(run.killed) << "the trial ended by itself";
            return run;
        }
        char struck[32] = "";
        EXPECT_GE(std::sscanf(line.c_str(), "%zu %d %31s", &run.reports, &run.calls, struck), 2);
        EXPECT_GT(run.calls, 0) << "the library was not loaded";
        run.struck = struck;
        return run;
    }

    // A good writing has come to `after`, over what stood there as `before`.
    void expectGood(const Shot& before, const Shot& after) const {
        EXPECT_TRUE(isDone(GetParam(), good, after));
        const std::string& target = GetParam().targets.front();
        if (!GetParam().keepsBackup || !before.files.contains(target)) return;
        // What has nothing new to write leaves the backup alone.
        if (isDone(GetParam(), good, before) && after.files == before.files) return;
        EXPECT_EQ(after.files.at(backupOf(target)), before.files.at(target));
    }

    void removeTemporary() const { std::filesystem::remove_all(folder.native(fromUtf8(kPrivate))); }

    // The program that has met the fault writes once more.
    void expectGoodSecondRun(Process& trial, const Shot& before) const {
        removeTemporary();
        trial.goOn();
        EXPECT_EQ(trial.line(), "0") << "reports";
        EXPECT_EQ(trial.wait(), 0);
        expectGood(before, shotOf(folder));
    }

    // So that there is something to write again.
    void undo() const {
        for (const std::string& target : GetParam().targets) {
            const auto old = GetParam().before.find(target);
            std::filesystem::remove(folder.native(fromUtf8(target)));
            if (old != GetParam().before.end()) folder.put(fromUtf8(target), old->second);
        }
    }

    // A program of its own writes, and removes what the one before has left.
    void expectGoodNextStart() const {
        removeTemporary();
        undo();
        const Shot before = shotOf(folder);
        Process trial = start({"none"}, 0);
        const Outcome run = firstRun(trial);
        EXPECT_EQ(run.reports, 0U);
        EXPECT_EQ(run.shot.strays, 0U);
        expectGood(before, run.shot);
    }

    void learn() {
        fill(folder, GetParam().before);
        Process trial = start({"none"}, 0);
        const Outcome run = firstRun(trial);
        EXPECT_EQ(run.reports, 0U);
        good = run.shot.files;
        for (const std::string& target : GetParam().targets) {
            ASSERT_TRUE(good.contains(target)) << target;
            const auto old = GetParam().before.find(target);
            ASSERT_TRUE(old == GetParam().before.end() || old->second != good[target]) << target;
        }
        EXPECT_EQ(fault(GetParam(), good, run.shot), "");
        expectGoodSecondRun(trial, run.shot);
    }

    // Runs the operation with the fault at every call. Returns how often it struck.
    template <class Check>
    int strikeEverywhere(const Fault& kind, const Check& check) {
        int strikes = 0;
        for (int at = 1; at < kMostCalls; ++at) {
            fill(folder, GetParam().before);
            Process trial = start(kind, at);
            const Outcome run = firstRun(trial);
            const testing::ScopedTrace where(__FILE__, __LINE__,
                                             std::string(kind.kind) + " " +
                                                 std::to_string(kind.code) + " at call " +
                                                 std::to_string(at) + " " + run.struck);
            EXPECT_EQ(fault(GetParam(), good, run.shot, run.reports == 1), "");
            check(trial, run);
            if (!run.killed && run.calls < at) return strikes;
            strikes += run.killed || !run.struck.empty() ? 1 : 0;
        }
        ADD_FAILURE() << "the operation does not end";
        return strikes;
    }

    // Histories are written alike: one of them meets all errors.
    static std::vector<int> codes() {
        const std::string& name = GetParam().name;
        if (name.ends_with(".his") && name != "info.his") return {ENOSPC, EIO};
        return {ENOSPC, EIO, EDQUOT, EROFS, EACCES, EMFILE};
    }

    void tell(const char* what, int strikes) const {
        EXPECT_GT(strikes, 0) << "nothing was struck";
        std::printf("%s: %s at %d calls\n", GetParam().name.c_str(), what, strikes);
        RecordProperty(what, strikes);
    }

    TempFolder folder;
    FileBytes good;
};

TEST_P(Faults, AKillLeavesTheOldFileOrTheNewOne) {
    learn();
    const std::size_t files = GetParam().targets.size() + (GetParam().keepsBackup ? 2 : 0);
    const int strikes = strikeEverywhere({"kill"}, [&](Process& trial, const Outcome& run) {
        if (!run.killed) return expectGoodSecondRun(trial, run.shot);
        EXPECT_LE(run.shot.strays, files) << "one a file that is written, and the backup of before";
        expectGoodNextStart();
    });
    tell("killed", strikes);
}

TEST_P(Faults, AnErrorLeavesTheOldFileAndIsReportedOnce) {
    learn();
    int failures = 0;
    int strikes = 0;
    for (const int code : codes()) {
        strikes += strikeEverywhere({"error", code}, [&](Process& trial, const Outcome& run) {
            // A step that is not needed may fail: then all is done, and nothing told.
            const bool done =
                isDone(GetParam(), good, run.shot) && fault(GetParam(), good, run.shot).empty();
            EXPECT_EQ(run.reports, done ? 0U : 1U);
            failures += done ? 0 : 1;
            // What cannot be removed stays until the program has ended.
            const bool stuck = run.struck == "unlink";
            EXPECT_LE(run.shot.strays, stuck ? 1U : 0U);
            expectGoodSecondRun(trial, run.shot);
            if (stuck) expectGoodNextStart();
        });
    }
    EXPECT_GE(failures, static_cast<int>(codes().size()) * 3) << "opening, writing and renaming";
    tell("failed", strikes);
}

TEST_P(Faults, ShortWritesAndSignalsAreGoneOnWith) {
    learn();
    for (const char* kind : {"short", "interrupt"}) {
        const int strikes = strikeEverywhere({kind}, [&](Process& trial, const Outcome& run) {
            EXPECT_EQ(run.reports, 0U);
            EXPECT_TRUE(isDone(GetParam(), good, run.shot));
            EXPECT_EQ(run.shot.strays, 0U);
            expectGoodSecondRun(trial, run.shot);
        });
        tell(kind, strikes);
    }
}

std::string nameOf(const testing::TestParamInfo<Operation>& operation) {
    std::string name = operation.param.name;
    std::ranges::replace(name, '.', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Writes, Faults, testing::ValuesIn(operations()), nameOf);

}  // namespace

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

}  // namespace kestrel::test
