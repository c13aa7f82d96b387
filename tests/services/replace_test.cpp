#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/faults.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using test::Faults;
using Lines = std::vector<std::string>;

const std::string kOld(5000, 'o');
const std::string kOlder(6000, 'b');
const std::wstring kNew(7000, L'n');
const std::string kNewBytes(7000, 'n');

class Replace : public testing::Test {
  protected:
    Replace() { gProgram().folder = folder.path(); }

    void reset() {
        // Removed first: the two may be names of one file by now.
        std::filesystem::remove(folder.native(L"f"));
        std::filesystem::remove(folder.native(L"f.bak"));
        folder.put(L"f", kOld);
        folder.put(L"f.bak", kOlder);
        host.log.clear();
    }
    bool write(bool backup) {
        const std::wstring path = folder.path(L"f");
        return writeFile(path, kNew, backup ? backupPath(path) : std::wstring());
    }
    std::size_t strays() const { return folder.names().size() - 2; }

    mode_t mode(std::wstring_view name) const {
        struct stat status {};
        EXPECT_EQ(::stat(folder.native(name).c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(Replace, TheContentIsOnTheDiskBeforeTheRenameAndTheRenameAfterIt) {
    reset();
    const Faults faults(Faults::Kind::none, 0);
    ASSERT_TRUE(write(false));
    const std::string calls = Faults::calls();
    EXPECT_NE(calls.find("fsync rename open fsync close"), std::string::npos) << calls;
}

TEST_F(Replace, AReadThatFailsIsReportedAndEmpty) {
    reset();
    const Faults faults(Faults::Kind::error, 2, EIO);
    EXPECT_EQ(gstrReadFile(folder.path(L"f")), L"");
    EXPECT_EQ(host.log, Lines{"ask: Error (57): Cannot read '" + toUtf8(folder.path(L"f")) +
                              "': Input/output error in 'gstrReadFile' | Kestrel | exclamation | "
                              "ok"});
}

TEST_F(Replace, AFolderWithoutLinksGetsACopyAsBackup) {
    for (std::size_t at = 1; at < 30; ++at) {
        reset();
        ASSERT_EQ(::chmod(folder.native(L"f").c_str(), 0640), 0);
        const Faults faults(Faults::Kind::error, at, EPERM);
        const bool written = write(true);
        if (std::string_view(Faults::struck()) != "link") continue;
        EXPECT_TRUE(written);
        EXPECT_EQ(folder.bytes(L"f"), kNewBytes);
        EXPECT_EQ(folder.bytes(L"f.bak"), kOld);
        EXPECT_EQ(mode(L"f.bak"), 0640U);
        EXPECT_EQ(strays(), 0U);
        return;
    }
    FAIL() << "no link was tried";
}

TEST_F(Replace, BehindLinks) {
    folder.put(L"file", kOld);
    std::filesystem::create_symlink("file", folder.native(L"near"));
    std::filesystem::create_symlink(folder.native(L"near"), folder.native(L"far"));
    std::filesystem::create_symlink("made", folder.native(L"dangling"));
    EXPECT_TRUE(writeFile(folder.path(L"far"), kNew));
    EXPECT_TRUE(writeFile(folder.path(L"dangling"), kNew));
    EXPECT_EQ(folder.bytes(L"file"), kNewBytes);
    EXPECT_EQ(folder.bytes(L"made"), kNewBytes);
    for (const wchar_t* link : {L"near", L"far", L"dangling"}) {
        EXPECT_TRUE(std::filesystem::is_symlink(folder.native(link)));
    }
    EXPECT_EQ(folder.names().size(), 5U);
}

TEST_F(Replace, ModeAndOwnerStay) {
    reset();
    const bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(folder.native(L"f").c_str(), 1234, 2345), 0);
    }
    for (mode_t wanted : {0600U, 0644U, 0444U, 0777U, 0666U}) {
        ASSERT_EQ(::chmod(folder.native(L"f").c_str(), wanted), 0);
        ASSERT_TRUE(write(true));
        EXPECT_EQ(mode(L"f"), wanted);
        EXPECT_EQ(mode(L"f.bak"), wanted);
    }
    struct stat status {};
    ASSERT_EQ(::stat(folder.native(L"f").c_str(), &status), 0);
    if (root) {
        EXPECT_EQ(status.st_uid + status.st_gid, 1234U + 2345U);
    }
}

TEST_F(Replace, ALostOwnerOrGroupGetsNoMoreRights) {
    const struct {
        Faults::Kind kind;
        mode_t mode;
    } cases[] = {{Faults::Kind::error, 0675U},    // the group could be kept
                 {Faults::Kind::errors, 0655U}};  // it could not: as all others
    for (const auto& c : cases) {
        bool struck = false;
        for (std::size_t at = 1; at < 30 && !struck; ++at) {
            reset();
            ASSERT_EQ(::chmod(folder.native(L"f").c_str(), 04675), 0);
            const Faults faults(c.kind, at, EPERM);
            const bool written = write(false);
            struck = std::string_view(Faults::struck()) == "fchown";
            if (!struck) continue;
            EXPECT_TRUE(written);
            EXPECT_EQ(mode(L"f"), c.mode);
        }
        EXPECT_TRUE(struck);
    }
}

TEST_F(Replace, ANewFileGetsWhatTheUserMaskLeaves) {
    const mode_t before = ::umask(027);
    EXPECT_TRUE(writeFile(folder.path(L"new"), kNew));
    ::umask(before);
    EXPECT_EQ(mode(L"new"), 0640U);
}

TEST_F(Replace, ExtendedAttributesAndAccessListsStay) {
    reset();
    const std::filesystem::path file = folder.native(L"f");
    // An access list in the kernel's own form: owner rw, user 1234 r, group r,
    // mask r, others none.
    const std::string list(
        "\2\0\0\0"
        "\1\0\6\0\xFF\xFF\xFF\xFF\2\0\4\0\xD2\4\0\0"
        "\4\0\4\0\xFF\xFF\xFF\xFF\x10\0\4\0\xFF\xFF\xFF\xFF"
        "\x20\0\0\0\xFF\xFF\xFF\xFF",
        44);
    const std::pair<const char*, std::string> attributes[] = {{"user.note", "value"},
                                                              {"system.posix_acl_access", list}};
    std::size_t tried = 0;
    for (const auto& [name, value] : attributes) {
        if (::setxattr(file.c_str(), name, value.data(), value.size(), 0) != 0) continue;
        ++tried;
        ASSERT_TRUE(write(false));
        char found[64];
        const ssize_t length = ::getxattr(file.c_str(), name, found, sizeof found);
        ASSERT_GE(length, 0) << name;
        EXPECT_EQ(std::string(found, static_cast<std::size_t>(length)), value) << name;
    }
    if (tried == 0) GTEST_SKIP() << "the file system has no extended attributes";
}

TEST_F(Replace, TemporaryFilesOfLiveOwnersAndStrangersStay) {
    reset();
    const std::wstring ours = L".f.1-0123456789abcdef.tmp";
    const Lines strangers = {".f.12-0123.tmp", ".f.x.12-0123456789abcdef.tmp",
                             ".f.-5-0123456789abcdef.tmp", ".f.1-0123456789ABCDEF.tmp"};
    for (const std::string& name : strangers) folder.put(fromUtf8(name), "");
    for (const bool lives : {true, false}) {
        folder.put(ours, "");
        const int owner = ::open(folder.native(ours).c_str(), O_RDONLY);
        ASSERT_EQ(::flock(owner, lives ? LOCK_SH | LOCK_NB : LOCK_UN), 0);
        ASSERT_TRUE(write(false));
        EXPECT_EQ(strays(), strangers.size() + (lives ? 1 : 0));
        ::close(owner);
    }
}

// An owner that is taken for dead between making its file and locking it makes another.
TEST_F(Replace, ManyProgramsOverOneFileAreNeverRefused) {
    reset();
    constexpr int kPrograms = 4;
    constexpr int kWrites = 150;
    pid_t programs[kPrograms];
    for (pid_t& program : programs) {
        program = ::fork();
        if (program != 0) continue;
        int refused = 0;
        for (int i = 0; i < kWrites; ++i) refused += write(true) ? 0 : 1;
        ::_exit(refused == 0 && host.log.empty() ? 0 : 1);
    }
    for (const pid_t program : programs) {
        int status = -1;
        ASSERT_EQ(::waitpid(program, &status, 0), program);
        EXPECT_EQ(status, 0) << "a write was refused";
    }
    EXPECT_EQ(strays(), 0U);
}

TEST_F(Replace, ABatchPutsItsFilesInPlaceTogether) {
    reset();
    folder.put(L".a.b.tab.2147483646-0123456789abcdef.tmp", "");
    std::filesystem::create_directory(folder.native(L"taken"));
    filesystem::Batch batch;
    batch.add(folder.path(L"f"), kNewBytes);
    EXPECT_EQ(folder.bytes(L".a.b.tab.2147483646-0123456789abcdef.tmp"), "(missing)");
    for (const wchar_t* name : {L"g", L"h"}) batch.add(folder.path(name), kNewBytes);
    EXPECT_THROW(batch.add(folder.path(L"taken"), kNewBytes), RunTimeError);
    EXPECT_EQ(folder.bytes(L"f"), kOld) << "not yet";
    for (const wchar_t* name : {L"g", L"h"}) {
        std::filesystem::create_directory(folder.native(name));
    }
    const auto failures = batch.commit();
    ASSERT_EQ(failures.size(), 2U) << "folders stand in the way by now";
    EXPECT_EQ(failures[1].path, folder.path(L"h"));
    EXPECT_EQ(folder.bytes(L"f"), kNewBytes);
    EXPECT_EQ(strays(), 3U) << "the three folders alone";
}

TEST_F(Replace, ABatchWaitsForEachFileSystemAndFolder) {
    char memory[] = "/dev/shm/kestrel-XXXXXX";
    if (::mkdtemp(memory) == nullptr) GTEST_SKIP() << "there is no second file system";
    const std::filesystem::path other(memory);
    std::filesystem::create_directory(folder.native(L"sub"));
    std::filesystem::create_symlink(other / "h", folder.native(L"h"));
    for (const bool fails : {false, true}) {
        filesystem::Batch batch;
        for (const wchar_t* name : {L"f", L"sub/g", L"h"}) batch.add(folder.path(name), kNewBytes);
        const Faults faults(fails ? Faults::Kind::errors : Faults::Kind::none, 1, EIO);
        EXPECT_EQ(batch.commit().size(), 0U);
        const std::string calls = Faults::calls();
        EXPECT_TRUE(calls.starts_with(fails
                                          ? "syncfs syncfs fsync rename fsync rename fsync rename "
                                          : "syncfs syncfs rename rename rename "))
            << calls;
        EXPECT_NE(calls.find("open fsync close open fsync close open fsync close"), calls.npos);
    }
    std::filesystem::remove_all(other);
}

TEST_F(Replace, TheLongestNameCanBeWritten) {
    const std::wstring name(255, L'x');
    EXPECT_TRUE(writeFile(folder.path(name), kNew));
    EXPECT_EQ(folder.names(), Lines{std::string(255, 'x')});
}

}  // namespace
}  // namespace kestrel
