#include "services/files.h"
#include "services/fixture.h"
#include "services/settings.h"
#include "system/codepage.h"

namespace kestrel::test {
namespace {

using PosixFiles = Services;

TEST_F(PosixFiles, SettingsThatCouldNotBeReadAreNotWrittenOver) {
    const fs::path settings = folder.native(L"settings.set");
    for (const wchar_t* changed : {L"", L"s"}) {
        gProgram().settings = {};
        fs::remove(settings);
        fs::create_symlink("/proc/self/mem", settings);  // its begin cannot be read
        gReadSettings();
        fs::remove(settings);
        folder.put(L"settings.set", "zeltor=z\r\n");
        gProgram().settings.skritpad = changed;
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set.bak"), *changed ? "zeltor=z\r\n" : "(missing)");
    }
    EXPECT_TRUE(folder.bytes(L"settings.set").starts_with("orvane=\r\nzeltor=z\r\nskritpad=s\r\n"));
    EXPECT_EQ(host.logged("ask: Error (57)").size(), 2U);
}

TEST_F(PosixFiles, TemporaryFileIsPrivate) {
    setTemporaryFolder(folder.native());
    fs::create_directories(folder.native(L"kestrel/texts"));
    const fs::path path(toUtf8(gstrTempFile()));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms{0600});
    EXPECT_EQ(fs::status(path.parent_path()).permissions(), fs::perms{0700});
}

TEST_F(PosixFiles, PathsAndFilesOfTheSystem) {
    EXPECT_NE(gstrReadFile(L"/proc/self/status"), L"") << "a file that claims no length";
    EXPECT_EQ(fileName(L"a\\b.gas"), L"a\\b.gas");
    EXPECT_FALSE(filesystem::isWritableFolder(L"/proc/self"));
    fs::create_directories(folder.native(L"a/b"));
    fs::create_directory_symlink("a/b", folder.native(L"link"));
    folder.put(L"a/beside.gas", "");
    folder.put(L"here.gas", "");
    fs::current_path(folder.native(L"a"));
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
}  // namespace kestrel::test
