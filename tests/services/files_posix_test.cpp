#include "services/files.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "services/settings.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

class PosixFiles : public testing::Test {
  protected:
    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(PosixFiles, NamesThatAreNoUtf8Work) {
    const std::wstring name = fromUtf8("n\xFFme \xC3\xA9");
    EXPECT_TRUE(writeFile(folder.path(name), L"text"));
    EXPECT_EQ(gstrReadFile(folder.path(name)), L"text");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"n\xFFme \xC3\xA9"});
    EXPECT_NE(gstrReadFile(L"/proc/self/status"), L"") << "a file that claims no length";
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

TEST_F(PosixFiles, Paths) {
    EXPECT_EQ(folderOf(L"a\\b.gas"), L"");
    EXPECT_EQ(fileName(L"a\\b.gas"), L"a\\b.gas");
    EXPECT_EQ(joinPath(L"/a", L"b"), L"/a/b");
    EXPECT_FALSE(filesystem::isWritableFolder(L"/proc/self"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(folder.native(L"a/b"));
    std::filesystem::create_directory_symlink("a/b", folder.native(L"link"));
    folder.put(L"a/beside.gas", "");
    folder.put(L"here.gas", "");
    std::filesystem::current_path(folder.native(L"a"));
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"beside.gas", folder.path(L"a/beside.gas")},
        {L"./b/..//./beside.gas", folder.path(L"a/beside.gas")},
        {folder.path(L"a/../here.gas"), folder.path(L"here.gas")},
        {folder.path(L"none/../none.gas"), folder.path(L"none.gas")},
        // Behind a link ".." is not the folder that the link stands in.
        {folder.path(L"link/../beside.gas"), folder.path(L"a/beside.gas")},
        {folder.path(L"link/none.gas"), folder.path(L"link/none.gas")},
    };
    for (const auto& [path, absolute] : cases) {
        EXPECT_EQ(filesystem::absolutePath(path), absolute);
    }
    std::filesystem::current_path(before);
}

TEST_F(PosixFiles, CodePageOfTheLanguage) {
    const std::pair<const char*, unsigned> cases[] = {
        {"C", 1252},           {"de_DE.UTF-8", 1252},
        {"pl_PL.UTF-8", 1250}, {"ru_RU", 1251},
        {"sr_RS", 1251},       {"sr_RS@latin", 1250},
        {"el", 1253},          {"tr_TR@x", 1254},
        {"he_IL.UTF-8", 1255}, {"ar_EG", 1256},
        {"lt_LT", 1257},       {"vi_VN", 1258},
        {"th_TH", 874},        {"ja_JP.UTF-8", 1252},
        {"zh_CN", 1252},       {"uz_UZ@cyrillic", 1251}};
    for (const auto& [locale, page] : cases) {
        ::setenv("LC_ALL", locale, 1);
        EXPECT_EQ(CodePage::ofSystem().number(), page) << locale;
    }
    ::unsetenv("LC_ALL");
}

TEST_F(PosixFiles, FoldersOfTheUserFollowTheEnvironment) {
    const struct {
        const char* variable;
        std::wstring (*folder)();
        std::wstring otherwise;
    } cases[] = {{"XDG_CONFIG_HOME", filesystem::userFolder, L"/home/mina/.config/kestrel"},
                 {"XDG_STATE_HOME", filesystem::stateFolder, L"/home/mina/.local/state/kestrel"},
                 {"XDG_CACHE_HOME", filesystem::cacheFolder, L"/home/mina/.cache/kestrel"}};
    ::setenv("HOME", "/home/mina", 1);
    for (const auto& c : cases) {
        ::setenv(c.variable, "/some/where", 1);
        EXPECT_EQ(c.folder(), L"/some/where/kestrel");
        ::setenv(c.variable, "relative", 1);
        EXPECT_EQ(c.folder(), c.otherwise);
        ::unsetenv(c.variable);
        EXPECT_EQ(c.folder(), c.otherwise);
    }
}

}  // namespace
}  // namespace kestrel
