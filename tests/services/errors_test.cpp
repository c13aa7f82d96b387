#include "services/errors.h"

#include <gtest/gtest.h>

#include <new>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

int fail(int kind) {
    switch (kind) {
        case 0:
            throw RunTimeError(kDiskFull, L"Cannot write 'caf\u00E9'");
        case 1:
            throw std::bad_alloc();
        case 2:
            throw std::runtime_error("odd state");
        case 3:
            throw kind;
        case 4:
            std::wstring().reserve(std::wstring().max_size() + 1);
            return 0;
        default:
            return kind;
    }
}

TEST(Errors, GuardReportsOnceAndReturnsADefault) {
    const char* const reports[] = {
        "Error (61): Cannot write 'caf\xC3\xA9' in 'gTried'",
        "Error (7): Out of memory in 'gTried'",
        "Error (51): odd state in 'gTried'",
        "Error (51): Internal error in 'gTried'",
        "Error (7): Out of memory in 'gTried'",
    };
    for (int kind = 0; kind < 5; ++kind) {
        test::RecordingHost host;
        EXPECT_EQ(guarded(L"gTried", [&] { return fail(kind); }), 0);
        EXPECT_EQ(host.log,
                  Lines{"ask: " + std::string(reports[kind]) + " | Kestrel | exclamation | ok"});
    }
    test::RecordingHost host;
    EXPECT_EQ(guarded(L"gTried", [] { return fail(9); }), 9);
    EXPECT_EQ(gProgram().routine, L"gTried");
    EXPECT_EQ(host.log, Lines{});
}

TEST(Errors, TheRoutineThatFailedIsNamedAfterAnInnerOneWentWell) {
    test::RecordingHost host;
    guarded(L"gOuter", [] {
        guarded(L"gInner", [] {});
        fail(2);
    });
    EXPECT_EQ(host.log, Lines{"ask: Error (51): odd state in 'gOuter' | Kestrel | exclamation | "
                              "ok"});
}

TEST(Errors, SourceStandsInForAnEmptyRoutine) {
    test::RecordingHost host;
    reportError(5, L"What", L"Source");
    EXPECT_EQ(host.log, Lines{"ask: Error (5): What in 'Source' | Kestrel | exclamation | ok"});
}

TEST(Errors, AHostThatCannotTellDoesNotFail) {
    test::RecordingHost host;
    gProgram().host = {};
    EXPECT_EQ(guarded(L"gTried", [] { return fail(0); }), 0);
}

}  // namespace
}  // namespace kestrel
