#include "tank/launcher.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "support/shown.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using namespace std::chrono_literals;
using test::shown;
using test::TempFolder;
using Steady = std::chrono::steady_clock;

const std::wstring kBuilder = L"" KESTREL_STUB_BUILDER;

class LauncherTest : public testing::Test {
  public:
    std::wstring line(const std::wstring& part) const {
        return kBuilder + L" -source S -out " + target + L" -title \"" + part + L'"';
    }

    Launcher::Result start(const std::wstring& part) {
        text.clear();
        return launcher->start(line(part), kBuilder);
    }

    // Takes output until `holds`, for some seconds at most.
    void pollUntil(const std::function<bool(const ProgramOutput&)>& holds) {
        const auto limit = Steady::now() + 60s;
        do {
            ASSERT_LT(Steady::now(), limit) << "after " << shown(text.substr(0, 1000));
            last = launcher->poll();
            text += last.text;
            if (last.text.empty()) std::this_thread::sleep_for(1ms);
        } while (!holds(last));
    }

    void pollToEnd() {
        pollUntil([](const ProgramOutput& output) { return output.ended; });
    }

    // All that the builder writes as `part`.
    std::string play(const std::wstring& part) {
        EXPECT_EQ(start(part), Launcher::kStarted) << shown(launcher->errorText());
        pollToEnd();
        return shown(text);
    }

    // A file that may be run.
    std::wstring put(std::wstring_view name, std::string_view bytes) const {
        const std::wstring path = folder.put(name, bytes);
        std::filesystem::permissions(folder.native(name), std::filesystem::perms::owner_all);
        return path;
    }

    TempFolder folder;
    std::wstring target = folder.path(L"my archive.dsres");
    std::unique_ptr<Launcher> launcher = makeLauncher();
    std::wstring text;
    ProgramOutput last;
};

TEST_F(LauncherTest, HandsOutBothStreamsAndTheExitCode) {
    const struct {
        const wchar_t* part;
        std::string text;
        int exitCode;
    } cases[] = {
        {L"streams", R"(out 0\nerr 0\nout 1\nerr 1\nout 2\nerr 2\n)", 0},
        {L"input", R"(input at its end\n)", 0},
        {L"nothing", "", 0},
        {L"words", R"(<-source>\n<S>\n<-out>\n<)" + shown(target) + R"(>\n<-title>\n<words>\n)", 7},
        {L"crash", "about to crash", 128 + 6},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(play(c.part), c.text);
        EXPECT_EQ(last.exitCode, c.exitCode);
    }
    EXPECT_EQ(launcher->poll().exitCode, 128 + 6);
    play(L"flood");
    ASSERT_EQ(text.size(), 50'000'000 / 64 * 64);
    EXPECT_EQ(text.substr(0, 64), text.substr(text.size() - 64));
}

TEST_F(LauncherTest, ReadsAnyBytesAsText) {
    play(L"dribble");
    const std::wstring expected =
        std::wstring(L"\u00E9\u20AC\U0001F600|\u00E9t\u00E9|\u20AC\u00FF\u00C3(|a") + L'\0' +
        L"b|\r\n\n\rend\u00E2\u201A";
    EXPECT_EQ(shown(text), shown(expected));
}

TEST_F(LauncherTest, RunsOneProgramAtATime) {
    ASSERT_EQ(start(L"wait"), Launcher::kStarted);
    EXPECT_EQ(launcher->start(line(L"words"), kBuilder), Launcher::kStillRunning);
    pollUntil([&](const ProgramOutput&) { return text == L"waiting\n"; });
    EXPECT_FALSE(last.ended);
    folder.put(L"my archive.dsres.go", "");
    pollToEnd();
    EXPECT_TRUE(text.ends_with(L"late output, more than any pipe can hold of it\n"));
    EXPECT_EQ(play(L"input"), R"(input at its end\n)");
    ASSERT_EQ(start(L"nothing"), Launcher::kStarted);
    const auto limit = Steady::now() + 60s;
    while (start(L"input") != Launcher::kStarted && Steady::now() < limit) {
        std::this_thread::sleep_for(1ms);
    }
    pollToEnd();
    EXPECT_EQ(shown(text), R"(input at its end\n)") << "though nobody asked for the last output";
}

TEST_F(LauncherTest, ProgramOutlivesItsLauncher) {
    ASSERT_EQ(start(L"wait"), Launcher::kStarted);
    pollUntil([&](const ProgramOutput&) { return !text.empty(); });
    launcher.reset();
    folder.put(L"my archive.dsres.go", "");
    waitpid(-1, nullptr, 0);
    EXPECT_EQ(folder.bytes(L"my archive.dsres.done"), "done");
}

TEST_F(LauncherTest, LeavesNothingBehind) {
    const std::wstring temporary = folder.path();
    ASSERT_EQ(setenv("TMPDIR", shown(temporary).c_str(), 1), 0);
    play(L"streams");
    ASSERT_EQ(start(L"nothing"), Launcher::kStarted);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
    pollToEnd();
    EXPECT_EQ(launcher->start(folder.path(L"missing"), L""), Launcher::kRefused);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
    unsetenv("TMPDIR");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(LauncherTest, EndsWithTheProgramThoughAnotherKeepsItsStreams) {
    const std::wstring script = put(L"parent", "#!/bin/sh\nsleep 5 &\necho parent\n");
    const auto begin = Steady::now();
    ASSERT_EQ(launcher->start(script, script), Launcher::kStarted);
    pollToEnd();
    EXPECT_LT(Steady::now() - begin, 3s);
    EXPECT_EQ(text, L"parent\n");
}

TEST_F(LauncherTest, RefusedStartsTellTheReasonAtOnce) {
    const std::wstring plain = folder.put(L"plain.txt", "no program\n");
    const std::wstring program = put(L"program", "no format of the system\n");
    put(L"my", "#!/bin/sh\necho planted\n");
    const struct {
        std::wstring builder;
        const char* reason;
        std::wstring option = L" -source S";
    } cases[] = {
        {folder.path(L"my builder"), "my builder': No such file or directory"},
        {folder.path(), "Permission denied"},
        {plain, "Permission denied"},
        {program, "Exec format error"},
        {L"no-such-builder-anywhere", "No such file or directory"},
        {L"", "No such file or directory"},
        {kBuilder, "Argument list too long", L" -title " + std::wstring(3'000'000, L'x')},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(launcher->start(c.builder + c.option, c.builder), Launcher::kRefused);
        EXPECT_TRUE(shown(launcher->errorText()).ends_with(c.reason))
            << shown(launcher->errorText());
        EXPECT_TRUE(launcher->poll().ended);
    }
}

TEST(OptionWords, KeepPathsAndQuotedTextsWhole) {
    using Words = std::vector<std::wstring>;
    const struct {
        const wchar_t* arguments;
        Words words;
    } cases[] = {
        {L"", {}},
        {L"-source /a b/c  d -out x y.dsres -flagdev -priority -5 -title \"\"",
         {L"-source", L"/a b/c  d", L"-out", L"x y.dsres", L"-flagdev", L"-priority", L"-5",
          L"-title", L""}},
        {L"-author \"A - B -flagdev\" -title \"a\"",
         {L"-author", L"A - B -flagdev", L"-title", L"a"}},
        {L"-title \"say \"hi\" now\" x", {L"-title", L"say hi now", L"x"}},
        {L"-title \"open", {L"-title", L"open"}},
        {L"/opt/run me -x", {L"/opt/run me", L"-x"}},
        {L"-source /a-b -out -", {L"-source", L"/a-b", L"-out", L"-"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(optionWords(c.arguments), c.words) << shown(c.arguments);
    }
}

TEST(LogLines, BreaksOnlyLinesThatAreTooLong) {
    const std::wstring longest(LogLines::kLongest, L'x');
    const std::wstring expected = longest + L"\r\n" + longest + L"\r\nx\n" + longest + L"\ry\r\n\n";
    const std::wstring text = longest + longest + L"x\n" + longest + L"\ry\r\n\n";
    for (const std::size_t piece : {std::size_t{1}, std::size_t{1000}, text.size()}) {
        LogLines lines;
        std::wstring log;
        for (std::size_t i = 0; i < text.size(); i += piece)
            log += lines.add(text.substr(i, piece));
        EXPECT_TRUE(log == expected) << piece;
    }
}

TEST(OutputDecoder, SameTextWhereverTheBytesAreCut) {
    const std::string_view bytes =
        "a\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\xE9|\xE2\x82|\xF0\x9F\x98|\xED\xA0\x80|\xC0\x80|"
        "\xF4\x90\x80\x80|\x81\x8D|\xF5|\xE9";
    OutputDecoder whole;
    std::wstring expected = whole.decode(bytes);
    expected += whole.rest();
    EXPECT_EQ(expected.substr(0, 8), L"a\u00E9|\u20AC|\U0001F600|\u00E9");
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            OutputDecoder decoder;
            std::wstring text = decoder.decode(bytes.substr(0, first));
            text += decoder.decode(bytes.substr(first, second - first));
            text += decoder.decode(bytes.substr(second));
            text += decoder.rest();
            ASSERT_EQ(shown(text), shown(expected)) << first << ", " << second;
        }
    }
}

}  // namespace
}  // namespace kestrel
