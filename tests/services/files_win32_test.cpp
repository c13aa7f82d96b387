#include <thread>

#include "services/files.h"
#include "services/fixture.h"
#include "system/file_win32.h"
#include "system/filelock.h"
#include "system/filestamp.h"

namespace kestrel::test {
namespace {

class WindowsFiles : public Services {
  protected:
    bool write(std::wstring_view name, std::wstring_view text, std::wstring_view backup = {}) {
        return writeFile(folder.path(name), text, backup.empty() ? L"" : folder.path(backup));
    }
    void setAttributes(std::wstring_view name, DWORD attributes) const {
        ASSERT_TRUE(::SetFileAttributesW(folder.native(name).c_str(), attributes));
    }
    HANDLE hold(std::wstring_view name, DWORD share) const {
        return ::CreateFileW(folder.native(name).c_str(), GENERIC_READ, share, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    // The one report is that `path` cannot be written. The reason is in the system's words.
    void expectRefusal(const std::string& number, const std::wstring& path) {
        ASSERT_EQ(host.log.size(), 1U) << shown(path);
        EXPECT_EQ(host.log[0].substr(0, host.log[0].find("': ")),
                  "ask: Error (" + number + "): Cannot write '" + shown(path));
        host.log.clear();
    }
};

TEST_F(WindowsFiles, LongNamesAreToldInTheExtendedForm) {
    const std::wstring deep = std::wstring(100, L'a') + L"\\" + std::wstring(100, L'b');
    const std::wstring here = fs::current_path().wstring();
    const std::wstring root = here.size() == 3 ? here : here + L"\\";
    const std::pair<std::wstring, std::wstring> cases[] = {
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
        {L"", L""},
    };
    for (const auto& [path, name] : cases) {
        EXPECT_EQ(shown(win32::nameOf(path)), shown(name)) << shown(path);
    }
    EXPECT_EQ(win32::withoutPrefix(L"\\\\?\\UNC\\server\\a"), L"\\\\server\\a");
    EXPECT_EQ(win32::withoutPrefix(L"\\\\?\\C:\\a"), L"C:\\a");
}

TEST_F(WindowsFiles, LongServerAndExtendedPathsWork) {
    const std::wstring here = folder.path();
    const std::wstring deep = std::wstring(120, L'a') + L"\\" + std::wstring(120, L'\u0436');
    const std::wstring share = L"\\\\localhost\\" + here.substr(0, 1) + L"$" + here.substr(2);
    fs::current_path(folder.native());
    for (const std::wstring& in :
         {joinPath(here, deep), deep, L"\\\\?\\" + here, share, joinPath(share, deep)}) {
        const std::wstring path = joinPath(in, L"\u6a39.gas");
        filesystem::makeFolder(in);
        EXPECT_TRUE(filesystem::isWritableFolder(in)) << shown(in);
        for (const wchar_t* text : {L"old", L"new"}) {
            EXPECT_TRUE(writeFile(path, text, backupPath(path)));
        }
        EXPECT_EQ(gstrReadFile(path), L"new");
        EXPECT_EQ(gstrReadFile(backupPath(path)), L"old");
        EXPECT_EQ(filesystem::fileNames(in).size(), 2U);
        EXPECT_EQ(shown(gstrLongPath(path)),
                  shown(win32::withoutPrefix(filesystem::absolutePath(path))));
        EXPECT_EQ(fileStamp(path)->size, 3U);
        EXPECT_EQ(host.log, Lines{}) << shown(in);
        // By the system's own name for it, so that it is where it should be.
        const std::wstring name = L"\\\\?\\" + filesystem::absolutePath(path);
        if (in.starts_with(L"\\\\")) continue;
        EXPECT_NE(::GetFileAttributesW(name.c_str()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_EQ(folder.bytes(L"\u6a39.gas"), "new");
}

TEST_F(WindowsFiles, WhatIsNoOrdinaryFileReadsAsMissingAndIsNotWritten) {
    for (const wchar_t* name : {L"file", L"hidden", L"read-only"}) folder.put(name, "text");
    setAttributes(L"hidden", FILE_ATTRIBUTE_HIDDEN);
    setAttributes(L"read-only", FILE_ATTRIBUTE_READONLY);
    fs::create_directory(folder.native(L"folder"));
    const std::pair<std::string, Texts> cases[] = {
        {"", {folder.path(L"hidden"), folder.path(L"nul")}},
        {"70", {folder.path(L"folder")}},
        {"53", {folder.path(L"no\\such"), folder.path(L"file\\below")}},
        {"75", {folder.path(L"a*"), folder.path(L"a?b"), folder.path(L"a|b")}},
        {"75", {L"NUL", L"\\\\.\\NUL", L"CON", L"COM1"}},
    };
    for (const auto& [number, paths] : cases) {
        for (const std::wstring& path : paths) {
            EXPECT_EQ(gstrReadFile(path), L"") << shown(path);
            EXPECT_FALSE(fileExists(path)) << shown(path);
            EXPECT_EQ(host.log, Lines{});
            if (number.empty()) continue;
            EXPECT_FALSE(writeFile(path, L"new"));
            expectRefusal(number, path);
        }
    }
    EXPECT_FALSE(write(L"read-only", L"new"));
    expectRefusal("70", folder.path(L"read-only"));
    EXPECT_EQ(folder.bytes(L"read-only"), "text");
    EXPECT_EQ(filesystem::fileNames(folder.path()).size(), 2U) << "the hidden one is not told";
    EXPECT_EQ(folder.names(), (Lines{"file", "folder", "hidden", "read-only"}));
    setAttributes(L"read-only", FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFiles, AHeldFileIsTriedForASecondThenReported) {
    folder.put(L"a.gas", "before");
    folder.put(L"a.gas.bak", "older");
    setAttributes(L"a.gas", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    for (const wchar_t* name : {L"a.gas", L"a.gas.bak"}) {
        const HANDLE held = hold(name, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        const ULONGLONG start = ::GetTickCount64();
        EXPECT_FALSE(write(L"a.gas", L"after", L"a.gas.bak"));
        EXPECT_GE(::GetTickCount64() - start, 900U);
        ::CloseHandle(held);
        expectRefusal("70", folder.path(name));
        EXPECT_EQ(folder.bytes(L"a.gas"), "before") << shown(name);
        EXPECT_EQ(folder.bytes(L"a.gas.bak"), "older") << shown(name);
    }
    // One that lets go meanwhile does not matter.
    const HANDLE passing = hold(L"a.gas", FILE_SHARE_READ);
    std::thread other([passing] {
        ::Sleep(300);
        ::CloseHandle(passing);
    });
    EXPECT_TRUE(write(L"a.gas", L"last", L"a.gas.bak"));
    other.join();
    EXPECT_EQ(folder.bytes(L"a.gas"), "last");
    EXPECT_EQ(folder.bytes(L"a.gas.bak"), "before");
    EXPECT_NE(win32::attributesOf(folder.path(L"a.gas")) & FILE_ATTRIBUTE_HIDDEN, 0U);
    EXPECT_EQ(folder.names(), (Lines{"a.gas", "a.gas.bak"}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(WindowsFiles, WhatKilledRunsLeftBehindGoes) {
    const std::wstring end = L"-0123456789abcdef.tmp";
    const std::wstring own = L"a.gas.7" + end;
    const std::wstring ended = L"a.gas.999999" + end;
    for (const std::wstring& name :
         {own, ended, L"a.gas.x" + end, std::wstring(L"a.gas.4-short.tmp"), L"b.gas.9" + end}) {
        folder.put(name, "");
    }
    {
        const FileLock owner(folder.path(own + L".lock"));
        EXPECT_TRUE(write(L"a.gas", L"text"));
    }
    EXPECT_EQ(folder.names().size(), 5U);
    EXPECT_EQ(folder.bytes(ended), "(missing)");
    filesystem::Batch batch;
    batch.add(folder.path(L"c.gas"), "text");
    EXPECT_EQ(folder.names(),
              (Lines{"a.gas", "a.gas.4-short.tmp", "a.gas.x-0123456789abcdef.tmp", "c.gas"}));
}

TEST_F(WindowsFiles, ShortNamesBecomeLongAndAStampTellsMomentsApart) {
    const std::wstring path = folder.put(L"a long name with blanks.gas", "1");
    wchar_t name[1024] = {};
    ASSERT_NE(::GetShortPathNameW(path.c_str(), name, std::size(name)), 0U);
    ASSERT_NE(fileName(name), fileName(path)) << "the disk keeps no short names";
    EXPECT_EQ(shown(fileName(gstrLongPath(name))), shown(fileName(path)));
    const auto first = fileStamp(path);
    ASSERT_TRUE(first.has_value());
    EXPECT_FALSE(isSettled(*first));
    ::Sleep(50);
    folder.put(L"a long name with blanks.gas", "2");
    EXPECT_NE(fileStamp(path), first);
    EXPECT_FALSE(fileStamp(folder.path()).has_value());
    EXPECT_FALSE(fileStamp(L"").has_value());
    setSettingsFolder(L"D:\\\u0436 x");
    EXPECT_EQ(filesystem::userFolder(), L"D:\\\u0436 x\\Kestrel");
}

}  // namespace
}  // namespace kestrel::test
