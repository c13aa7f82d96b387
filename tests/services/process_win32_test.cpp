#include <windows.h>

#include "services/fixture.h"
#include "system/process.h"

namespace kestrel::test {
namespace {

class WindowsProcess : public Services {
  protected:
    WindowsProcess() {
        fs::create_directories(folder.native(L"my dir"));
        for (const fs::path& name : {folder.native(L"my.exe"), fs::path(tool)}) {
            fs::copy_file(fs::absolute(KESTREL_STUB_TOOL), name);
        }
        fs::current_path(folder.native());
    }

    // The command line that the tool of that name was started with, within some
    // seconds.
    std::string told(const std::wstring& name) const {
        for (int i = 0; i < 1000 && folder.bytes(name + L".out") == "(missing)"; ++i) ::Sleep(10);
        return folder.bytes(name + L".out");
    }

    // The number of the error with which that line is refused; 0 when it is started.
    static int refusal(const std::wstring& line, const std::wstring& configured = {}) {
        return std::atoi(errorOf([&] { startProgram(line, configured); }).c_str());
    }

    const std::wstring tool = folder.path(L"my dir\\tool \u0436.exe");
};

TEST_F(WindowsProcess, TheToolSeesTheLineAsItIsAndNothingPlantedRuns) {
    const std::wstring line = tool + L" --now \"a b\" C:\\my mods\\\u6a39.gas";
    startProgram(line, tool);
    EXPECT_EQ(told(L"my dir\\tool \u0436.exe"), shown(line) + "\n");
    const std::wstring none = folder.path(L"my dir\\none.exe");
    EXPECT_EQ(refusal(none + L" x", none), kFileNotFound);
    EXPECT_EQ(refusal(L"my x"), kFileNotFound);
    EXPECT_EQ(refusal(L".\\my x", L".\\my"), kFileNotFound);
    ::Sleep(500);
    EXPECT_EQ(folder.bytes(L"my.exe.out"), "(missing)");
}

TEST_F(WindowsProcess, BareNamesAreLookedForInTheSearchPath) {
    EXPECT_FALSE(isProgram(L"my"));
    EXPECT_TRUE(isProgram(L"cmd"));
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
    EXPECT_EQ(told(L"my.exe"), shown(folder.path(L"my x")) + "\n");
    const std::wstring batch =
        folder.put(L"my dir\\tool & more.bat", "@echo [%~1] [%2]> \"%~dp0batch.out\"\r\n");
    const std::pair<const wchar_t*, std::string> cases[] = {
        {L"", "[] []\r\n"},
        {L" C:\\my mods\\a b.gas", "[C:\\my mods\\a b.gas] []\r\n"},
        {L" \"a b\" -c", "[a b] [-c]\r\n"},
        {L" \"a\" & b", ""},
        {L" %PATH%", ""}};
    for (const auto& [words, out] : cases) {
        EXPECT_EQ(refusal(batch + words, batch), out.empty() ? int{kInvalidCall} : 0);
        if (out.empty()) continue;
        EXPECT_EQ(told(L"my dir\\batch"), out);
        fs::remove(folder.native(L"my dir\\batch.out"));
    }
    EXPECT_EQ(folder.bytes(L"my dir\\batch.out"), "(missing)");
}

}  // namespace
}  // namespace kestrel::test
