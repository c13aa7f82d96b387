#include "cli/terminal.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "services/errors.h"
#include "services/progress.h"

namespace kestrel::cli {
namespace {

class TerminalTest : public testing::Test {
  protected:
    ProgramScope program;
    std::ostringstream err;
};

TEST_F(TerminalTest, IsTheHostForItsLifetime) {
    {
        Terminal terminal(err, false);
        terminal.about(L"a\nb.gas");
        tellUser(L"Done.\r\nReally.", Icon::information);
        reportError(7, L"Out of memory");
        EXPECT_EQ(askUser(L"Sure?", Icon::question, Buttons::yesNo), Answer::no);
        EXPECT_EQ(askUser(L"Sure?", Icon::question, Buttons::okCancel), Answer::cancel);
        EXPECT_EQ(terminal.errors(), 4U);
    }
    EXPECT_EQ(gProgram().host.messages, nullptr);
    EXPECT_EQ(err.str(),
              "kestrel-cli: a\\nb.gas: Done.\\r\\nReally.\n"
              "kestrel-cli: a\\nb.gas: Error (7): Out of memory in 'Kestrel'\n"
              "kestrel-cli: a\\nb.gas: Sure?\n"
              "kestrel-cli: a\\nb.gas: Sure?\n");
}

TEST_F(TerminalTest, NoFileSendsCommandsToIt) {
    const std::wstring text = L"a\x1B[2J\t\x7F\u009B\u00A0\u00E9\r\n\r\u202Eb";
    EXPECT_EQ(oneLine(text),
              "a\x1B[2J\\t\x7F\xC2\x9B\xC2\xA0\xC3\xA9\\r\\n\\r\xE2\x80\xAE"
              "b");
    EXPECT_EQ(visibleLine(text), "a\\x1B[2J\\t\\x7F\\u009B\xC2\xA0\xC3\xA9\\r\\n\\r\\u202Eb");
    EXPECT_EQ(visibleText(text), "a\\x1B[2J\t\\x7F\\u009B\xC2\xA0\xC3\xA9\r\n\\r\\u202Eb");
}

// `text` with "9" for each digit and "a" for each run of letters.
std::string shapeOf(std::wstring_view text) {
    std::string shape;
    for (const wchar_t c : text) {
        const bool letter = (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
        if (letter && shape.ends_with('a')) continue;
        shape += letter ? 'a' : c >= L'0' && c <= L'9' ? '9' : static_cast<char>(c);
    }
    return shape;
}

TEST_F(TerminalTest, TheClockDoesNotDependOnTheLocale) {
    const Terminal terminal(err, false);
    EXPECT_EQ(shapeOf(terminal.longTime()), "99:99:99");
    EXPECT_EQ(shapeOf(terminal.longDate()), "a, 99 a 9999");
}

TEST_F(TerminalTest, ProgressIsShownOnATerminalAlone) {
    for (const bool shows : {false, true}) {
        err.str({});
        Terminal terminal(err, shows);
        {
            ProgressScope progress(nullptr, nullptr, L"Processing: ");
            EXPECT_EQ(progress.dialog() != nullptr, shows);
            EXPECT_EQ(err.str(), "") << "quick work shows nothing";
            std::this_thread::sleep_for(std::chrono::milliseconds(110));
            progress.process(L"Processing: a\x1B.gas");
            progress.show(50, L"");
            EXPECT_FALSE(progress.didCancel());
        }
        const std::string line = R"(Processing: a\x1B.gas 0%)";
        const std::string blanks(line.size(), ' ');
        EXPECT_EQ(err.str(), shows ? '\r' + line + '\r' + blanks + '\r' : "");
    }
}

TEST_F(TerminalTest, AMessageTakesTheLineOfTheProgress) {
    Terminal terminal(err, true);
    terminal.showProgress(L"abc");
    terminal.showProgress(L"d");
    terminal.error(L"x");
    terminal.showProgress({});
    EXPECT_EQ(err.str(), "\rabc\rd  \r \rkestrel-cli: x\n");
}

}  // namespace
}  // namespace kestrel::cli
