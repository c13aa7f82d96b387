#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "faults/faults.h"
#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"
#include "text/convert.h"

namespace kestrel {
namespace {

using test::Child;
using test::Fault;
using test::Faults;
using Kind = Fault::Kind;
using Lines = std::vector<std::string>;

const std::string kOld(5000, 'o');
const std::string kOlder(6000, 'b');
const std::wstring kNew(7000, L'n');
const std::string kNewBytes(7000, 'n');

class Replace : public testing::Test {
  protected:
    Replace() { reset(); }

    void reset() {
        gProgram().folder = folder.path();
        // Removed first: the two may be names of one file by now.
        for (const wchar_t* name : {L"f", L"f.bak"}) std::filesystem::remove(folder.native(name));
        folder.put(L"f", kOld);
        folder.put(L"f.bak", kOlder);
        host.log.clear();
    }
    bool write(bool backup) const {
        const std::wstring path = folder.path(L"f");
        return writeFile(path, kNew, backup ? backupPath(path) : std::wstring());
    }
    std::size_t strays() const { return folder.names().size() - 2; }

    struct stat status(std::wstring_view name) const {
        struct stat status {};
        EXPECT_EQ(::stat(folder.native(name).c_str(), &status), 0);
        return status;
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(Replace, TheContentIsOnTheDiskBeforeTheRenameAndTheRenameAfterIt) {
    const Faults faults;
    ASSERT_TRUE(write(false));
    EXPECT_NE(Faults::calls.find("fsync rename open fsync close"), std::string::npos)
        << Faults::calls;
}

// A failure is told once and in the system's words, and the old file stays.
TEST_F(Replace, WhatFailsIsTold) {
    const struct {
        const char* call;
        int code;
        std::string report;  // of the one routine that cannot do without the call
    } cases[] = {
        {"write", ENOENT, "(53): Cannot write 'f': No such file or directory in 'gWriteFile'"},
        {"write", EACCES, "(70): Cannot write 'f': Permission denied in 'gWriteFile'"},
        {"write", EPERM, "(70): Cannot write 'f': Operation not permitted in 'gWriteFile'"},
        {"open", EROFS, "(70): Cannot write 'f': Read-only file system in 'gWriteFile'"},
        {"write", ENOSPC, "(61): Cannot write 'f': No space left on device in 'gWriteFile'"},
        {"close", EDQUOT, "(61): Cannot write 'f': Disk quota exceeded in 'gWriteFile'"},
        {"open", EMFILE, "(67): Cannot write 'f': Too many open files in 'gWriteFile'"},
        {"open", ENFILE, "(67): Cannot write 'f': Too many open files in system in 'gWriteFile'"},
        {"fsync", EIO, "(57): Cannot write 'f': Input/output error in 'gWriteFile'"},
        {"lstat", ENOMEM, "(7): Cannot write 'f': Cannot allocate memory in 'gWriteFile'"},
        {"rename", EBUSY, "(75): Cannot write 'f': Device or resource busy in 'gWriteFile'"},
        {"fsync", EINVAL, ""},
        {"fsync", ENOTSUP, ""},
        {"fsync", ENOSYS, ""},
        {"flock", ENOLCK, ""},
        {"read", EIO, "(57): Cannot read 'f': Input/output error in 'gstrReadFile'"},
        {"mkdir", EACCES,
         "(70): Cannot make the folder 'kestrel': Permission denied in 'gstrTempFile'"},
        {"chmod", EPERM,
         "(70): Cannot close to others the folder 'kestrel/texts': Operation not permitted "
         "in 'gstrTempFile'"},
        {"mkostemp", ENOSPC,
         "(61): Cannot make a temporary file in 'kestrel/texts': No space left on device in "
         "'gstrTempFile'"},
    };
    test::setTemporaryFolder(folder.native());
    const std::string here = toUtf8(folder.path()) + "/";
    for (const auto& c : cases) {
        reset();
        {
            const Faults faults({Kind::error, c.code, c.call, 1, true});
            write(false);
            gstrReadFile(folder.path(L"f"));
            gstrTempFile();
        }
        std::string told;
        for (const std::string& line : host.log) told += line;
        if (const std::size_t at = told.find(here); at != told.npos) told.erase(at, here.size());
        EXPECT_EQ(told, c.report.empty()
                            ? ""
                            : "ask: Error " + c.report + " | Kestrel | exclamation | ok");
        EXPECT_EQ(folder.bytes(L"f"), c.report.ends_with("'gWriteFile'") ? kOld : kNewBytes);
        std::filesystem::remove_all(folder.native(L"kestrel"));
        EXPECT_EQ(strays(), 0U);
    }
    test::setTemporaryFolder({});
}

TEST_F(Replace, ModeAndOwnerStay) {
    const struct {
        mode_t before;
        mode_t after;
        Fault fault;
    } cases[] = {
        {0600, 0600, {}},
        {0644, 0644, {}},
        {0444, 0444, {}},
        {0777, 0777, {}},
        {0666, 0666, {}},
        // Without links a copy is the backup.
        {0640, 0640, {Kind::error, EPERM, "link", 1, true}},
        // A lost owner gives nobody his rights, a lost group its members those of all others.
        {04675, 0675, {Kind::error, EPERM, "fchown"}},
        {04675, 0655, {Kind::error, EPERM, "fchown", 1, true}},
    };
    const bool root = ::geteuid() == 0;
    for (const auto& c : cases) {
        reset();
        const std::string name = folder.native(L"f");
        ASSERT_EQ(::chown(name.c_str(), 1234, 2345) == 0, root);
        ASSERT_EQ(::chmod(name.c_str(), c.before), 0);
        const struct stat before = status(L"f");
        {
            const Faults faults(c.fault);
            EXPECT_TRUE(write(true));
            EXPECT_EQ(Faults::struck, c.fault.call);
        }
        const struct stat backup = status(L"f.bak");
        EXPECT_EQ(status(L"f").st_mode & 07777U, c.after);
        EXPECT_EQ(backup.st_mode, before.st_mode);
        EXPECT_EQ(backup.st_uid + backup.st_gid, before.st_uid + before.st_gid);
        if (c.fault.call != "fchown") {
            EXPECT_EQ(status(L"f").st_uid + status(L"f").st_gid, before.st_uid + before.st_gid);
        }
        EXPECT_EQ(folder.bytes(L"f"), kNewBytes);
        EXPECT_EQ(folder.bytes(L"f.bak"), kOld);
        EXPECT_EQ(strays(), 0U);
    }
}

TEST_F(Replace, ANewFileGetsWhatTheUserMaskLeaves) {
    const mode_t before = ::umask(027);
    EXPECT_TRUE(writeFile(folder.path(L"new"), kNew));
    ::umask(before);
    EXPECT_EQ(status(L"new").st_mode & 07777U, 0640U);
}

TEST_F(Replace, ExtendedAttributesAndAccessListsStay) {
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
    const std::wstring ours = L".f.1-0123456789abcdef.tmp";
    const Lines strangers = {".f.12-0123.tmp",
                             ".f.x.12-0123456789abcdef.tmp",
                             ".f.-5-0123456789abcdef.tmp",
                             ".f.1-0123456789ABCDEF.tmp",
                             ".f.12345678901-0123456789abcdef.tmp",
                             ".f.-0123456789abcdef.tmp"};
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
    constexpr int kWrites = 150;
    const auto writeAll = [this] {
        int refused = 0;
        for (int i = 0; i < kWrites; ++i) refused += write(true) ? 0 : 1;
        return refused == 0 && host.log.empty() ? 0 : 1;
    };
    Child programs[] = {Child(writeAll), Child(writeAll), Child(writeAll), Child(writeAll)};
    for (Child& program : programs) EXPECT_EQ(program.wait(), 0) << "a write was refused";
    EXPECT_EQ(strays(), 0U);
}

TEST_F(Replace, ABatchPutsItsFilesInPlaceTogether) {
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
    if (::mkdtemp(memory) == nullptr) GTEST_SKIP() << "there is no memory with files";
    const std::filesystem::path other(memory);
    std::filesystem::create_directory(folder.native(L"sub"));
    std::filesystem::create_symlink(other / "h", folder.native(L"h"));
    for (const bool fails : {false, true}) {
        filesystem::Batch batch;
        for (const wchar_t* name : {L"f", L"sub/g", L"h"}) batch.add(folder.path(name), kNewBytes);
        const Faults faults({fails ? Kind::error : Kind::none, EIO, "syncfs", 1, true});
        EXPECT_EQ(batch.commit().size(), 0U);
        const std::string& calls = Faults::calls;
        EXPECT_TRUE(calls.starts_with(fails
                                          ? "syncfs syncfs fsync rename fsync rename fsync rename "
                                          : "syncfs syncfs rename rename rename "))
            << calls;
        EXPECT_NE(calls.find("open fsync close open fsync close open fsync close"), calls.npos);
    }
    std::filesystem::remove_all(other);
}

// Each file of a batch is open until all of them are put in their place.
TEST(Conversions, OfManyFilesKeepsFewOpen) {
    const test::TempFolder folder;
    for (int i = 0; i < 300; ++i) folder.put(std::to_wstring(i) + L".gas", "[t:template,n:a]");
    Child converts([&] {
        const rlimit few{250, 250};
        if (::setrlimit(RLIMIT_NOFILE, &few) != 0) return 2;
        std::wstring path = folder.path();
        std::wstring summary;
        Progress* progress = nullptr;
        gblnConvertFolder(path, summary, L"", 0, L"", nullptr, progress);
        return summary.find(L"Files converted: 300") == summary.npos ? 1 : 0;
    });
    EXPECT_EQ(converts.wait(), 0);
    EXPECT_EQ(folder.names().size(), 600U);
}

}  // namespace
}  // namespace kestrel
