#include <windows.h>

#include <filesystem>

#include "services/errors.h"
#include "tank/launching.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using test::shown;

class WindowsLauncher : public test::Launching {
  protected:
    // A copy of the tool that tells its command line.
    std::wstring tool(std::wstring_view name) const {
        fs::create_directories(folder.native(name).parent_path());
        fs::copy_file(KESTREL_STUB_TOOL, folder.native(name));
        return folder.path(name);
    }

    // What the launcher says of a start that the system refuses with `code`.
    static std::string refusal(DWORD code, std::wstring_view program) {
        try {
            throwSystemError(static_cast<int>(code), L"Cannot start", program);
        } catch (const RunTimeError& error) {
            return shown(error.description());
        }
    }
};

TEST_F(WindowsLauncher, TheBuilderSeesTheLineAsItIs) {
    const std::wstring program = tool(L"my dir\\\u0436 tool.exe");
    const std::wstring planted = tool(L"my.exe");
    const std::wstring line = program + L" -source C:\\my mods\\\u6a39  -title \"say \"hi\"\" -a";
    ASSERT_EQ(launcher->start(line, program), Launcher::kStarted) << shown(launcher->errorText());
    pollToEnd();
    EXPECT_EQ(shown(text), shown(line) + "\\n");
    fs::remove(folder.native(L"my dir\\\u0436 tool.exe"));
    EXPECT_EQ(launcher->start(line, program), Launcher::kRefused);
    EXPECT_EQ(folder.bytes(L"my.exe.out"), "(missing)");
}

TEST_F(WindowsLauncher, ACrashHasAnExitCode) {
    EXPECT_TRUE(play(L"crash").starts_with("about to crash"));
    EXPECT_NE(last.exitCode, 0);
    play(L"words");
    EXPECT_EQ(last.exitCode, 7);
}

TEST_F(WindowsLauncher, EndsWithTheProgramThoughAnotherKeepsItsStreams) {
    const std::wstring program = tool(L"parent.exe");
    const ULONGLONG begin = ::GetTickCount64();
    ASSERT_EQ(launcher->start(program + L" --linger", program), Launcher::kStarted);
    pollToEnd();
    EXPECT_LT(::GetTickCount64() - begin, 4000U);
    EXPECT_EQ(shown(text), shown(program) + " --linger\\n");
}

TEST_F(WindowsLauncher, RefusedStartsTellTheReasonAtOnce) {
    const std::wstring plain = folder.put(L"plain.exe", "no program\n");
    const struct {
        std::wstring builder;
        DWORD code;
        std::wstring program;
    } cases[] = {
        {folder.path(L"my builder.exe"), ERROR_FILE_NOT_FOUND, folder.path(L"my builder.exe")},
        {folder.path(), ERROR_ACCESS_DENIED, folder.path()},
        {plain, ERROR_BAD_EXE_FORMAT, plain},
        {L"no-such-builder-anywhere", ERROR_FILE_NOT_FOUND, L"no-such-builder-anywhere"},
        {L"", ERROR_FILE_NOT_FOUND, L"-source"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(launcher->start(c.builder + L" -source S", c.builder), Launcher::kRefused);
        EXPECT_EQ(shown(launcher->errorText()), refusal(c.code, c.program));
        EXPECT_TRUE(launcher->poll().ended);
    }
}

}  // namespace
}  // namespace kestrel
