#include "services/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <set>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

class Files : public testing::Test {
  protected:
    void putOddities() const {
        folder.put(L"file", "text");
        ASSERT_EQ(::mkfifo(folder.native(L"pipe").c_str(), 0600), 0);
        std::filesystem::create_symlink("loop", folder.native(L"loop"));
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(Files, ContentSurvivesReadingAndWriting) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    const std::string big(3'000'001, '\x93');
    for (const std::string& bytes : {std::string(), all, all + "\r\n", std::string("a\nb\rc\r\n"),
                                     std::string("no end"), big}) {
        const std::wstring source = folder.put(L"source", bytes);
        EXPECT_EQ(readFileBytes(source), bytes);
        gWriteFile(folder.path(L"target"), gstrReadFile(source));
        EXPECT_EQ(folder.bytes(L"target"), bytes);
    }
    EXPECT_EQ(gProgram().routine, L"gWriteFile");
    EXPECT_EQ(folder.names(), (Lines{"source", "target"}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Files, WhatIsNoOrdinaryFileReadsAsMissing) {
    putOddities();
    const auto start = std::chrono::steady_clock::now();
    for (const std::wstring& path :
         {std::wstring(), folder.path(L"missing"), folder.path(), folder.path(L"pipe"),
          folder.path(L"loop"), std::wstring(L"/dev/zero"), folder.path(L"file/below"),
          folder.path(L"file") + std::wstring(1, L'\0') + L"more",
          folder.path(std::wstring(5000, L'x'))}) {
        EXPECT_EQ(gstrReadFile(path), L"") << toUtf8(path);
        EXPECT_FALSE(fileExists(path)) << toUtf8(path);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_TRUE(fileExists(folder.path(L"file")));
    EXPECT_NE(gstrReadFile(L"/proc/self/status"), L"") << "a file that claims no length";
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Files, NamesThatAreNoUtf8Work) {
    const std::wstring name = fromUtf8("n\xFFme \xC3\xA9");
    EXPECT_TRUE(writeFile(folder.path(name), L"text"));
    EXPECT_EQ(gstrReadFile(folder.path(name)), L"text");
    EXPECT_EQ(folder.names(), Lines{"n\xFFme \xC3\xA9"});
}

TEST_F(Files, RefusedTargets) {
    putOddities();
    const std::wstring here = folder.path();
    const Lines before = folder.names();
    const struct {
        int number;
        std::wstring path;
        std::string reason;
    } cases[] = {
        {75, here, "Is a directory"},
        {75, here + L"/pipe", "it is not an ordinary file"},
        {75, L"/dev/null", "it is not an ordinary file"},
        {75, here + L"/loop", "Too many levels of symbolic links"},
        {53, here + L"/no/such", "No such file or directory"},
        {75, here + L"/file/below", "Not a directory"},
    };
    for (const auto& c : cases) {
        host.log.clear();
        EXPECT_FALSE(writeFile(c.path, L"new"));
        EXPECT_EQ(host.log, Lines{"ask: Error (" + std::to_string(c.number) + "): Cannot write '" +
                                  toUtf8(c.path) + "': " + c.reason +
                                  " in 'gWriteFile' | Kestrel | exclamation | ok"});
    }
    host.log.clear();
    EXPECT_FALSE(writeFile({}, L"new"));
    EXPECT_EQ(host.log, Lines{});
    EXPECT_FALSE(writeFile(folder.path(L"file") + std::wstring(1, L'\0'), L"new"));
    EXPECT_EQ(host.log.size(), 1U);
    EXPECT_EQ(folder.bytes(L"file"), "text");
    EXPECT_EQ(folder.names(), before);
}

TEST_F(Files, TemporaryFileIsNewEmptyAndPrivate) {
    const std::set<std::wstring> paths{gstrTempFile(), gstrTempFile()};
    EXPECT_EQ(paths.size(), 2U);
    for (const std::wstring& path : paths) {
        EXPECT_TRUE(fileName(path).starts_with(L"gsv")) << toUtf8(path);
        const std::filesystem::path native(toUtf8(path));
        EXPECT_EQ(std::filesystem::file_size(native), 0U);
        EXPECT_EQ(std::filesystem::status(native).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        std::filesystem::remove(native);
    }
}

TEST_F(Files, LongPath) {
    const std::wstring path = folder.put(L"a file", "");
    EXPECT_EQ(gstrLongPath(path), path);
    EXPECT_EQ(gstrLongPath(folder.path(L"missing")), L"");
    EXPECT_EQ(gstrLongPath({}), L"");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.native());
    EXPECT_EQ(gstrLongPath(L"a file"), path);
    std::filesystem::current_path(before);
}

TEST_F(Files, PartsOfPaths) {
    const struct {
        const wchar_t* path;
        const wchar_t* folder;
        const wchar_t* name;
    } cases[] = {
        {L"/a/b/c.gas", L"/a/b", L"c.gas"}, {L"c.gas", L"", L"c.gas"}, {L"/c.gas", L"/", L"c.gas"},
        {L"a//c.gas", L"a", L"c.gas"},      {L"a/b/", L"a/b", L""},    {L"", L"", L""},
        {L"a\\b.gas", L"", L"a\\b.gas"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(toUtf8(folderOf(c.path)), toUtf8(c.folder));
        EXPECT_EQ(toUtf8(fileName(c.path)), toUtf8(c.name));
    }
    EXPECT_EQ(joinPath(L"/a", L"b"), L"/a/b");
    EXPECT_EQ(joinPath(L"/a/", L"b"), L"/a/b");
    EXPECT_EQ(backupPath(L"/a/info.his"), L"/a/info.his.bak");
    gProgram().folder = L"/own";
    EXPECT_EQ(programFile(L"settings.set"), L"/own/settings.set");
}

TEST_F(Files, FoldersAreMadeWithThoseAbove) {
    const std::wstring deep = folder.path(L"a/b/c");
    filesystem::makeFolder(deep);
    filesystem::makeFolder(deep);
    EXPECT_TRUE(filesystem::isFolder(deep));
    EXPECT_TRUE(filesystem::isWritableFolder(deep));
    EXPECT_FALSE(filesystem::isWritableFolder(folder.path(L"missing")));
    EXPECT_FALSE(filesystem::isWritableFolder(folder.put(L"file", "")));
    EXPECT_FALSE(filesystem::isWritableFolder(L"/proc/self"));
}

TEST_F(Files, UserFolderFollowsTheEnvironment) {
    ::setenv("XDG_CONFIG_HOME", "/some/where", 1);
    EXPECT_EQ(filesystem::userFolder(), L"/some/where/kestrel");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", "/home/mina", 1);
    EXPECT_EQ(filesystem::userFolder(), L"/home/mina/.config/kestrel");
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(filesystem::userFolder(), L"/home/mina/.config/kestrel");
    EXPECT_TRUE(filesystem::isFolder(filesystem::executableFolder()));
    EXPECT_EQ(chooseProgramFolder(), filesystem::executableFolder());
}

}  // namespace
}  // namespace kestrel
