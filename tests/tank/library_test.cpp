#include "tank/library.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "services/filesystem.h"
#include "tank/archives.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using test::Lines;

const std::wstring kName(dynamic::tankFileName());

std::string quote(std::wstring_view text) {
    return std::string("'").append(toUtf8(text)).append("'");
}

class Library : public test::Archives {
  protected:
    Library() {
        place(files.native());
        library.reset();
    }

    void use(std::vector<std::wstring> folders) {
        library = makeTankLibrary(std::move(folders));
        gProgram().host.tank = library.get();
    }

    void place(const fs::path& folder, const char* file = KESTREL_TANK) const {
        fs::create_directories(folder);
        fs::copy_file(file, folder / kName, fs::copy_options::overwrite_existing);
    }

    // Opens and closes an archive; false when it does not open.
    bool opens() const {
        TankHandle tank = gOpenTank(archive);
        return tank != 0 && glngCloseTank(tank) == 7;
    }

    std::string shown(std::wstring_view folder) const { return quote(files.path(folder)); }

    const std::string quoted = quote(kName);
    const std::wstring archive = put("tank\n");
};

TEST_F(Library, TheFirstFolderThatHasItDecides) {
    place(files.native(L"good"));
    place(files.native(L"short"), KESTREL_SHORT_TANK);
    fs::create_directories(files.native(L"folder") / kName);
    use({files.path(L"none"), files.path(L"folder"), files.path(L"good"), files.path(L"short")});
    EXPECT_TRUE(opens());
    use({files.path(L"short"), files.path(L"good")});
    EXPECT_FALSE(opens());
    EXPECT_EQ(errors(),
              (Lines{"Error (453): Cannot load '" + toUtf8(joinPath(files.path(L"short"), kName)) +
                     "': it has no operation 'GetChildCRC' in 'gOpenTank'"}));
}

TEST_F(Library, MissingItIsReportedAtEachUseUntilItIsThere) {
    use({files.path(L"one"), files.path(L"two")});
    const std::string report = "Error (53): Cannot find the library " + quoted + " in " +
                               shown(L"one") + " or " + shown(L"two") + " in 'gOpenTank'";
    EXPECT_FALSE(opens());
    EXPECT_FALSE(opens());
    EXPECT_EQ(errors(), (Lines{report, report}));
    place(files.native(L"two"));
    EXPECT_TRUE(opens());
    EXPECT_EQ(errors().size(), 2U);
}

TEST_F(Library, ItIsBesideTheProgramOrInItsFolder) {
    use({});
    gProgram().folder = files.path(L"own");
    EXPECT_FALSE(opens());
    const std::string tests = quote(filesystem::executableFolder());
    EXPECT_EQ(errors(), (Lines{"Error (53): Cannot find the library " + quoted + " in " + tests +
                               " or " + shown(L"own") + " in 'gOpenTank'"}));
    place(files.native(L"own"));
    EXPECT_TRUE(opens());
}

TEST_F(Library, TheCurrentFolderHasNone) {
    const fs::path before = fs::current_path();
    fs::current_path(files.native());
    use({L"", L".", kName});
    EXPECT_FALSE(opens());
    use({});
    gProgram().folder = L".";
    EXPECT_FALSE(opens());
    fs::current_path(before);
    EXPECT_EQ(errors().size(), 2U);
    EXPECT_EQ(errors()[0], "Error (53): Cannot find the library " + quoted + " in 'gOpenTank'");
}

TEST_F(Library, AFileThatIsNoLibraryForThisProgramIsReported) {
    std::ifstream good(KESTREL_TANK, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(good), {});
    ASSERT_GT(bytes.size(), 1000U);
    // Where the file of a Linux library says 32 or 64; one of Windows is a test of its own.
    std::string otherBits = bytes;
    if (bytes.starts_with("\x7F"))
        otherBits[4] = otherBits[4] == 1 ? 2 : 1;
    else
        otherBits.clear();
    const struct {
        const char* what;
        std::string bytes;
    } kCases[] = {{"empty", ""}, {"text", std::string(1000, 'x')}, {"other bits", otherBits}};
    const std::wstring path = files.path(kName);
    const std::string start = "Error (48): Cannot load '" + toUtf8(path) + "': ";
    use({files.path()});
    for (const auto& row : kCases) {
        host.log.clear();
        files.put(kName, row.bytes);
        EXPECT_FALSE(opens()) << row.what;
        ASSERT_EQ(errors().size(), 1U) << row.what;
        EXPECT_EQ(errors()[0].substr(0, start.size()), start);
        EXPECT_TRUE(errors()[0].ends_with(" in 'gOpenTank'"));
        EXPECT_GT(errors()[0].size(), start.size() + 25) << "the system's reason is missing";
    }
    fs::remove(files.native(kName));
    files.put(kName, bytes);
    EXPECT_TRUE(opens()) << "once it is the right one";
}

TEST_F(Library, ArchivesOfAnyNameAreOpened) {
    use({files.path()});
    for (const wchar_t* name : {L"two words.dsres", L"caf\u00e9.dssave", L"\u6a39\u6728.dsparty"}) {
        TankHandle tank = gOpenTank(files.put(name, "tank\n"));
        EXPECT_NE(tank, 0) << toUtf8(name);
        glngCloseTank(tank);
    }
    const std::wstring cut = archive + std::wstring(L"\0x", 2);
    EXPECT_EQ(gOpenTank(cut), 0) << "the name would be cut to that of another file";
    EXPECT_EQ(gOpenTank(files.path(L"missing")), 0);
    EXPECT_EQ(errors(), Lines{});
}

}  // namespace
}  // namespace kestrel
