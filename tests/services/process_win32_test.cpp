#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/process.h"
#include "support/shown.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;

class WindowsProcess : public testing::Test {
  protected:
    WindowsProcess() {
        fs::create_directories(folder.native(L"my dir"));
        fs::copy_file(tool_, folder.native(L"my dir\\tool \u0436.exe"));
        fs::copy_file(tool_, folder.native(L"my.exe"));
    }
    ~WindowsProcess() override { fs::current_path(before_); }

    // The command line that the tool of that name was started with, within some
    // seconds.
    std::string told(const std::wstring& name) const {
        for (int i = 0; i < 1000 && folder.bytes(name + L".out") == "(missing)"; ++i) ::Sleep(10);
        return folder.bytes(name + L".out");
    }

    // The number of the error with which that line is refused; 0 when it is started.
    static int refusal(const std::wstring& line, const std::wstring& configured = {}) {
        try {
            startProgram(line, configured);
            return 0;
        } catch (const RunTimeError& error) {
            return error.number();
        }
    }

    const test::TempFolder folder;
    const std::wstring tool = folder.path(L"my dir\\tool \u0436.exe");

  private:
    const fs::path before_ = fs::current_path();
    const fs::path tool_ = fs::absolute(KESTREL_STUB_TOOL);
};

TEST_F(WindowsProcess, TheToolSeesTheLineAsItIsAndNothingPlantedRuns) {
    const std::wstring line = tool + L" --now \"a b\" C:\\my mods\\\u6a39.gas";
    startProgram(line, tool);
    EXPECT_EQ(told(L"my dir\\tool \u0436.exe"), test::shown(line) + "\n");
    EXPECT_EQ(refusal(folder.path(L"my dir\\none.exe x")), kFileNotFound);
    EXPECT_EQ(refusal(folder.path(L"my dir\\none.exe x"), folder.path(L"my dir\\none.exe")),
              kFileNotFound);
    ::Sleep(500);
    EXPECT_EQ(folder.bytes(L"my.exe.out"), "(missing)");
}

TEST_F(WindowsProcess, BareNamesAreLookedForButNotInTheCurrentFolder) {
    fs::current_path(folder.native());
    EXPECT_EQ(refusal(L"my x"), kFileNotFound);
    EXPECT_EQ(refusal(L".\\my x", L".\\my"), kFileNotFound);
    EXPECT_FALSE(isProgram(L"my"));
    EXPECT_TRUE(isProgram(L"cmd"));
    EXPECT_TRUE(isProgram(L"cmd.exe"));
    wchar_t path[32767] = {};
    ::GetEnvironmentVariableW(L"PATH", path, std::size(path));
    ::SetEnvironmentVariableW(L"PATH", (L";" + folder.path() + L";" + path).c_str());
    EXPECT_TRUE(isProgram(L"my"));
    EXPECT_EQ(refusal(L"my x"), 0);
    ::SetEnvironmentVariableW(L"PATH", path);
    EXPECT_EQ(told(L"my.exe"), "my x\n");
}

TEST_F(WindowsProcess, NamesWithoutExtensionAndBatchFilesRun) {
    startProgram(folder.path(L"my x"), folder.path(L"my"));
    EXPECT_EQ(told(L"my.exe"), test::shown(folder.path(L"my x")) + "\n");

    const std::wstring batch = folder.path(L"my dir\\tool & more.bat");
    folder.put(L"my dir\\tool & more.bat", "@echo [%~1] [%2]> \"%~dp0batch.out\"\r\n");
    const struct {
        const wchar_t* words;
        const char* told;
        int number;
    } cases[] = {{L"", "[] []\r\n", 0},
                 {L" C:\\my mods\\a b.gas", "[C:\\my mods\\a b.gas] []\r\n", 0},
                 {L" \"a b\" -c", "[a b] [-c]\r\n", 0},
                 {L" \"a\" & b", "(missing)", kInvalidCall},
                 {L" %PATH%", "(missing)", kInvalidCall}};
    for (const auto& c : cases) {
        EXPECT_EQ(refusal(batch + c.words, batch), c.number);
        const bool runs = c.number == 0;
        EXPECT_EQ(runs ? told(L"my dir\\batch") : folder.bytes(L"my dir\\batch.out"), c.told);
        fs::remove(folder.native(L"my dir\\batch.out"));
    }
}

}  // namespace
}  // namespace kestrel
