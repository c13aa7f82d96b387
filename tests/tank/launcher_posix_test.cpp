#include <sys/wait.h>

#include <cerrno>
#include <filesystem>

#include "support/system.h"
#include "tank/launching.h"

namespace kestrel {
namespace {

using namespace std::chrono_literals;
using test::shown;
using Steady = std::chrono::steady_clock;

class PosixLauncher : public test::Launching {
  protected:
    // A file that may be run.
    std::wstring program(std::wstring_view name, std::string_view bytes) const {
        const std::wstring path = folder.put(name, bytes);
        std::filesystem::permissions(folder.native(name), std::filesystem::perms::owner_all);
        return path;
    }
};

TEST_F(PosixLauncher, WordsAndSignals) {
    target = folder.path(L"my archive.dsres");
    EXPECT_EQ(play(L"words"),
              R"(<-source>\n<S>\n<-out>\n<)" + shown(target) + R"(>\n<-title>\n<words>\n)");
    EXPECT_EQ(last.exitCode, 7);
    EXPECT_EQ(play(L"crash"), "about to crash");
    EXPECT_EQ(last.exitCode, 128 + 6);
    EXPECT_EQ(launcher->poll().exitCode, 128 + 6);
}

TEST_F(PosixLauncher, ItsFileHasNoNameAndItsChildrenAreGone) {
    test::setTemporaryFolder(folder.native());
    ASSERT_EQ(start(L"nothing"), Launcher::kStarted);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
    pollToEnd();
    EXPECT_EQ(launcher->start(folder.path(L"missing"), L""), Launcher::kRefused);
    test::setTemporaryFolder({});
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(PosixLauncher, EndsWithTheProgramThoughAnotherKeepsItsStreams) {
    const std::wstring script = program(L"parent", "#!/bin/sh\nsleep 5 &\necho parent\n");
    const auto begin = Steady::now();
    ASSERT_EQ(launcher->start(script, script), Launcher::kStarted);
    pollToEnd();
    EXPECT_LT(Steady::now() - begin, 3s);
    EXPECT_EQ(text, L"parent\n");
}

TEST_F(PosixLauncher, RefusedStartsTellTheReasonAtOnce) {
    const std::wstring plain = folder.put(L"plain.txt", "no program\n");
    const std::wstring unknown = program(L"program", "no format of the system\n");
    const struct {
        std::wstring builder;
        const char* reason;
        std::wstring option = L" -source S";
    } cases[] = {
        {folder.path(L"my builder"), "my builder': No such file or directory"},
        {folder.path(), "Permission denied"},
        {plain, "Permission denied"},
        {unknown, "Exec format error"},
        {L"no-such-builder-anywhere", "No such file or directory"},
        {L"", "No such file or directory"},
        {builder, "Argument list too long", L" -title " + std::wstring(3'000'000, L'x')},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(launcher->start(c.builder + c.option, c.builder), Launcher::kRefused);
        EXPECT_TRUE(shown(launcher->errorText()).ends_with(c.reason))
            << shown(launcher->errorText());
        EXPECT_TRUE(launcher->poll().ended);
    }
}

}  // namespace
}  // namespace kestrel
