#include "services/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <thread>

#include "services/bytes.h"
#include "services/filelock.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

class Files : public testing::Test {
  protected:
    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(Files, ContentSurvivesReadingAndWriting) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    for (const std::wstring& text : {L"\u0416\xDC80"s, L"\u00EF\u00BB\u00BFx"s, L"\u20AC"s}) {
        gWriteFile(folder.path(L"target"), text);
        EXPECT_EQ(gstrReadFile(folder.path(L"target")), text);
    }
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
    const std::wstring file = folder.put(L"file", "text");
    const std::wstring cut = file + std::wstring(1, L'\0') + L"more";
    for (const std::wstring& path :
         {std::wstring(), folder.path(L"missing"), folder.path(), folder.path(L"no/such"),
          folder.path(L"file/below"), cut, folder.path(std::wstring(5000, L'x'))}) {
        EXPECT_EQ(gstrReadFile(path), L"") << toUtf8(path);
        EXPECT_FALSE(fileExists(path)) << toUtf8(path);
    }
    EXPECT_TRUE(fileExists(file));
    EXPECT_EQ(host.log, Lines{});
    EXPECT_FALSE(writeFile({}, L"new"));
    EXPECT_EQ(host.log, Lines{});
    EXPECT_FALSE(writeFile(cut, L"new"));
    EXPECT_EQ(host.log.size(), 1U);
    EXPECT_EQ(folder.bytes(L"file"), "text");
    EXPECT_EQ(folder.names(), Lines{"file"});
}

TEST_F(Files, NamesOfAllScriptsWork) {
    const std::wstring names[] = {L"caf\u00e9 1.gas", L"\u0436\u0443\u043a.gas",
                                  L"\u6a39\u6728.gas", L"\U0001F426.gas", L"a;b'c&d%e.gas"};
    std::vector<std::wstring> expected;
    for (const std::wstring& name : names) {
        const std::wstring path = folder.path(name);
        EXPECT_TRUE(writeFile(path, L"old"));
        EXPECT_TRUE(writeFile(path, L"new", backupPath(path)));
        EXPECT_EQ(gstrReadFile(path), L"new");
        EXPECT_EQ(folder.bytes(name), "new");
        EXPECT_EQ(folder.bytes(name + L".bak"), "old");
        EXPECT_EQ(gstrLongPath(path), path);
        expected.push_back(name);
        expected.push_back(name + L".bak");
    }
    std::vector<std::wstring> found = filesystem::fileNames(folder.path());
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Files, TemporaryFilesAreNewAndEmpty) {
    test::setTemporaryFolder(folder.native());
    const std::set<std::wstring> paths{gstrTempFile(), gstrTempFile()};
    const std::filesystem::path old(gstrTempFile());
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(old, now - std::chrono::hours(25));
    std::filesystem::last_write_time(*paths.begin(), now - std::chrono::hours(23));
    removeOldTempFiles();
    test::setTemporaryFolder({});
    EXPECT_FALSE(std::filesystem::exists(old));
    EXPECT_EQ(paths.size(), 2U);
    for (const std::wstring& path : paths) {
        EXPECT_TRUE(fileName(path).starts_with(L"gsv")) << toUtf8(path);
        const std::filesystem::path native(path);
        EXPECT_EQ(std::filesystem::file_size(native), 0U);
        EXPECT_EQ(native.parent_path().parent_path().parent_path(), folder.native());
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
    };
    for (const auto& c : cases) {
        EXPECT_EQ(toUtf8(folderOf(c.path)), toUtf8(c.folder));
        EXPECT_EQ(toUtf8(fileName(c.path)), toUtf8(c.name));
    }
    const std::wstring separator(1, filesystem::separator());
    EXPECT_EQ(joinPath(L"/a", L"b"), L"/a" + separator + L"b");
    EXPECT_EQ(joinPath(L"/a/", L"b"), L"/a/b");
    EXPECT_EQ(backupPath(L"/a/info.his"), L"/a/info.his.bak");
    gProgram().folder = L"/own";
    EXPECT_EQ(programFile(L"settings.set"), L"/own" + separator + L"settings.set");
}

TEST_F(Files, FoldersAreMadeWithThoseAbove) {
    const std::wstring deep = folder.path(L"a/b/c");
    filesystem::makeFolder(deep);
    filesystem::makeFolder(deep);
    EXPECT_TRUE(filesystem::isFolder(deep));
    EXPECT_TRUE(filesystem::isWritableFolder(deep));
    EXPECT_FALSE(filesystem::isWritableFolder(folder.path(L"missing")));
    EXPECT_FALSE(filesystem::isWritableFolder(folder.put(L"file", "")));
}

TEST_F(Files, OneAtATimeHoldsALock) {
    const std::wstring path = folder.path(L"a.lock");
    auto first = std::make_unique<FileLock>(path);
    EXPECT_TRUE(first->isHeld());
    EXPECT_FALSE(FileLock(path).isHeld());
    std::thread end([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        first.reset();
    });
    EXPECT_TRUE(FileLock(path, std::chrono::seconds(30)).isHeld());
    end.join();
    EXPECT_FALSE(fileExists(path));
    EXPECT_FALSE(FileLock(folder.path(L"missing/a.lock"), std::chrono::hours(1)).isHeld());
}

TEST_F(Files, InstalledProgramsKeepNothingBesideThemselves) {
    test::setSettingsFolder(folder.native(L"user"));
    const std::wstring own = filesystem::userFolder();
    EXPECT_EQ(folderOf(own), folder.path(L"user"));
    // Root can write into all of these.
    for (const wchar_t* name : {L"tools", L"binary", L"bin/kestrel"}) {
        filesystem::makeFolder(folder.path(name));
        EXPECT_EQ(chooseProgramFolder(folder.path(name)), folder.path(name));
        EXPECT_FALSE(filesystem::isFolder(own));
    }
    for (const wchar_t* name : {L"bin", L"missing"}) {
        EXPECT_EQ(chooseProgramFolder(folder.path(name)), own);
        EXPECT_TRUE(filesystem::isFolder(own));
    }
    EXPECT_EQ(chooseProgramFolder(L""), own);
    EXPECT_EQ(chooseProgramFolder(), filesystem::executableFolder());
}

}  // namespace
}  // namespace kestrel
