#include "services/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "services/settings.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

class PosixFiles : public testing::Test {
  protected:
    void putOddities() const {
        folder.put(L"file", "text");
        ASSERT_EQ(::mkfifo(folder.native(L"pipe").c_str(), 0600), 0);
        std::filesystem::create_symlink("loop", folder.native(L"loop"));
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(PosixFiles, WhatIsNoOrdinaryFileReadsAsMissing) {
    putOddities();
    const auto start = std::chrono::steady_clock::now();
    for (const std::wstring& path :
         {folder.path(L"pipe"), folder.path(L"loop"), std::wstring(L"/dev/zero")}) {
        EXPECT_EQ(gstrReadFile(path), L"") << toUtf8(path);
        EXPECT_FALSE(fileExists(path)) << toUtf8(path);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_NE(gstrReadFile(L"/proc/self/status"), L"") << "a file that claims no length";
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(PosixFiles, NamesThatAreNoUtf8Work) {
    const std::wstring name = fromUtf8("n\xFFme \xC3\xA9");
    EXPECT_TRUE(writeFile(folder.path(name), L"text"));
    EXPECT_EQ(gstrReadFile(folder.path(name)), L"text");
    EXPECT_EQ(folder.names(), Lines{"n\xFFme \xC3\xA9"});
}

TEST_F(PosixFiles, RefusedTargets) {
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
    EXPECT_EQ(folder.bytes(L"file"), "text");
    EXPECT_EQ(folder.names(), before);
}

TEST_F(PosixFiles, SettingsThatCouldNotBeReadAreNotWrittenOver) {
    gProgram().folder = folder.path();
    const std::filesystem::path settings = folder.native(L"settings.set");
    for (const wchar_t* changed : {L"", L"s"}) {
        gProgram().settings = {};
        std::filesystem::remove(settings);
        std::filesystem::create_symlink("/proc/self/mem", settings);  // its begin cannot be read
        gReadSettings();
        std::filesystem::remove(settings);
        folder.put(L"settings.set", "zeltor=z\r\n");
        gProgram().settings.skritpad = changed;
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set.bak"), *changed ? "zeltor=z\r\n" : "(missing)");
    }
    EXPECT_TRUE(folder.bytes(L"settings.set").starts_with("orvane=\r\nzeltor=z\r\nskritpad=s\r\n"));
    EXPECT_EQ(host.logged("ask: Error (57)").size(), 2U);
}

TEST_F(PosixFiles, TemporaryFileIsPrivate) {
    test::setTemporaryFolder(folder.native());
    std::filesystem::create_directories(folder.native(L"kestrel/texts"));
    const std::filesystem::path path(toUtf8(gstrTempFile()));
    test::setTemporaryFolder({});
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(std::filesystem::status(path.parent_path()).permissions(), perms::owner_all);
}

TEST_F(PosixFiles, NoFileCanBeMadeInAFolderOfTheSystem) {
    EXPECT_FALSE(filesystem::isWritableFolder(L"/proc/self"));
}

TEST_F(PosixFiles, PartsOfPaths) {
    EXPECT_EQ(folderOf(L"a\\b.gas"), L"");
    EXPECT_EQ(fileName(L"a\\b.gas"), L"a\\b.gas");
    EXPECT_EQ(joinPath(L"/a", L"b"), L"/a/b");
}

TEST_F(PosixFiles, AbsolutePaths) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(folder.native(L"a/b"));
    std::filesystem::create_directory_symlink("a/b", folder.native(L"link"));
    folder.put(L"a/beside.gas", "");
    folder.put(L"here.gas", "");
    std::filesystem::current_path(folder.native(L"a"));
    const struct {
        std::wstring path;
        std::wstring absolute;
    } cases[] = {
        {L"beside.gas", folder.path(L"a/beside.gas")},
        {L"./b/..//./beside.gas", folder.path(L"a/beside.gas")},
        {folder.path(L"a/../here.gas"), folder.path(L"here.gas")},
        {folder.path(L"none/../none.gas"), folder.path(L"none.gas")},
        // Behind a link ".." is not the folder that the link stands in.
        {folder.path(L"link/../beside.gas"), folder.path(L"a/beside.gas")},
        {folder.path(L"link/none.gas"), folder.path(L"link/none.gas")},
    };
    for (const auto& c : cases) EXPECT_EQ(filesystem::absolutePath(c.path), c.absolute);
    std::filesystem::current_path(before);
}

TEST_F(PosixFiles, CodePageOfTheLanguage) {
    const struct {
        const char* locale;
        unsigned page;
    } cases[] = {{"C", 1252},           {"de_DE.UTF-8", 1252},
                 {"pl_PL.UTF-8", 1250}, {"ru_RU", 1251},
                 {"sr_RS", 1251},       {"sr_RS@latin", 1250},
                 {"el", 1253},          {"tr_TR@x", 1254},
                 {"he_IL.UTF-8", 1255}, {"ar_EG", 1256},
                 {"lt_LT", 1257},       {"vi_VN", 1258},
                 {"th_TH", 874},        {"ja_JP.UTF-8", 1252},
                 {"zh_CN", 1252},       {"uz_UZ@cyrillic", 1251}};
    const char* before = std::getenv("LC_ALL");
    const std::string kept = before == nullptr ? "" : before;
    for (const auto& c : cases) {
        ::setenv("LC_ALL", c.locale, 1);
        EXPECT_EQ(CodePage::ofSystem().number(), c.page) << c.locale;
    }
    ::unsetenv("LC_ALL");
    ::setenv("LC_ALL", kept.c_str(), 1);
}

TEST_F(PosixFiles, UserFolderFollowsTheEnvironment) {
    ::setenv("XDG_CONFIG_HOME", "/some/where", 1);
    EXPECT_EQ(filesystem::userFolder(), L"/some/where/kestrel");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", "/home/mina", 1);
    EXPECT_EQ(filesystem::userFolder(), L"/home/mina/.config/kestrel");
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(filesystem::userFolder(), L"/home/mina/.config/kestrel");
}

}  // namespace
}  // namespace kestrel
