#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "cli/json.h"
#include "cli/terminal.h"
#include "services/program.h"
#include "services/progress.h"

namespace kestrel::cli {
namespace {

TEST(Texts, SendNoCommandsToATerminal) {
    const std::wstring text = L"a\x1B[2J\t\x7F\u009B\u00A0\u00E9\r\n\r\u202Ez";
    EXPECT_EQ(oneLine(text), "a\x1B[2J\\t\x7F\xC2\x9B\xC2\xA0\xC3\xA9\\r\\n\\r\xE2\x80\xAEz");
    EXPECT_EQ(visibleLine(text), "a\\x1B[2J\\t\\x7F\\u009B\xC2\xA0\xC3\xA9\\r\\n\\r\\u202Ez");
    EXPECT_EQ(visibleText(text), "a\\x1B[2J\t\\x7F\\u009B\xC2\xA0\xC3\xA9\r\n\\r\\u202Ez");
}

TEST(Texts, AreValidJson) {
    const std::wstring text =
        L"a \"b\" \\c/ \r\n\t\x01\x1F\x7F caf\xE9 \x20AC\x81 \xD7FF\xD800 x\xDC80y\xDFFF\xE000";
    EXPECT_EQ(jsonText(text + L'\0'), R"("a \"b\" \\c/ \r\n\u0009\u0001\u001f\u007f caf)"
                                      "\xC3\xA9 \xE2\x82\xAC\xC2\x81 \xED\x9F\xBF\\ud800 "
                                      "x\\udc80y\\udfff\xEE\x80\x80\\u0000\"");
}

TEST(TerminalTest, AMessageTakesTheLineOfTheProgress) {
    const ProgramScope program;
    std::ostringstream err;
    EXPECT_EQ(Terminal(err, false).makeProgress(), nullptr);
    EXPECT_EQ(gProgram().host.messages, nullptr);
    Terminal terminal(err, true);
    {
        ProgressScope progress(nullptr, nullptr, L"Processing: ");
        EXPECT_EQ(err.str(), "") << "quick work shows nothing";
        std::this_thread::sleep_for(std::chrono::milliseconds(110));
        progress.process(L"Processing: a\x1B.gas");
        progress.show(50, L"");
        EXPECT_FALSE(progress.didCancel());
    }
    terminal.about(L"a\nb.gas");
    terminal.showProgress(L"abc");
    terminal.showProgress(L"d");
    EXPECT_EQ(askUser(L"One\r\n?", Icon::question, Buttons::yesNo), Answer::no);
    EXPECT_EQ(askUser(L"Two?", Icon::question, Buttons::okCancel), Answer::cancel);
    EXPECT_EQ(terminal.errors(), 2U);
    EXPECT_EQ(err.str(), "\rProcessing: a\\x1B.gas 0%\r" + std::string(24, ' ') +
                             "\r\rabc\rd  \r \r"
                             "kestrel-cli: a\\nb.gas: One\\r\\n?\nkestrel-cli: a\\nb.gas: Two?\n");
}

}  // namespace
}  // namespace kestrel::cli
