#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <system_error>

#include "faults/faults.h"
#include "services/files.h"
#include "view/saving.h"

namespace kestrel::test {
namespace {

using Kind = Fault::Kind;

class Replace : public ToldServices {
  protected:
    Replace() { reset(); }

    void reset() {
        // Removed first: the two may be names of one file by now.
        for (const wchar_t* name : {L"f", L"f.bak"}) fs::remove(folder.native(name));
        folder.put(L"f", "old");
        folder.put(L"f.bak", "older");
    }
    bool write(bool backup) const {
        const std::wstring path = folder.path(L"f");
        return writeFile(path, L"new", backup ? backupPath(path) : std::wstring());
    }
    std::size_t strays() const { return folder.names().size() - 2; }

    struct stat status(std::wstring_view name) const {
        struct stat status {};
        EXPECT_EQ(::stat(folder.native(name).c_str(), &status), 0);
        return status;
    }
};

// Golden is what the user is told, once and in the system's words, and what becomes of the file.
TEST_F(Replace, WhatFailsIsTold) {
    const std::pair<std::string, std::vector<int>> cases[] = {
        {"write", {ENOENT, EACCES, EPERM, EROFS, ENOSPC}},
        {"open", {EMFILE, ENFILE}},
        {"close", {EDQUOT}},
        {"lstat", {ENOMEM}},
        {"rename", {EBUSY}},
        {"fsync", {EIO, EINVAL, ENOTSUP, ENOSYS}},
        {"flock", {ENOLCK}},
        {"read", {EIO}},
        {"mkdir", {EACCES}},
        {"chmod", {EPERM}},
        {"mkostemp", {ENOSPC}},
    };
    setTemporaryFolder(folder.native());
    for (const auto& [call, codes] : cases) {
        for (const int code : codes) {
            reset();
            host.log.push_back("== " + call + ": " + std::generic_category().message(code));
            under({Kind::error, code, call, 1, true}, [this] {
                write(false);
                gstrReadFile(folder.path(L"f"));
                gstrTempFile();
            });
            host.log.push_back("the file is " + folder.bytes(L"f"));
            fs::remove_all(folder.native(L"kestrel"));
            EXPECT_EQ(strays(), 0U);
        }
    }
}

// A file that cannot be read is not one without blocks.
TEST_F(Replace, ATextIsNotSavedOverASourceThatCannotBeRead) {
    ViewedText viewed;
    viewed.text = [] { return std::wstring(L"[t:a,n:b]\n{\n}\n"); };
    host.files = {folder.path(L"f.gas"), folder.path(L"f.gas")};
    folder.put(L"f.gas", "[t:c,n:d]\n{\n}\n");
    under({Kind::error, EIO, "read", 1, true}, [&] { EXPECT_FALSE(saveViewedText(viewed, {})); });
    EXPECT_EQ(folder.bytes(L"f.gas"), "[t:c,n:d]\n{\n}\n");
    EXPECT_TRUE(saveViewedText(viewed, {}));
}

TEST_F(Replace, ModeAndOwnerStay) {
    const struct {
        mode_t before;
        mode_t after;
        Fault fault;
    } cases[] = {
        {0600, 0600, {}},
        {0444, 0444, {}},
        {0777, 0777, {}},
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
        under(c.fault, [this] { EXPECT_TRUE(write(true)); });
        EXPECT_EQ(struckCall, c.fault.call);
        const struct stat backup = status(L"f.bak");
        EXPECT_EQ(status(L"f").st_mode & 07777U, c.after);
        EXPECT_EQ(backup.st_mode, before.st_mode);
        EXPECT_EQ(backup.st_uid + backup.st_gid, before.st_uid + before.st_gid);
        if (c.fault.call != "fchown") {
            EXPECT_EQ(status(L"f").st_uid + status(L"f").st_gid, before.st_uid + before.st_gid);
        }
        EXPECT_EQ(folder.bytes(L"f"), "new");
        EXPECT_EQ(folder.bytes(L"f.bak"), "old");
        EXPECT_EQ(strays(), 0U);
    }
}

TEST_F(Replace, ANewFileGetsWhatTheUserMaskLeavesAndItsNameOnceItIsOnTheDisk) {
    const mode_t before = ::umask(027);
    under({}, [this] { EXPECT_TRUE(writeFile(folder.path(L"new"), L"new")); });
    ::umask(before);
    EXPECT_EQ(status(L"new").st_mode & 07777U, 0640U);
    EXPECT_NE(seenCalls.find("fsync rename open fsync close"), std::string::npos) << seenCalls;
}

TEST_F(Replace, ExtendedAttributesAndAccessListsStay) {
    const fs::path file = folder.native(L"f");
    // An access list in the kernel's own form: owner rw, user 1234 r, group r,
    // mask r, others none.
    const std::string list(
        "\2\0\0\0"
        "\1\0\6\0\xFF\xFF\xFF\xFF\2\0\4\0\xD2\4\0\0"
        "\4\0\4\0\xFF\xFF\xFF\xFF\x10\0\4\0\xFF\xFF\xFF\xFF"
        "\x20\0\0\0\xFF\xFF\xFF\xFF",
        44);
    const std::pair<const char*, std::string> attributes[] = {{"system.posix_acl_access", list},
                                                              {"user.note", "value"}};
    for (const auto& [name, value] : attributes) {
        if (::setxattr(file.c_str(), name, value.data(), value.size(), 0) != 0) {
            GTEST_SKIP() << "the file system does not know " << name;
        }
        ASSERT_TRUE(write(false));
        char found[64] = {};
        EXPECT_EQ(::getxattr(file.c_str(), name, found, sizeof found), std::ssize(value)) << name;
        EXPECT_EQ(std::string(found, value.size()), value) << name;
    }
    reset();
    ::setxattr(folder.native().c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
    ASSERT_TRUE(write(false));
    EXPECT_EQ(::getxattr(file.c_str(), "system.posix_acl_access", nullptr, 0), -1)
        << "the folder's own is for other files";
}

TEST_F(Replace, TemporaryFilesOfLiveOwnersAndStrangersStay) {
    const std::wstring ours = L".f.1-0123456789abcdef.tmp";
    for (const wchar_t* stranger :
         {L".f.12-0123.tmp", L".f.x.12-0123456789abcdef.tmp", L".f.-5-0123456789abcdef.tmp",
          L".f.1-0123456789ABCDEF.tmp", L".f.12345678901-0123456789abcdef.tmp",
          L".f.-0123456789abcdef.tmp"}) {
        folder.put(stranger, "");
    }
    for (const bool lives : {true, false}) {
        folder.put(ours, "");
        const int owner = ::open(folder.native(ours).c_str(), O_RDONLY);
        ASSERT_EQ(::flock(owner, lives ? LOCK_SH | LOCK_NB : LOCK_UN), 0);
        ASSERT_TRUE(write(false));
        EXPECT_EQ(strays(), lives ? 7U : 6U);
        ::close(owner);
    }
}

// An owner that is taken for dead between making its file and locking it makes another.
TEST_F(Replace, ManyProgramsOverOneFileAreNeverRefused) {
    int programs[4];
    for (int& program : programs) {
        program = startProcess([this] {
            for (int i = 0; i < 150; ++i) write(true);
            return host.log.empty() ? 0 : 1;
        });
    }
    for (const int program : programs) EXPECT_EQ(endOf(program), 0) << "a write was refused";
    EXPECT_EQ(strays(), 0U);
}

TEST_F(Replace, ABatchPutsItsFilesInPlaceTogether) {
    folder.put(L".a.b.tab.2147483646-0123456789abcdef.tmp", "");
    fs::create_directory(folder.native(L"taken"));
    filesystem::Batch batch;
    batch.add(folder.path(L"f"), "new");
    EXPECT_EQ(folder.bytes(L".a.b.tab.2147483646-0123456789abcdef.tmp"), "(missing)");
    for (const wchar_t* name : {L"g", L"h"}) batch.add(folder.path(name), "new");
    EXPECT_THROW(batch.add(folder.path(L"taken"), "new"), RunTimeError);
    EXPECT_EQ(folder.bytes(L"f"), "old") << "not yet";
    for (const wchar_t* name : {L"g", L"h"}) fs::create_directory(folder.native(name));
    const auto failures = batch.commit();
    ASSERT_EQ(failures.size(), 2U) << "folders stand in the way by now";
    EXPECT_EQ(failures[1].path, folder.path(L"h"));
    EXPECT_EQ(folder.bytes(L"f"), "new");
    EXPECT_EQ(strays(), 3U) << "the three folders alone";
}

TEST_F(Replace, ABatchWaitsForEachFileSystemAndFolder) {
    char memory[] = "/dev/shm/kestrel-XXXXXX";
    if (::mkdtemp(memory) == nullptr) GTEST_SKIP() << "there is no memory with files";
    const fs::path other(memory);
    fs::create_directory(folder.native(L"sub"));
    fs::create_symlink(other / "h", folder.native(L"h"));
    for (const bool fails : {false, true}) {
        filesystem::Batch batch;
        for (const wchar_t* name : {L"f", L"sub/g", L"h"}) batch.add(folder.path(name), "new");
        under({fails ? Kind::error : Kind::none, EIO, "syncfs", 1, true},
              [&] { EXPECT_EQ(batch.commit().size(), 0U); });
        const std::string each = fails ? "fsync rename " : "rename ";
        EXPECT_TRUE(seenCalls.starts_with("syncfs syncfs " + each + each + each +
                                          "open fsync close open fsync close open fsync close "))
            << seenCalls;
    }
    fs::remove_all(other);
}

}  // namespace
}  // namespace kestrel::test
