#include "services/program.h"

#include <gtest/gtest.h>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

TEST(ProgramRecord, QuestionsCarryTheFileDescription) {
    test::RecordingHost host;
    host.answers = {Answer::no};
    EXPECT_EQ(askUser(L"Sure?", Icon::question, Buttons::yesNo), Answer::no);
    tellUser(L"Done.", Icon::information);
    EXPECT_EQ(host.log, (Lines{"ask: Sure? | Kestrel Template Browser | question | yesNo",
                               "ask: Done. | Kestrel Template Browser | information | ok"}));
}

TEST(ProgramRecord, AHostThatCannotAskAgreesToNothing) {
    ProgramScope scope;
    EXPECT_EQ(askUser(L"?", Icon::question, Buttons::yesNo), Answer::no);
    EXPECT_EQ(askUser(L"?", Icon::question, Buttons::yesNoCancel), Answer::cancel);
    EXPECT_EQ(askUser(L"?", Icon::question, Buttons::okCancel), Answer::cancel);
    tellUser(L"Done.", Icon::information);
}

}  // namespace
}  // namespace kestrel
