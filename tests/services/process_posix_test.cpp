#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "services/errors.h"
#include "services/process.h"
#include "support/shown.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using test::TempFolder;

// The text of the file `name` once a started program has put all of it there.
std::string awaited(const TempFolder& folder, std::wstring_view name) {
    for (int i = 0; i < 1000; ++i) {
        const std::string bytes = folder.bytes(name);
        if (bytes.ends_with("end\n")) return bytes;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return folder.bytes(name);
}

TEST(PosixProcess, StartsTheProgramAndLeavesNoChild) {
    const TempFolder folder;
    const std::wstring script =
        folder.put(L"my tool",
                   "#!/bin/sh\nfor word in \"$@\"; do echo \"<$word>\"; done >\"${0%/*}/out\"\n"
                   "cat >>\"${0%/*}/out\"; echo end >>\"${0%/*}/out\"\n");
    std::filesystem::permissions(folder.native(L"my tool"), std::filesystem::perms::owner_all);
    const std::wstring file = folder.put(L"a b.gas", "");
    startProgram(script + L" --now " + file, script);
    EXPECT_EQ(awaited(folder, L"out"), "<--now>\n<" + test::shown(file) + ">\nend\n");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(PosixProcess, NothingPlantedRuns) {
    const TempFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    const std::string path = std::getenv("PATH");
    for (const wchar_t* name : {L"notepad.exe", L"my", L"planted"}) {
        folder.put(name, "#!/bin/sh\necho end >\"${0%/*}/out\"\n");
        std::filesystem::permissions(folder.native(name), std::filesystem::perms::owner_all);
    }
    std::filesystem::current_path(folder.native());
    ::setenv("PATH", (":.:" + path).c_str(), 1);
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"notepad.exe a.gas", L"notepad.exe"},
        {L"./planted", L"./planted"},
        {folder.path(L"my tools/a b/x") + L" a.gas", folder.path(L"my tools/a b/x")},
    };
    for (const auto& [line, configured] : cases) {
        EXPECT_THROW(startProgram(line, configured), RunTimeError) << test::shown(line);
    }
    ::setenv("PATH", path.c_str(), 1);
    std::filesystem::current_path(before);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(folder.bytes(L"out"), "(missing)");
}

TEST(PosixProcess, KnowsThePrograms) {
    EXPECT_TRUE(isProgram(L"sh"));
    EXPECT_TRUE(isProgram(L"/bin/sh"));
    EXPECT_FALSE(isProgram(L"no-such-program-anywhere"));
    EXPECT_FALSE(isProgram(L"/etc/passwd"));
    EXPECT_FALSE(isProgram(L"/bin"));
}

}  // namespace
}  // namespace kestrel
