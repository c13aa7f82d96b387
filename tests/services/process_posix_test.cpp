#include <sys/wait.h>

#include <thread>

#include "services/fixture.h"
#include "system/process.h"

namespace kestrel::test {
namespace {

class PosixProcess : public Services {
  protected:
    // A program that writes its words and its input into the file "out" beside it.
    std::wstring putProgram(std::wstring_view name) const {
        const std::wstring path =
            folder.put(name,
                       "#!/bin/sh\nfor word in \"$@\"; do echo \"<$word>\"; done >\"${0%/*}/out\"\n"
                       "cat >>\"${0%/*}/out\"; echo end >>\"${0%/*}/out\"\n");
        fs::permissions(folder.native(name), fs::perms::owner_all);
        return path;
    }
};

TEST_F(PosixProcess, StartsTheProgramAndLeavesNoChild) {
    const std::wstring program = putProgram(L"my tool");
    const std::wstring file = folder.put(L"a b.gas", "");
    startProgram(program + L" --now " + file, program);
    for (int i = 0; i < 1000 && !folder.bytes(L"out").ends_with("end\n"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(folder.bytes(L"out"), "<--now>\n<" + shown(file) + ">\nend\n");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(PosixProcess, KnowsTheProgramsAndNothingPlantedRuns) {
    for (const wchar_t* name : {L"sh", L"/bin/sh"}) EXPECT_TRUE(isProgram(name));
    for (const wchar_t* name : {L"no-such-program-anywhere", L"/etc/passwd", L"/bin"}) {
        EXPECT_FALSE(isProgram(name));
    }
    const std::string path = std::getenv("PATH");
    for (const wchar_t* name : {L"notepad.exe", L"my", L"planted"}) putProgram(name);
    fs::current_path(folder.native());
    ::setenv("PATH", (":.:" + path).c_str(), 1);
    const std::wstring below = folder.path(L"my tools/a b/x");
    for (const std::wstring& program :
         {std::wstring(L"notepad.exe"), std::wstring(L"./planted"), below}) {
        EXPECT_THROW(startProgram(program + L" a.gas", program), RunTimeError) << shown(program);
    }
    ::unsetenv("PATH");
    EXPECT_TRUE(isProgram(L"sh")) << "where the system keeps its own";
    ::setenv("PATH", path.c_str(), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(folder.bytes(L"out"), "(missing)");
}

}  // namespace
}  // namespace kestrel::test
