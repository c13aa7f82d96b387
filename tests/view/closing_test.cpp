#include "view/closing.h"

#include <gtest/gtest.h>

namespace kestrel::test {
namespace {

using enum Closing::State;
using enum Closing::Step;

TEST(Closing, GoesWhenNothingIsAtWork) {
    Closing closing;
    EXPECT_EQ(closing.next({}), none);
    EXPECT_EQ(closing.state(), open);
    closing.begin();
    const struct {
        Closing::Work work;
        Closing::Step step;
        Closing::State state;
    } moments[] = {
        {{.yields = true, .inDialog = true}, none, closed},
        {{.inDialog = true}, endDialog, endingDialogs},
        {{.inDialog = true, .dialogEnds = true}, none, endingDialogs},
        {{.inDialog = true}, endDialog, endingDialogs},
        {{.yields = true}, none, endingDialogs},
        {{}, go, gone},
        {{.inDialog = true}, none, gone},
    };
    for (const auto& moment : moments) {
        EXPECT_EQ(closing.next(moment.work), moment.step);
        EXPECT_EQ(closing.state(), moment.state);
    }
    closing.begin();
    EXPECT_EQ(closing.next({}), none);
}

}  // namespace
}  // namespace kestrel::test
