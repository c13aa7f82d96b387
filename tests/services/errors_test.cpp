#include "services/errors.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

const std::string kEnd = " in 'gTried' | Kestrel | exclamation | ok";

TEST(Errors, GuardReportsOnceAndReturnsADefault) {
    const struct {
        std::function<int()> body;
        std::string report;
    } cases[] = {
        {[]() -> int { throw RunTimeError(kDiskFull, L"Cannot write 'caf\u00E9'"); },
         "Error (61): Cannot write 'caf\xC3\xA9'"},
        {[]() -> int { throw std::bad_alloc(); }, "Error (7): Out of memory"},
        {[]() -> int { throw std::length_error("long"); }, "Error (7): Out of memory"},
        {[]() -> int { throw std::runtime_error("odd state"); }, "Error (51): odd state"},
        {[]() -> int { throw 3; }, "Error (51): Internal error"},
    };
    test::RecordingHost host;
    for (const auto& c : cases) {
        host.log.clear();
        EXPECT_EQ(guarded(L"gTried", c.body), 0);
        EXPECT_EQ(host.log, Lines{"ask: " + c.report + kEnd});
    }
    host.log.clear();
    EXPECT_EQ(guarded(L"gTried", [] { return 9; }), 9);
    EXPECT_EQ(gProgram().routine, L"gTried");
    EXPECT_EQ(host.log, Lines{});
    gProgram().host = {};
    EXPECT_EQ(guarded(L"gTried", cases[0].body), 0) << "nobody to tell";
}

TEST(Errors, NamesTheRoutineThatFailedOrTheSourceWithoutOne) {
    test::RecordingHost host;
    reportError(5, L"What", L"Source");
    guarded(L"gTried", [] {
        guarded(L"gInner", [] {});
        throw std::runtime_error("odd state");
    });
    EXPECT_EQ(host.log, (Lines{"ask: Error (5): What in 'Source' | Kestrel | exclamation | ok",
                               "ask: Error (51): odd state" + kEnd}));
}

}  // namespace
}  // namespace kestrel
