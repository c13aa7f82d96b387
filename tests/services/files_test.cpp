#include <thread>

#include "services/files.h"
#include "services/fixture.h"
#include "system/filelock.h"

namespace kestrel::test {
namespace {

using namespace std::string_literals;

using Files = ToldServices;

TEST_F(Files, ContentSurvivesReadingAndWriting) {
    const std::pair<std::wstring, std::string> cases[] = {
        {L"", ""},
        {L"\0\r\n\x1A\x81\u20AC"s, "\0\r\n\x1A\x81\x80"s},
        {std::wstring(3'000'001, L'\u20AC'), std::string(3'000'001, '\x80')},
        {L"\u0416\xDC80", "\xEF\xBB\xBF\xD0\x96\x80"},
        {L"\u00EF\u00BB\u00BFx", "\xEF\xBB\xBF\xC3\xAF\xC2\xBB\xC2\xBFx"},
    };
    for (const auto& [text, bytes] : cases) {
        EXPECT_TRUE(writeFile(folder.path(L"file"), text));
        EXPECT_EQ(gProgram().routine, L"gWriteFile");
        EXPECT_EQ(folder.bytes(L"file"), bytes);
        EXPECT_EQ(gstrReadFile(folder.path(L"file")), text);
        EXPECT_EQ(gProgram().routine, L"gstrReadFile");
    }
    EXPECT_EQ(folder.names(), Lines{"file"});
}

TEST_F(Files, WhatIsNoOrdinaryFileReadsAsMissing) {
    const std::wstring file = folder.put(L"file", "text");
    const std::wstring cut = file + L"\0more"s;
    for (const std::wstring& path :
         {L""s, folder.path(L"missing"), folder.path(), folder.path(L"no/such"),
          folder.path(L"file/below"), cut, folder.path(std::wstring(5000, L'x'))}) {
        EXPECT_EQ(gstrReadFile(path), L"") << toUtf8(path);
        EXPECT_FALSE(fileExists(path)) << toUtf8(path);
    }
    EXPECT_EQ(gstrLongPath(folder.path(L"missing")), L"");
    EXPECT_EQ(gstrLongPath(folder.path()), folder.path());
    EXPECT_FALSE(writeFile({}, L"new"));
    EXPECT_FALSE(writeFile(cut, L"new"));
    EXPECT_EQ(told().size(), 1U);
    EXPECT_EQ(folder.bytes(L"file"), "text");
    EXPECT_EQ(folder.names(), Lines{"file"});
}

TEST_F(Files, NamesOfAllScriptsWork) {
    const std::wstring name = L"caf\u00e9 \u0436\u6a39\U0001F426;b'c&d%e.gas";
    const std::wstring path = folder.path(name);
    for (const wchar_t* text : {L"old", L"new"}) {
        EXPECT_TRUE(writeFile(path, text, backupPath(path)));
        EXPECT_EQ(gstrReadFile(path), text);
    }
    EXPECT_EQ(folder.bytes(name), "new");
    EXPECT_EQ(folder.bytes(name + L".bak"), "old");
    fs::current_path(folder.native());
    EXPECT_EQ(gstrLongPath(name), path);
    filesystem::remove(path);
    EXPECT_EQ(filesystem::fileNames(folder.path()), Texts{name + L".bak"});
}

TEST_F(Files, TemporaryFilesAreNewAndEmptyAndGoInTime) {
    setTemporaryFolder(folder.native());
    const std::wstring paths[] = {gstrTempFile(), gstrTempFile(), gstrTempFile()};
    const fs::path stranger = fs::path(paths[0]).replace_filename("other");
    fs::copy_file(paths[0], stranger);
    const auto hour = std::chrono::hours(1);
    const auto yesterday = fs::file_time_type::clock::now() - 24 * hour;
    fs::last_write_time(stranger, yesterday - hour);
    fs::last_write_time(paths[0], yesterday - hour);
    fs::last_write_time(paths[1], yesterday + hour);
    removeOldTempFiles();
    EXPECT_NE(paths[1], paths[2]);
    EXPECT_TRUE(fs::exists(stranger));
    for (const std::wstring& path : paths) {
        EXPECT_TRUE(fileName(path).starts_with(L"gsv")) << toUtf8(path);
        EXPECT_EQ(fileExists(path), path != paths[0]);
        EXPECT_EQ(readFileBytes(path), "");
        EXPECT_EQ(folderOf(folderOf(folderOf(path))), folder.path());
    }
}

TEST_F(Files, PartsOfPaths) {
    const std::array<std::wstring, 3> cases[] = {
        {L"/a/b/c.gas", L"/a/b", L"c.gas"}, {L"c.gas", L"", L"c.gas"}, {L"/c.gas", L"/", L"c.gas"},
        {L"a//c.gas", L"a", L"c.gas"},      {L"a/b/", L"a/b", L""},    {L"", L"", L""},
        {L"C:/c.gas", L"C:/", L"c.gas"},
    };
    for (const auto& [path, above, name] : cases) {
        EXPECT_EQ(folderOf(path), above);
        EXPECT_EQ(fileName(path), name);
    }
    const std::wstring separator(1, kSeparator);
    EXPECT_EQ(joinPath(L"/a/", L"b"), L"/a/b");
    gProgram().folder = L"/own";
    EXPECT_EQ(programFile(L"settings.set"), L"/own" + separator + L"settings.set");
    const std::wstring longest = L"/a/" + std::wstring(251, L'x');
    for (const wchar_t* end : {L"", L"yz"}) EXPECT_EQ(backupPath(longest + end), longest + L".bak");
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
    setSettingsFolder(folder.native(L"user"));
    const std::wstring own = filesystem::userFolder();
    EXPECT_EQ(folderOf(own), folder.path(L"user"));
    // Root can write into all of these.
    for (const wchar_t* name : {L"tools", L"binary", L"bin/kestrel"}) {
        filesystem::makeFolder(folder.path(name));
        EXPECT_EQ(chooseProgramFolder(folder.path(name)), folder.path(name));
        EXPECT_FALSE(filesystem::isFolder(own));
    }
    for (const std::wstring& path :
         {folder.path(L"bin"), folder.path(L"missing"), folder.put(L"file", ""), L""s}) {
        EXPECT_EQ(chooseProgramFolder(path), own);
        EXPECT_TRUE(filesystem::isFolder(own));
    }
    const std::wstring beside = filesystem::executableFolder();
    EXPECT_EQ(chooseProgramFolder(), beside);
    // What came with the program is beside it, or in the "share" of an installed one.
    const std::wstring name(fileName(folder.path()));  // of nothing else
    const std::wstring share = joinPath(folderOf(beside), L"share");
    const std::wstring places[] = {joinPath(joinPath(share, L"kestrel"), name),
                                   joinPath(beside, name)};
    EXPECT_EQ(sharedFile(name), L"");
    filesystem::makeFolder(places[0]);
    EXPECT_EQ(sharedFile(name), places[0]);
    filesystem::makePrivate(places[1]);
    EXPECT_EQ(sharedFile(name), places[1]);
    filesystem::remove(places[1]);
    fs::remove_all(share);
}

}  // namespace
}  // namespace kestrel::test
