#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tank/archives.h"
#include "tank/launching.h"

namespace kestrel::test {
namespace {

class PosixLauncher : public Launching {
  protected:
    // All that `program` writes.
    std::string run(const std::wstring& program, const std::vector<std::wstring>& words) {
        EXPECT_EQ(startProgram(program, program, words), Launcher::kStarted);
        return written();
    }
};

TEST_F(PosixLauncher, TellsHowAProgramEnded) {
    EXPECT_EQ(run(L"/bin/sh", {L"-c", L"echo about to crash; kill -s ABRT $$"}),
              R"(about to crash\n)");
    EXPECT_EQ(state(), "ended by signal 6");
    EXPECT_FALSE(launcher->poll());
    // Nobody is told how a program ended then.
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(play(L"nothing"), "");
    EXPECT_EQ(state(), "ended");
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
    EXPECT_EQ(run(L"/bin/sh", {L"-c",
                               L"cut -d' ' -f6 /proc/$$/stat | grep -cx $$; "
                               L"test -e /proc/$$/fd/9 || echo closed"}),
              R"(1\nclosed\n)");
    // Without a shell, which has its own way with signals.
    EXPECT_EQ(run(L"/bin/grep", {L"-cE", L"Sig(Blk|Ign):.*0000000$", L"/proc/self/status"}),
              R"(2\n)");
    close(9);
    std::signal(SIGUSR2, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &ours, nullptr);
}

TEST_F(PosixLauncher, ItsFileHasNoNameAndItsChildrenAreGone) {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    ASSERT_EQ(start(L"nothing"), Launcher::kStarted);
    EXPECT_EQ(temporary.names(), std::vector<std::string>{});
    siginfo_t ended;
    waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT);
    launcher = makeLauncher();
    EXPECT_EQ(launcher->start(folder.path(L"missing"), L"", {}), Launcher::kRefused);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST_F(PosixLauncher, EndsWithTheProgramThoughAnotherKeepsItsStreams) {
    // The other one ends with the folder, and does not when it writes to nobody.
    const std::wstring file = folder.path(L"beat");
    const std::wstring other =
        L"while [ -d " + folder.path() + L" ]; do yes | head -10000; touch " + file + L"; done";
    EXPECT_TRUE(run(L"/bin/sh", {L"-c", L"echo parent; (" + other + L") & sleep 0.1"})
                    .starts_with(R"(parent\n)"));
    EXPECT_EQ(state(), "finished");
    fs::remove(file);
    waitUntil([&] { return fs::exists(file); });
}

// Whether they have a group of their own, or take no notice; those of another session go on.
TEST_F(PosixLauncher, StoppingEndsAllThatItHasStarted) {
    const auto stopped = [this](const std::wstring& script,
                                std::initializer_list<const wchar_t*> beats) {
        EXPECT_EQ(startProgram(L"/bin/sh", L"/bin/sh", {L"-c", script + L"; wait"}),
                  Launcher::kStarted);
        for (const wchar_t* beat : beats) {
            waitUntil([&] { return fs::exists(folder.native(beat)); });
        }
        launcher->stop();
        launcher->stop();
        EXPECT_EQ(state(), "stopping");
        const auto start = std::chrono::steady_clock::now();
        written();
        EXPECT_EQ(state(), "stopped");
        return std::chrono::steady_clock::now() - start;
    };
    const std::wstring beat = L"while [ -d " + folder.path() + L" ]; do sleep 0.01; touch ";
    const auto still = [this](std::wstring_view file) {
        fs::remove(folder.native(file));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        return !fs::exists(folder.native(file));
    };
    const std::wstring own = L"timeout 60 sh -c '" + beat + folder.path(L"own") + L"; done' & ";
    const std::wstring deaf = L"trap '' TERM; " + beat + folder.path(L"deaf") + L"; done & ";
    const std::wstring apart = L"setsid sh -c '" + beat + folder.path(L"apart") + L"; done' & true";
    EXPECT_LT(stopped(own + apart, {L"own", L"apart"}), std::chrono::seconds(2));
    EXPECT_GE(stopped(deaf + L"true", {L"deaf"}), std::chrono::seconds(2));
    EXPECT_TRUE(still(L"own") && still(L"deaf"));
    EXPECT_FALSE(still(L"apart"));
    // One that goes waits for that, too.
    startProgram(L"/bin/sh", L"/bin/sh", {L"-c", deaf + L"wait"});
    waitUntil([&] { return !still(L"deaf"); });
    launcher->stop();
    launcher = makeLauncher();
    EXPECT_TRUE(still(L"deaf"));
}

TEST_F(PosixLauncher, RefusedStartsTellTheReasonAtOnce) {
    const std::wstring plain = folder.put(L"plain.txt", "no program\n");
    const std::wstring unknown = folder.put(L"program", "no format of the system\n");
    fs::permissions(folder.native(L"program"), fs::perms::owner_all);
    const struct {
        std::wstring builder;
        const char* reason;
        std::wstring word = L"-source";
    } cases[] = {
        {folder.path(L"my builder"), "No such file or directory"},
        {folder.path(), "Permission denied"},
        {plain, "Permission denied"},
        {unknown, "Exec format error"},
        {L"no-such-builder-anywhere", "No such file or directory"},
        {L"", "No such file or directory"},
        {builder, "Argument list too long", std::wstring(3'000'000, L'x')},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(launcher->start(c.builder + L" -source S", c.builder, {c.word}),
                  Launcher::kRefused);
        const std::wstring program = c.builder.empty() ? L"-source" : c.builder;
        EXPECT_EQ(shown(launcher->errorText()),
                  "Cannot start '" + shown(program) + "': " + c.reason);
        EXPECT_EQ(launcher->log(), nullptr);
    }
}

// However the one before it ended.
TEST_F(Archives, TheirProcessEndsWithTheLast) {
    place(L"lib");
    use({files.path(L"lib")});
    const char* const harms[] = {"", "|harm=CloseTank|by=exit", "|harm=GetRootDir|by=crash"};
    for (const char* harm : harms) {
        std::wstring report;
        files.put(L"h.dsres", std::string("tank") + harm + "\n");
        gblnListTank(files.path(L"h.dsres"), report, nullptr, kNameList);
        EXPECT_TRUE(opens());
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "one is left after" << harm;
    }
}

}  // namespace
}  // namespace kestrel::test
