#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tank/launching.h"

namespace kestrel {
namespace {

using test::shown;

class PosixLauncher : public test::Launching {
  protected:
    // A file that may be run.
    std::wstring program(std::wstring_view name, std::string_view bytes) const {
        const std::wstring path = folder.put(name, bytes);
        std::filesystem::permissions(folder.native(name), std::filesystem::perms::owner_all);
        return path;
    }

    // All that a shell writes to `script`.
    std::string run(std::string_view script) {
        const std::wstring path = program(L"script", "#!/bin/sh\n" + std::string(script));
        EXPECT_EQ(launcher->start(path, path), Launcher::kStarted) << shown(launcher->errorText());
        waitUntil([this] { return poll(); });
        return shown(text);
    }
};

TEST_F(PosixLauncher, TellsHowAProgramEnded) {
    EXPECT_EQ(play(L"crash"), "about to crash");
    EXPECT_EQ(last.exitCode, 128 + 6);
    EXPECT_EQ(launcher->poll().exitCode, 128 + 6);
    // Nobody is told how a program ended then.
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(play(L"nothing"), "");
    EXPECT_EQ(last.exitCode, -1);
    std::signal(SIGCHLD, SIG_DFL);
}

// A session of its own, no signal held back or ignored, and no file but the streams.
TEST_F(PosixLauncher, TheProgramInheritsNothingOfOurs) {
    sigset_t ours;
    sigemptyset(&ours);
    sigaddset(&ours, SIGUSR1);
    sigprocmask(SIG_BLOCK, &ours, nullptr);
    std::signal(SIGUSR2, SIG_IGN);
    ASSERT_EQ(dup2(STDERR_FILENO, 9), 9);
    EXPECT_EQ(run("cut -d' ' -f6 /proc/$$/stat | grep -cx $$\n"
                  "test -e /proc/$$/fd/9 || echo closed\n"),
              R"(1\nclosed\n)");
    // Without a shell, which has its own way with signals.
    const std::wstring grep = L"/bin/grep -cE \"Sig(Blk|Ign):.*0000000$\" /proc/self/status";
    ASSERT_EQ(launcher->start(grep, L"/bin/grep"), Launcher::kStarted);
    text.clear();
    waitUntil([this] { return poll(); });
    EXPECT_EQ(text, L"2\n");
    close(9);
    std::signal(SIGUSR2, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &ours, nullptr);
}

TEST_F(PosixLauncher, ItsFileHasNoNameAndItsChildrenAreGone) {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    test::setTemporaryFolder(folder.native());
    ASSERT_EQ(start(L"nothing"), Launcher::kStarted);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
    siginfo_t ended;
    waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT);
    launcher = makeLauncher();
    EXPECT_EQ(launcher->start(folder.path(L"missing"), L""), Launcher::kRefused);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    test::setTemporaryFolder({});
}

TEST_F(PosixLauncher, EndsWithTheProgramThoughAnotherKeepsItsStreams) {
    const std::string go = shown(folder.path(L"go"));
    EXPECT_EQ(run("while [ ! -e " + go + " ]; do sleep 0.1; done &\necho parent\n"), R"(parent\n)");
    folder.put(L"go", "");
}

TEST_F(PosixLauncher, RefusedStartsTellTheReasonAtOnce) {
    const std::wstring plain = folder.put(L"plain.txt", "no program\n");
    const std::wstring unknown = program(L"program", "no format of the system\n");
    const struct {
        std::wstring builder;
        const char* reason;
        std::wstring option = L" -source S";
    } cases[] = {
        {folder.path(L"my builder"), "No such file or directory"},
        {folder.path(), "Permission denied"},
        {plain, "Permission denied"},
        {unknown, "Exec format error"},
        {L"no-such-builder-anywhere", "No such file or directory"},
        {L"", "No such file or directory"},
        {builder, "Argument list too long", L" -title " + std::wstring(3'000'000, L'x')},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(launcher->start(c.builder + c.option, c.builder), Launcher::kRefused);
        const std::wstring program = c.builder.empty() ? L"-source" : c.builder;
        EXPECT_EQ(shown(launcher->errorText()),
                  "Cannot start '" + shown(program) + "': " + c.reason);
        EXPECT_TRUE(launcher->poll().ended);
    }
}

}  // namespace
}  // namespace kestrel
