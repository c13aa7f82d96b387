#include "services/program.h"

#include <new>
#include <stdexcept>

#include "services/fixture.h"
#include "services/progress.h"

namespace kestrel::test {
namespace {

using Program = Services;

TEST_F(Program, NobodyToAskAgreesToNothing) {
    tellUser(L"Done.", Icon::information);
    EXPECT_EQ(host.log, Lines{"ask: Done. | Kestrel Template Browser | information | ok"});
    gProgram().host = {};
    tellUser(L"Done.", Icon::information);
    EXPECT_EQ(promptUser(L"Which?", L"Title", L"before"), L"");
    const std::pair<Buttons, Answer> cases[] = {
        {Buttons::ok, Answer::ok},    {Buttons::okCancel, Answer::cancel},
        {Buttons::yesNo, Answer::no}, {Buttons::yesNoCancel, Answer::cancel},
        {Buttons::noYes, Answer::no}, {Buttons::openDiscardLater, Answer::cancel},
    };
    for (const auto& [buttons, answer] : cases) {
        EXPECT_EQ(askUser(L"?", Icon::question, buttons), answer);
    }
}

TEST_F(Program, AGuardReportsOnceAndReturnsADefault) {
    const std::pair<std::function<int()>, std::string> cases[] = {
        {[]() -> int { throw RunTimeError(kDiskFull, L"Cannot write 'caf\u00E9'"); },
         "Error (61): Cannot write 'caf\xC3\xA9'"},
        {[]() -> int { throw std::bad_alloc(); }, "Error (7): Out of memory"},
        {[]() -> int { throw std::length_error("long"); }, "Error (7): Out of memory"},
        {[]() -> int { throw 3; }, "Error (51): Internal error"},
        {[]() -> int {
             guarded(L"gInner", [] {});
             throw std::runtime_error("odd state");
         },
         "Error (51): odd state"},
    };
    reportError(5, L"What", L"Source");
    EXPECT_EQ(host.log, Lines{"ask: Error (5): What in 'Source' | Kestrel | exclamation | ok"});
    for (const auto& [body, report] : cases) {
        host.log.clear();
        EXPECT_EQ(guarded(L"gTried", body), 0);
        EXPECT_EQ(host.log, Lines{"ask: " + report + " in 'gTried' | Kestrel | exclamation | ok"});
    }
    host.log.clear();
    EXPECT_EQ(guarded(L"gTried", [] { return 9; }), 9);
    gProgram().host = {};
    EXPECT_EQ(guarded(L"gTried", cases[0].first), 0) << "nobody to tell";
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Program, ProgressEndsWhenItsOwnerFailsAndAnInnerOneLeavesTheOuters) {
    class Failing final : public Owner {
      public:
        void enable(bool) override { throw 1; }
        void focus() override { ++focused; }
        int focused = 0;
    } owner;
    EXPECT_THROW(ProgressScope(nullptr, &owner, L"Work"), int);
    EXPECT_EQ(owner.focused, 1);
    EXPECT_EQ(host.liveDialogs, 0U);
    EXPECT_FALSE(gProgram().progressShowing);
    const ProgressScope outer(nullptr, nullptr, L"Outer");
    ProgressScope(nullptr, nullptr, L"Inner");
    EXPECT_TRUE(gProgram().progressShowing);
    gProgram().host = {};
    ProgressScope scope(nullptr, nullptr, L"Work");
    scope.process(L"More");
    scope.show(1, L"one");
    scope.overall(L"one");
    EXPECT_TRUE(scope.goesOn());
}

TEST_F(Program, PercentagesRoundHalvesToEven) {
    const std::array<std::size_t, 3> cases[] = {{0, 0, 0},   {0, 5, 0},   {1, 3, 33},
                                                {2, 3, 67},  {1, 8, 12},  {3, 8, 38},
                                                {1, 200, 0}, {3, 200, 2}, {100, 100, 100}};
    for (const auto& [index, count, whole] : cases) {
        EXPECT_EQ(percentage(index, count), static_cast<int>(whole)) << index << " of " << count;
    }
}

}  // namespace
}  // namespace kestrel::test
