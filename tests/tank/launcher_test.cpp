#include "tank/launching.h"

namespace kestrel::test {
namespace {

using LauncherTest = Launching;

TEST_F(LauncherTest, HandsOutBothStreamsAsTextAndTheExitCode) {
    const std::string line = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80|\xE9t\xE9|\x80\xFF\xC3(|a";
    const std::wstring expected = L"out\nerr\nout\ninput at its end\n" +
                                  consoleText(line + std::string("\0b|", 3)) + L"\r\n\n\rend" +
                                  consoleText("\xE2\x82");
    EXPECT_EQ(play(L"dribble"), shown(expected));
    EXPECT_EQ(state(), "finished");
    EXPECT_EQ(play(L"nothing"), "");
}

TEST_F(LauncherTest, HandsOutPiecesThatAWindowCanTakeIn) {
    build = L"1";
    ASSERT_EQ(start(L"flood"), Launcher::kStarted);
    waitForAll();
    for (const std::size_t size : {262'144U, 262'144U, 262'144U, 213'568U, 0U}) {
        waitUntil([this] { return poll() || !piece.empty(); });
        EXPECT_EQ(piece.size(), size);
    }
    EXPECT_EQ(state(), "finished");
    EXPECT_EQ(text.substr(text.size() - 64), std::wstring(62, L'x') + L"\r\n");
}

TEST_F(LauncherTest, RunsOneProgramAtATimeWhichOutlivesIt) {
    ASSERT_EQ(start(L"wait"), Launcher::kStarted);
    waitUntil([this] { return poll() || !text.empty(); });
    EXPECT_EQ(start(L"words"), Launcher::kStillRunning);
    EXPECT_FALSE(poll());
    EXPECT_EQ(text, L"");
    launcher.reset();
    folder.put(L"archive.dsres.go", "");
    waitForAll();
}

TEST_F(LauncherTest, StartsAnotherThoughNobodyAskedForTheLastOutput) {
    ASSERT_EQ(start(L"dribble"), Launcher::kStarted);
    waitForAll();
    EXPECT_FALSE(poll()) << "half a letter waits for more";
    waitUntil([this] { return start(L"words") == Launcher::kStarted; });
    EXPECT_TRUE(written().starts_with("<-source>"));
}

TEST_F(LauncherTest, OneThatWritesTooMuchIsStopped) {
    launcher = makeLauncher(1'000'000);
    build = L"50";
    ASSERT_EQ(start(L"flood"), Launcher::kStarted);
    EXPECT_EQ(state(), "running");
    written();
    EXPECT_EQ(state(), "stopped, too much output");
    launcher->log()->file().whole([&](std::string_view bytes) {
        EXPECT_TRUE(bytes.ends_with("x\r\n") && bytes.size() == 1'000'000U);
    });
}

TEST(OutputLog, TellsHowItsProgramStands) {
    OutputLog log;
    EXPECT_EQ(shown(log.stateText()), "running");
    log.end = {ProgramEnd::kCode, -1073741819};
    EXPECT_EQ(shown(log.stateText()), "failed with exit code 0xC0000005");
}

// Of more than 100 bytes the last ones, from the start of a line on.
TEST(LogReader, GoesOnAtTheEndOfWhatIsTooLong) {
    const auto log = std::make_shared<OutputLog>();
    LogReader reader(log, 100);
    const auto next = [&] {
        const LogReader::Piece piece = reader.next();
        return (piece.anew ? "anew: " : "") + shown(piece.text);
    };
    const std::string line = std::string(48, 'x') + "\r\n";
    log->add("a\n\xC3");
    EXPECT_EQ(next(), R"(a\n)");
    log->add(line + line + line);
    EXPECT_EQ(next(), "anew: " + shown(fromUtf8(line)));
    log->add(line + "\xC3");
    EXPECT_EQ(next(), shown(fromUtf8(line)));
    EXPECT_EQ(next(), "");
    log->end = ProgramEnd{};
    EXPECT_EQ(next(), shown(consoleText("\xC3")));
    EXPECT_EQ(next(), "");
}

TEST(LogLines, BreaksOnlyLinesThatAreTooLong) {
    const std::wstring longest(LogLines::kLongest, L'x');
    ASSERT_EQ(longest.size(), 4096U);
    const std::wstring expected = longest + L"\r\n" + longest + L"\r\nx\n" + longest + L"\ry\r\n\n";
    const std::wstring text = longest + longest + L"x\n" + longest + L"\ry\r\n\n";
    for (const std::size_t piece : {std::size_t{1}, std::size_t{1000}, text.size()}) {
        LogLines lines;
        std::wstring log;
        for (std::size_t i = 0; i < text.size(); i += piece)
            log += lines.add(text.substr(i, piece));
        EXPECT_TRUE(log == expected) << piece;
    }
    const std::pair<wchar_t, const wchar_t*> halves[] = {{L'\xD7FF', L"\r\nyz"},
                                                         {L'\xD800', L"y\r\nz"},
                                                         {L'\xDBFF', L"y\r\nz"},
                                                         {L'\xDC00', L"\r\nyz"}};
    for (const auto& [half, end] : halves) {
        const std::wstring line = longest.substr(1) + half;
        EXPECT_EQ(shown(LogLines().add(line + L"yz")), shown(line + end));
    }
}

// What the decoder makes of `bytes`, cut at `first` and `second`.
std::wstring decoded(std::string_view bytes, std::size_t first = 0, std::size_t second = 0) {
    OutputDecoder decoder;
    std::wstring text = decoder.decode(bytes.substr(0, first));
    text += decoder.decode(bytes.substr(first, second - first));
    text += decoder.decode(bytes.substr(second));
    return text += decoder.rest();
}

TEST(OutputDecoder, ReadsEachLineForItselfWhereverTheBytesAreCut) {
    std::string bytes = "a";
    std::wstring expected = L"a";
    for (const char* line : {"\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80\n", "\xED\x9F\xBF\r\n",
                             "\xEE\x80\x80\r", "plain\n"}) {
        bytes += line;
        expected += fromUtf8(line);
    }
    for (const char* line :
         {"\xE9\xC3\xA9", "\xE2\x82|", "\xF0\x9F\x98", "\xED\xA0\x80", "\xC0\x80", "\xC3\xA9\xED",
          "\xED\xBF\xBF\xE9", "\xF4\x90\x80\x80", "\x81\x8D|\xF5|\xE9", "\x80", "\xFF"}) {
        bytes.append(line).append("\r");
        expected += consoleText(line) + L"\r";
    }
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            ASSERT_EQ(shown(decoded(bytes, first, second)), shown(expected))
                << first << ", " << second;
        }
    }
}

TEST(OutputDecoder, ALongLineDoesNotWaitForItsEndAndIsCutBetweenLetters) {
    OutputDecoder decoder;
    EXPECT_EQ(decoder.decode("ab\xC3\xA9" + std::string(4093, 'c')), L"ab");
    EXPECT_EQ(decoder.decode("d").size(), 4095U);
    EXPECT_EQ(decoder.rest(), L"");
    for (const std::string letter : {"\xC2\xA2", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBD",
                                     "\xF0\x90\x80\x80", "\xF0\x9F\x98\x80"}) {
        for (std::size_t before = 4090; before < 4096; ++before) {
            const std::string line =
                "\xC3\xA9" + std::string(before - 2, 'a') + letter + letter + "e";
            EXPECT_EQ(shown(decoded(line)), line);
        }
    }
    // The whole of a line that just fits is read in one way.
    const std::string line = "\xC3\xA9" + std::string(4092, 'a') + "\xE2\x82";
    EXPECT_EQ(shown(decoded(line + "\r")), shown(consoleText(line) + L"\r"));
}

}  // namespace
}  // namespace kestrel::test
