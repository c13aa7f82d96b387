#include <windows.h>

#include "system/process.h"
#include "tank/archives.h"
#include "tank/launching.h"

namespace kestrel::test {
namespace {

using namespace std::string_literals;

class WindowsLauncher : public Launching {
  protected:
    // A copy of the tool that tells its command line.
    std::wstring tool(std::wstring_view name) const {
        fs::copy_file(KESTREL_STUBS "tool/kestrel_stub_tool.exe", folder.native(name));
        return folder.path(name);
    }
};

TEST_F(WindowsLauncher, TheBuilderSeesTheLineAsItIsAndEndsThoughAnotherKeepsItsStreams) {
    const std::wstring program = tool(L"\u0436 tool.exe");
    const std::wstring line =
        program + L" -source C:\\my mods\\\u6a39  -title \"a \"b\"\" --linger";
    ASSERT_EQ(startProgram(line, program, {}), Launcher::kStarted) << shown(launcher->errorText());
    EXPECT_EQ(written(), shown(line) + "\\n");
    folder.put(L"\u0436 tool.exe.go", "");
}

TEST_F(WindowsLauncher, RefusedStartsTellTheReasonAtOnce) {
    tool(L"my.exe");
    for (const std::wstring& program :
         {folder.path(L"my builder.exe"), folder.path(), folder.put(L"plain.exe", "no program\n"),
          std::wstring(L"no-such-builder-anywhere")}) {
        EXPECT_EQ(launcher->start(program + L" -source S", program, {}), Launcher::kRefused);
        const std::string told = shown(launcher->errorText());
        EXPECT_TRUE(told.starts_with("Cannot start '" + shown(program) + "': ")) << told;
        EXPECT_EQ(launcher->log(), nullptr);
    }
}

class WindowsLibrary : public Archives {
  protected:
    WindowsLibrary() {
        fs::create_directory(files.native(L"current"));
        fs::current_path(files.native(L"current"));
    }

    const fs::path helper = stubs / "helper.dll";
};

TEST_F(WindowsLibrary, OperationsMayBearDecoratedNames) {
    place(L"own", "_decorated");
    use({files.path(L"own")});
    ASSERT_NE(files.bytes(L"own\\tank.dll").find("\0OpenTank@4\0"s), std::string::npos);
    EXPECT_TRUE(opens());
    EXPECT_EQ(errors(), Lines{});
}

TEST_F(WindowsLibrary, WhatItNeedsComesFromItsOwnFolder) {
    place(L"own", "_needing");
    use({files.path(L"own")});
    fs::copy_file(helper, L"helper.dll");
    EXPECT_FALSE(opens()) << "the current folder was searched";
    EXPECT_EQ(errors().size(), 1U);
    fs::copy_file(helper, files.native(L"own\\helper.dll"));
    EXPECT_TRUE(opens());
}

TEST_F(WindowsLibrary, ASettledProcessTakesNoneFromTheCurrentFolder) {
    fs::copy_file(KESTREL_STUBS "tank/helper.dll", L"planted.dll");
    const HMODULE planted = ::LoadLibraryW(L"planted.dll");
    ASSERT_NE(planted, nullptr) << "it is not there to be found";
    ::FreeLibrary(planted);
    settleProcess();
    EXPECT_EQ(::LoadLibraryW(L"planted.dll"), nullptr);
    EXPECT_NE(::LoadLibraryW(L"version.dll"), nullptr);
}

}  // namespace
}  // namespace kestrel::test
