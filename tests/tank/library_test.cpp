#include <filesystem>

#include "services/filesystem.h"
#include "tank/archives.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using test::Lines;

class Library : public test::Archives {
  protected:
    Library() { fs::current_path(files.native()); }
    ~Library() override { fs::current_path(before_); }

    const std::string missing = "Error (53): Cannot find the library 'LIBRARY'";
    const std::string end = " in 'gOpenTank'";

  private:
    const fs::path before_ = fs::current_path();
};

TEST_F(Library, TheFirstFolderThatHasItDecidesAndNeverTheCurrentOne) {
    const std::wstring name(dynamic::tankFileName());
    const auto in = [this](std::wstring_view folder) { return files.path(folder); };
    place({});
    place(L"good");
    place(L"short", "_short");
    fs::create_directories(files.native(L"folder") / name);
    fs::create_directories(files.native(L"text"));
    files.put(L"text/" + name, std::string(1000, 'x'));
    const std::string bits = sizeof(void*) == 4 ? "32" : "64";
    const std::string reason = name.ends_with(L".dll")
                                   ? "it is no library for a " + bits + "-bit program"
                                   : "invalid ELF header";
    const struct {
        std::vector<std::wstring> folders;
        std::string error;
    } rows[] = {
        {{in(L"none"), in(L"folder"), in(L"good"), in(L"short")}, ""},
        {{in(L"short"), in(L"good")},
         "Error (453): Cannot load 'FOLDER/short/LIBRARY': it has no operation 'GetChildCRC'"},
        {{in(L"text")}, "Error (48): Cannot load 'FOLDER/text/LIBRARY': " + reason},
        {{L"", L".", name}, missing},
        {{in(L"one"), in(L"two")}, missing + " in 'FOLDER/one' or 'FOLDER/two'"},
    };
    for (const auto& row : rows) {
        use(row.folders);
        EXPECT_EQ(opens(), row.error.empty()) << row.error;
        EXPECT_EQ(opens(), row.error.empty()) << row.error;
        EXPECT_EQ(errors(), row.error.empty() ? Lines{} : Lines(2, row.error + end));
    }
    place(L"two");
    EXPECT_TRUE(opens()) << "once it is there";
}

TEST_F(Library, ItIsBesideTheProgramOrInItsFolder) {
    place({});
    const std::wstring tests = filesystem::executableFolder();
    const std::string looked = missing + " in '" + told(tests) + "'";
    const std::pair<std::wstring, std::string> rows[] = {
        {L".", looked}, {tests, looked}, {files.path(L"own"), looked + " or 'FOLDER/own'"}};
    for (const auto& [folder, error] : rows) {
        use({});
        gProgram().folder = folder;
        EXPECT_FALSE(opens());
        EXPECT_EQ(errors(), Lines{error + end});
    }
    place(L"own");
    EXPECT_TRUE(opens());
}

TEST_F(Library, ArchivesOfAnyNameAreOpened) {
    for (const wchar_t* name : {L"two words.dsres", L"caf\u00e9.dssave", L"\u6a39\u6728.dsparty"}) {
        TankHandle tank = gOpenTank(files.put(name, "tank\n"));
        EXPECT_EQ(glngCloseTank(tank), 7) << toUtf8(name);
    }
    const std::wstring cut = put("tank\n") + std::wstring(L"\0x", 2);
    EXPECT_EQ(gOpenTank(cut), 0) << "the name would be cut to that of another file";
    EXPECT_EQ(gOpenTank(files.path(L"missing")), 0);
    EXPECT_EQ(errors(), Lines{});
}

}  // namespace
}  // namespace kestrel
