#include "services/process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <set>
#include <thread>

#include "services/errors.h"
#include "support/shown.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using test::TempFolder;

std::function<bool(std::wstring_view)> onlyFiles(std::set<std::wstring> files) {
    return [files = std::move(files)](std::wstring_view path) {
        return files.count(std::wstring(path)) != 0;
    };
}

TEST(Process, TakesTheLongestProgramOfAnUnquotedLine) {
    const auto isFile =
        onlyFiles({L"/opt/my", L"/opt/my pad/run", L"/opt/my pad/run -x", L"/a b.gas"});
    const struct {
        const wchar_t* line;
        const wchar_t* configured;
        CommandParts parts;
    } cases[] = {
        {L"/opt/my pad/run /a b.gas", L"", {L"/opt/my pad/run", L"/a b.gas"}},
        {L"/opt/my pad/run /a b.gas", L"/opt/my pad/run", {L"/opt/my pad/run", L"/a b.gas"}},
        {L"/opt/my pad/run -x", L"/opt/my pad/run", {L"/opt/my pad/run", L"-x"}},
        {L"/opt/my pad/run -x", L"", {L"/opt/my pad/run -x", L""}},
        {L"/opt/my pad/run --wide f", L"/opt/my pad/run --wide", {L"/opt/my pad/run", L"--wide f"}},
        {L"notepad.exe /a b.gas", L"", {L"notepad.exe", L"/a b.gas"}},
        {L"  tool  ", L"", {L"tool", L""}},
        {L"", L"", {L"", L""}},
    };
    for (const auto& c : cases) {
        const CommandParts parts = splitCommandLine(c.line, c.configured, isFile);
        EXPECT_EQ(test::shown(parts.program), test::shown(c.parts.program)) << test::shown(c.line);
        EXPECT_EQ(test::shown(parts.arguments), test::shown(c.parts.arguments));
    }
}

TEST(Process, AFileNameAtTheEndIsOneWord) {
    const auto isFile = onlyFiles({L"/a b.gas", L"b.gas"});
    using Words = std::vector<std::wstring>;
    EXPECT_EQ(splitArguments(L" --wide  -x /a b.gas", isFile),
              (Words{L"--wide", L"-x", L"/a b.gas"}));
    EXPECT_EQ(splitArguments(L"/c b.gas", isFile), (Words{L"/c", L"b.gas"}));
    EXPECT_EQ(splitArguments(L"  ", isFile), Words{});
}

// The text of the file `name` once a started program has put all of it there.
std::string awaited(const TempFolder& folder, std::wstring_view name) {
    for (int i = 0; i < 1000; ++i) {
        const std::string bytes = folder.bytes(name);
        if (bytes.ends_with("end\n")) return bytes;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return folder.bytes(name);
}

TEST(Process, StartsTheProgramAndLeavesNoChild) {
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

TEST(Process, FailsWithTheSystemsReason) {
    const TempFolder folder;
    const std::wstring text = folder.put(L"plain.txt", "no program\n");
    std::filesystem::permissions(folder.native(L"plain.txt"), std::filesystem::perms::owner_all);
    const struct {
        std::wstring line;
        int number;
    } cases[] = {{folder.path(L"missing"), kFileNotFound},
                 {L"no-such-program-anywhere x", kFileNotFound},
                 {folder.path(), kPermissionDenied},
                 {text, kPathError}};
    for (const auto& c : cases) {
        try {
            startProgram(c.line);
            ADD_FAILURE() << test::shown(c.line) << " was started";
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.number(), c.number) << test::shown(error.description());
        }
    }
}

TEST(Process, KnowsThePrograms) {
    EXPECT_TRUE(isProgram(L"sh"));
    EXPECT_TRUE(isProgram(L"/bin/sh"));
    EXPECT_FALSE(isProgram(L"no-such-program-anywhere"));
    EXPECT_FALSE(isProgram(L"/etc/passwd"));
    EXPECT_FALSE(isProgram(L"/bin"));
}

}  // namespace
}  // namespace kestrel
