#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>

#include "faults/folder.h"
#include "services/bytes.h"

// Each of the program's writes on disks and over files that really are as bad as the
// faults tell.
namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

constexpr int kNoDisk = 77;

// A disk of its own over `folder`, for this process alone.
bool mountDisk(const TempFolder& folder, const std::string& options) {
    ::umount2(folder.native().c_str(), MNT_DETACH);
    return ::mount("none", folder.native().c_str(), "tmpfs", 0, options.c_str()) == 0;
}

// Enters a name space in which this process may mount.
bool mayMount() {
    const uid_t user = ::geteuid();
    const int spaces = CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER);
    if (::unshare(spaces) != 0) return false;
    if (user != 0) std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

class Disk : public testing::Test {
  protected:
    // Runs `work` in a process of its own that may mount disks; skips the test where
    // the system allows none.
    void apart(const std::function<void()>& work) const {
        const pid_t child = ::fork();
        if (child == 0) {
            if (!mayMount() || !mountDisk(folder, "size=256k")) ::_exit(kNoDisk);
            work();
            ::umount2(folder.native().c_str(), MNT_DETACH);
            std::fflush(nullptr);
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        if (WEXITSTATUS(status) == kNoDisk) {
            GTEST_SKIP() << "the system lets this user mount no disk of his own";
        }
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }

    // The number of reports that the operation brings.
    std::size_t run(const Operation& operation) const {
        RecordingHost host;
        gProgram().folder = folder.path();
        operation.run(host, folder.path());
        ::unsetenv("XDG_CACHE_HOME");
        return reports(host);
    }

    // What the operation makes of its files when nothing is in its way.
    FileBytes learn(const Operation& operation) const {
        fill(folder, operation.before);
        EXPECT_EQ(run(operation), 0U);
        FileBytes good = shotOf(folder).files;
        fill(folder, operation.before);
        return good;
    }

    static std::size_t missing(const Operation& operation, const FileBytes& good,
                               const Shot& found) {
        return static_cast<std::size_t>(
            std::ranges::count_if(operation.targets, [&](const std::string& target) {
                const auto at = found.files.find(target);
                return at == found.files.end() || at->second != good.at(target);
            }));
    }

    // Runs it on what is too little of a disk, then on enough. True when it was
    // enough at once.
    bool runAndRecover(const Operation& operation, const FileBytes& good,
                       const std::function<void()>& makeRoom) const {
        const std::size_t told = run(operation);
        Shot found = shotOf(folder);
        found.files.erase("filler");
        EXPECT_EQ(fault(operation, good, found), "");
        EXPECT_EQ(told, std::min(missing(operation, good, found), std::size_t{1}));
        EXPECT_EQ(found.strays, 0U);
        if (told == 0) return true;
        makeRoom();
        fs::remove_all(folder.native(fromUtf8(kPrivate)));
        EXPECT_EQ(run(operation), 0U);
        EXPECT_TRUE(isDone(operation, good, shotOf(folder)));
        return false;
    }

    TempFolder folder;
};

TEST_F(Disk, AFullOneLeavesTheOldFiles) {
    apart([this] {
        int refused = 0;
        for (const Operation& operation : operations()) {
            const testing::ScopedTrace where(__FILE__, __LINE__, operation.name);
            const FileBytes good = learn(operation);
            const fs::path filler = folder.native(L"filler");
            bool enough = false;
            for (int pages = 0; !enough && pages < 40; ++pages) {
                fill(folder, operation.before);
                // std::ofstream takes what there is.
                folder.put(L"filler", std::string(400'000, 'f'));
                const auto filled = static_cast<std::intmax_t>(fs::file_size(filler)) / 4096;
                ASSERT_GT(filled, pages);
                fs::resize_file(filler, static_cast<std::uintmax_t>(filled - pages) * 4096);
                enough = runAndRecover(operation, good, [&] { fs::remove(filler); });
                refused += enough ? 0 : 1;
            }
            EXPECT_TRUE(enough);
        }
        EXPECT_GE(refused, static_cast<int>(operations().size()));
        std::printf("a full disk refused %d writes\n", refused);
    });
}

TEST_F(Disk, AReadOnlyOneIsReportedOnce) {
    apart([this] {
        std::size_t refused = 0;
        for (const Operation& operation : operations()) {
            const testing::ScopedTrace where(__FILE__, __LINE__, operation.name);
            const FileBytes good = learn(operation);
            const auto remount = [this](unsigned long flags) {
                return ::mount("none", folder.native().c_str(), nullptr, MS_REMOUNT | flags,
                               nullptr) == 0;
            };
            ASSERT_TRUE(remount(MS_RDONLY));
            EXPECT_FALSE(runAndRecover(operation, good, [&] { EXPECT_TRUE(remount(0)); }));
            refused += operation.targets.size();
        }
        std::printf("a read-only disk refused %zu writes\n", refused);
    });
}

// Something that is no ordinary file.
struct Oddity {
    const char* name;
    void (*make)(const fs::path& path);
};

void makeSocket(const fs::path& path) {
    const int made = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.native().copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(made);
}

const Oddity kOddities[] = {
    {"a folder", [](const fs::path& path) { fs::create_directory(path); }},
    {"a pipe", [](const fs::path& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
    {"a socket", makeSocket},
    {"a device", [](const fs::path& path) { fs::create_symlink("/dev/zero", path); }},
    {"a loop", [](const fs::path& path) { fs::create_symlink(path.filename(), path); }},
};

// Puts the oddity in the place of `name` and runs the operation, which must not wait.
// Returns its reports; the oddity is still there.
class Oddities : public Disk {
  protected:
    std::size_t runOver(const Operation& operation, const std::string& name, const Oddity& oddity) {
        const fs::path path = folder.native(fromUtf8(name));
        fill(folder, operation.before);
        fs::remove(path);
        oddity.make(path);
        const fs::file_type type = fs::symlink_status(path).type();
        const auto start = std::chrono::steady_clock::now();
        const std::size_t told = run(operation);
        longest = std::max(longest, std::chrono::steady_clock::now() - start);
        ++runs;
        EXPECT_EQ(fs::symlink_status(path).type(), type);
        EXPECT_EQ(strays(), 0);
        fs::remove_all(path);
        return told;
    }

    // Without reading what may be a pipe.
    long strays() const {
        const std::vector<std::string> names = folder.names();
        return std::ranges::count_if(names, [](const std::string& name) {
            return name.starts_with('.') && name.ends_with(".tmp");
        });
    }

    void tell() const {
        EXPECT_GT(runs, 0);
        EXPECT_LT(longest, std::chrono::seconds(5)) << "it waited for something";
        std::printf("%d runs, the longest of %.1f ms\n", runs,
                    std::chrono::duration<double, std::milli>(longest).count());
    }

    int runs = 0;
    std::chrono::steady_clock::duration longest{};
};

TEST_F(Oddities, AreRefusedAsTargetsAndBackups) {
    for (const Operation& operation : operations()) {
        const std::string target = operation.targets.front();
        if (target == kTemporary) continue;
        for (const Oddity& oddity : kOddities) {
            const testing::ScopedTrace where(__FILE__, __LINE__,
                                             operation.name + " over " + oddity.name);
            EXPECT_EQ(runOver(operation, target, oddity), 1U);
            // A link is no file to keep the old one in; it is replaced by it.
            const bool isLink = std::string_view(oddity.name) == "a device" ||
                                std::string_view(oddity.name) == "a loop";
            if (!operation.before.contains(backupOf(target)) || isLink) continue;
            EXPECT_EQ(runOver(operation, backupOf(target), oddity), 1U);
            // A history does without its backup.
            EXPECT_EQ(folder.bytes(fromUtf8(target)) == operation.before.at(target),
                      !target.ends_with(".his"));
        }
    }
    tell();
}

TEST_F(Oddities, AreLeftOutAsSources) {
    for (const Operation& operation : operations()) {
        if (!operation.before.contains("a.gas")) continue;
        for (const Oddity& oddity : kOddities) {
            const testing::ScopedTrace where(__FILE__, __LINE__,
                                             operation.name + " of " + oddity.name);
            EXPECT_EQ(runOver(operation, "a.gas", oddity), 0U);
        }
    }
    tell();
}

TEST_F(Disk, LinksStayAndWhoHasAFileOpenKeepsItsContent) {
    int runs = 0;
    for (const Operation& operation : operations()) {
        const std::string target = operation.targets.front();
        if (target == kTemporary) continue;
        const testing::ScopedTrace where(__FILE__, __LINE__, operation.name);
        const FileBytes good = learn(operation);
        const fs::path path = folder.native(fromUtf8(target));
        const fs::path behind = folder.native(L"behind");
        for (const bool dangling : {false, true}) {
            fill(folder, operation.before);
            const bool there = operation.before.contains(target);
            if (there) fs::rename(path, behind);
            if (there && dangling) fs::remove(behind);
            std::ifstream reader(behind, std::ios::binary);
            fs::create_symlink("behind", path);
            EXPECT_EQ(run(operation), 0U);
            EXPECT_EQ(fs::read_symlink(path), "behind");
            // Where there was no old content the new one is another.
            const std::string made = folder.bytes(L"behind");
            EXPECT_TRUE(made == good.at(target) || (dangling && there && made != "(missing)"));
            if (there) {
                const std::string read{std::istreambuf_iterator<char>(reader), {}};
                EXPECT_EQ(read, dangling ? "" : operation.before.at(target));
            }
            ++runs;
        }
    }
    std::printf("%d runs over links\n", runs);
}

}  // namespace
}  // namespace kestrel::test
