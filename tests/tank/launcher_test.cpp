#include "support/system.h"
#include "tank/launching.h"

namespace kestrel {
namespace {

using namespace std::chrono_literals;
using test::shown;
using Steady = std::chrono::steady_clock;

using LauncherTest = test::Launching;

TEST_F(LauncherTest, HandsOutBothStreamsAndTheExitCode) {
    const struct {
        const wchar_t* part;
        std::string text;
        int exitCode;
    } cases[] = {
        {L"streams", R"(out 0\nerr 0\nout 1\nerr 1\nout 2\nerr 2\n)", 0},
        {L"input", R"(input at its end\n)", 0},
        {L"nothing", "", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(play(c.part), c.text);
        EXPECT_EQ(last.exitCode, c.exitCode);
    }
    play(L"flood");
    ASSERT_EQ(text.size(), 50'000'000 / 64 * 64);
    EXPECT_EQ(text.substr(0, 64), text.substr(text.size() - 64));
}

TEST_F(LauncherTest, ReadsAnyBytesAsText) {
    play(L"dribble");
    std::string line = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80|\xE9t\xE9|\x80\xFF\xC3(|a";
    line.append(1, '\0').append("b|");
    const std::wstring expected = consoleText(line) + L"\r\n\n\rend" + consoleText("\xE2\x82");
    EXPECT_EQ(shown(text), shown(expected));
}

TEST_F(LauncherTest, RunsOneProgramAtATime) {
    ASSERT_EQ(start(L"wait"), Launcher::kStarted);
    EXPECT_EQ(launcher->start(line(L"words"), builder), Launcher::kStillRunning);
    pollUntil([&](const ProgramOutput&) { return text == L"waiting\n"; });
    EXPECT_FALSE(last.ended);
    folder.put(L"archive.dsres.go", "");
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
    folder.put(L"archive.dsres.go", "");
    const auto limit = Steady::now() + 60s;
    while (folder.bytes(L"archive.dsres.done") != "done" && Steady::now() < limit) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(folder.bytes(L"archive.dsres.done"), "done");
}

TEST_F(LauncherTest, LeavesNothingBehind) {
    test::setTemporaryFolder(folder.native());
    play(L"streams");
    EXPECT_EQ(launcher->start(folder.path(L"missing"), L""), Launcher::kRefused);
    test::setTemporaryFolder({});
    // A file may stay until the system has let go of what the program had open.
    const auto limit = Steady::now() + 10s;
    while (!folder.names().empty() && Steady::now() < limit) std::this_thread::sleep_for(10ms);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
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
        "a\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80\n\xE9\xC3\xA9\r\n\xE2\x82|"
        "\n\xF0\x9F\x98\r\xED\xA0\x80\n"
        "\xC0\x80\n\xED\xA0\x80\xE9\r\n\xF4\x90\x80\x80\n\x81\x8D|\xF5|\xE9";
    OutputDecoder whole;
    std::wstring expected = whole.decode(bytes);
    expected += whole.rest();
    EXPECT_TRUE(expected.starts_with(L"a\u00E9|\u20AC|\U0001F600\n" + consoleText("\xE9\xC3\xA9") +
                                     L"\r\n"))
        << shown(expected);
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
