#include <gtest/gtest.h>

#include <thread>

#include "services/bytes.h"
#include "services/file_win32.h"
#include "services/filelock.h"
#include "services/files.h"
#include "services/filestamp.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

class WindowsFiles : public testing::Test {
  protected:
    // The names in the folder, without a report of what could not be written.
    bool write(std::wstring_view name, std::wstring_view text, std::wstring_view backup = {}) {
        return writeFile(folder.path(name), text, backup.empty() ? L"" : folder.path(backup));
    }
    DWORD attributes(std::wstring_view name) const {
        return ::GetFileAttributesW(folder.native(name).c_str());
    }
    void setAttributes(std::wstring_view name, DWORD attributes) const {
        ASSERT_TRUE(::SetFileAttributesW(folder.native(name).c_str(), attributes));
    }
    HANDLE hold(std::wstring_view name, DWORD share) const {
        return ::CreateFileW(folder.native(name).c_str(), GENERIC_READ, share, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    // The single report so far, without the box around it and the system's reason.
    std::string reported() const {
        if (host.log.size() != 1) return std::to_string(host.log.size()) + " reports";
        return host.log[0].substr(0, host.log[0].find("': "));
    }
    std::string refusal(std::string_view number, std::wstring_view name) const {
        return "ask: Error (" + std::string(number) + "): Cannot write '" +
               test::shown(folder.path(name));
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(WindowsFiles, LongNamesAreToldInTheExtendedForm) {
    const std::wstring deep = std::wstring(100, L'a') + L"\\" + std::wstring(100, L'b');
    const std::wstring here = fs::current_path().wstring();
    const std::wstring root = here.size() == 3 ? here : here + L"\\";
    const struct {
        std::wstring path;
        std::wstring name;
    } cases[] = {
        {L"C:\\a.gas", L"C:\\a.gas"},
        {L"a/b.gas", L"a/b.gas"},
        {L"C:\\" + deep, L"\\\\?\\C:\\" + deep},
        {L"C:/x/../" + deep, L"\\\\?\\C:\\" + deep},
        {deep, L"\\\\?\\" + root + deep},
        {L"\\\\server\\share\\" + deep, L"\\\\?\\UNC\\server\\share\\" + deep},
        {L"//server/share/" + deep, L"\\\\?\\UNC\\server\\share\\" + deep},
        {L"\\\\?\\C:\\" + deep, L"\\\\?\\C:\\" + deep},
        {std::wstring(L"C:\\a\0b", 6), L""},
        {L"\\\\.\\pipe\\a", L""},
        {L"NUL", L""},
        {L"con", L""},
        {L"", L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(test::shown(win32::nameOf(c.path)), test::shown(c.name)) << test::shown(c.path);
    }
    EXPECT_EQ(win32::withoutPrefix(L"\\\\?\\UNC\\server\\a"), L"\\\\server\\a");
    EXPECT_EQ(win32::withoutPrefix(L"\\\\?\\C:\\a"), L"C:\\a");
    EXPECT_EQ(win32::withoutPrefix(L"\\\\server\\a"), L"\\\\server\\a");
}

TEST_F(WindowsFiles, LongServerAndExtendedPathsWork) {
    const std::wstring here = folder.path();
    const std::wstring deep = std::wstring(120, L'a') + L"\\" + std::wstring(120, L'\u0436');
    const fs::path before = fs::current_path();
    fs::current_path(folder.native());
    const std::wstring share = L"\\\\localhost\\" + here.substr(0, 1) + L"$" + here.substr(2);
    for (const std::wstring& in :
         {joinPath(here, deep), deep, L"\\\\?\\" + here, share, joinPath(share, deep)}) {
        host.log.clear();
        const std::wstring path = joinPath(in, L"\u6a39.gas");
        filesystem::makeFolder(in);
        EXPECT_TRUE(filesystem::isWritableFolder(in)) << test::shown(in);
        EXPECT_TRUE(writeFile(path, L"old"));
        EXPECT_TRUE(writeFile(path, L"new", backupPath(path)));
        EXPECT_EQ(gstrReadFile(path), L"new");
        EXPECT_EQ(gstrReadFile(backupPath(path)), L"old");
        EXPECT_EQ(filesystem::fileNames(in).size(), 2U);
        EXPECT_EQ(test::shown(gstrLongPath(path)),
                  test::shown(win32::withoutPrefix(filesystem::absolutePath(path))));
        EXPECT_EQ(fileStamp(path)->size, 3U);
        EXPECT_EQ(host.log, Lines{}) << test::shown(in);
        // By the system's own name for it, so that it is where it should be.
        const std::wstring name = L"\\\\?\\" + filesystem::absolutePath(path);
        if (name.find(L"localhost") == name.npos && !in.starts_with(L"\\\\")) {
            EXPECT_NE(::GetFileAttributesW(name.c_str()), INVALID_FILE_ATTRIBUTES);
        }
    }
    EXPECT_EQ(folder.bytes(L"\u6a39.gas"), "new");
    fs::current_path(before);
}

TEST_F(WindowsFiles, DevicesAndHiddenFilesReadAsMissing) {
    folder.put(L"hidden", "text");
    folder.put(L"plain", "text");
    setAttributes(L"hidden", FILE_ATTRIBUTE_HIDDEN);
    for (const std::wstring& path :
         {folder.path(L"hidden"), std::wstring(L"NUL"), folder.path(L"nul"),
          std::wstring(L"\\\\.\\NUL"), std::wstring(L"CON"), std::wstring(L"COM1"),
          folder.path(L"a*"), folder.path(L"a?b"), folder.path(L"a|b")}) {
        EXPECT_EQ(gstrReadFile(path), L"") << test::shown(path);
        EXPECT_FALSE(fileExists(path)) << test::shown(path);
    }
    EXPECT_EQ(filesystem::fileNames(folder.path()), std::vector<std::wstring>{L"plain"});
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(WindowsFiles, AttributesStayAndTheBackupIsReplaced) {
    folder.put(L"a.gas", "first");
    folder.put(L"a.gas.bak", "oldest");
    setAttributes(L"a.gas", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_TRUE(write(L"a.gas", L"second", L"a.gas.bak"));
    EXPECT_EQ(attributes(L"a.gas") & FILE_ATTRIBUTE_HIDDEN, DWORD{FILE_ATTRIBUTE_HIDDEN});
    EXPECT_EQ(folder.bytes(L"a.gas"), "second");
    EXPECT_EQ(folder.bytes(L"a.gas.bak"), "first");
    EXPECT_TRUE(write(L"a.gas", L"third"));
    EXPECT_EQ(folder.bytes(L"a.gas"), "third");
    EXPECT_TRUE(write(L"new.gas", L"new", L"new.gas.bak"));
    EXPECT_EQ(folder.names(), (Lines{"a.gas", "a.gas.bak", "new.gas"}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(WindowsFiles, RefusedTargets) {
    folder.put(L"read-only", "text");
    setAttributes(L"read-only", FILE_ATTRIBUTE_READONLY);
    folder.put(L"file", "text");
    fs::create_directory(folder.native(L"folder"));
    const Lines before = folder.names();
    const struct {
        const char* number;
        std::wstring name;
    } cases[] = {{"70", L"read-only"},
                 {"70", L"folder"},
                 {"53", L"no\\such"},
                 {"53", L"file\\below"},
                 {"75", L"a*"}};
    for (const auto& c : cases) {
        host.log.clear();
        EXPECT_FALSE(write(c.name, L"new"));
        EXPECT_EQ(reported(), refusal(c.number, c.name));
    }
    for (const wchar_t* device : {L"NUL", L"\\\\.\\NUL"}) EXPECT_FALSE(writeFile(device, L"new"));
    EXPECT_EQ(folder.bytes(L"read-only"), "text");
    EXPECT_EQ(folder.names(), before);
    setAttributes(L"read-only", FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFiles, AHeldTargetIsTriedForASecondThenReported) {
    folder.put(L"a.gas", "before");
    const HANDLE held = hold(L"a.gas", FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_FALSE(write(L"a.gas", L"after", L"a.gas.bak"));
    EXPECT_GE(::GetTickCount64() - start, 900U);
    EXPECT_LT(::GetTickCount64() - start, 5000U);
    EXPECT_EQ(reported(), refusal("70", L"a.gas"));
    EXPECT_EQ(folder.bytes(L"a.gas"), "before");
    EXPECT_EQ(folder.names(), Lines{"a.gas"});
    ::CloseHandle(held);
    EXPECT_TRUE(write(L"a.gas", L"after"));

    // One that lets go meanwhile does not matter.
    const HANDLE passing = hold(L"a.gas", FILE_SHARE_READ);
    std::thread other([passing] {
        ::Sleep(300);
        ::CloseHandle(passing);
    });
    EXPECT_TRUE(write(L"a.gas", L"last"));
    other.join();
    EXPECT_EQ(folder.bytes(L"a.gas"), "last");
    EXPECT_EQ(folder.names(), Lines{"a.gas"});
}

TEST_F(WindowsFiles, ABackupOutlivesASaveThatFails) {
    folder.put(L"a.gas", "before");
    folder.put(L"a.gas.bak", "older");
    for (const wchar_t* name : {L"a.gas", L"a.gas.bak"}) {
        host.log.clear();
        const HANDLE held = hold(name, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_FALSE(write(L"a.gas", L"after", L"a.gas.bak"));
        ::CloseHandle(held);
        EXPECT_EQ(reported(), refusal("70", name));
        EXPECT_EQ(folder.bytes(L"a.gas"), "before") << test::shown(name);
        EXPECT_EQ(folder.bytes(L"a.gas.bak"), "older") << test::shown(name);
        EXPECT_EQ(folder.names().size(), 2U);
    }
}

TEST_F(WindowsFiles, WhatKilledRunsLeftBehindGoes) {
    const std::wstring end = L"-0123456789abcdef.tmp";
    const std::wstring own = L"a.gas.7" + end;
    const std::wstring kept[] = {own, L"a.gas.x" + end, L"a.gas.4-short.tmp",
                                 L"b.gas.999999" + end};
    for (const std::wstring& name : kept) folder.put(name, "kept");
    folder.put(L"a.gas.999999" + end, "left behind");
    {
        const FileLock owner(folder.path(own + L".lock"));
        EXPECT_TRUE(write(L"a.gas", L"text"));
    }
    EXPECT_EQ(folder.names().size(), std::size(kept) + 1);
    EXPECT_EQ(folder.bytes(L"a.gas.999999" + end), "(missing)");
    filesystem::Batch batch;
    batch.add(folder.path(L"c.gas"), "text");
    EXPECT_EQ(folder.names(),
              (Lines{"a.gas", "a.gas.4-short.tmp", "a.gas.x-0123456789abcdef.tmp", "c.gas"}));
}

TEST_F(WindowsFiles, ShortNamesBecomeLong) {
    const std::wstring path = folder.put(L"a long name with blanks.gas", "");
    wchar_t name[1024] = {};
    ASSERT_NE(::GetShortPathNameW(path.c_str(), name, std::size(name)), 0U);
    ASSERT_NE(fileName(name), fileName(path)) << "the disk keeps no short names";
    EXPECT_EQ(test::shown(fileName(gstrLongPath(name))), test::shown(fileName(path)));
}

TEST_F(WindowsFiles, SettingsFollowTheUser) {
    test::setSettingsFolder(L"D:\\\u0436 x");
    EXPECT_EQ(filesystem::userFolder(), L"D:\\\u0436 x\\Kestrel");
}

TEST_F(WindowsFiles, AStampTellsMomentsApart) {
    const std::wstring path = folder.put(L"a.gas", "1");
    const auto first = fileStamp(path);
    ASSERT_TRUE(first.has_value());
    EXPECT_FALSE(isSettled(*first));
    ::Sleep(50);
    folder.put(L"a.gas", "2");
    EXPECT_NE(fileStamp(path), first);
    EXPECT_FALSE(fileStamp(folder.path()).has_value());
    EXPECT_FALSE(fileStamp(L"").has_value());
}

}  // namespace
}  // namespace kestrel
