#include "services/progress.h"

#include <gtest/gtest.h>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

TEST(ProgressScope, RestoresTheOwnerWhenTheDialogCannotBeShown) {
    class Unshowable final : public Progress {
      public:
        void show(Owner*) override { throw 1; }
        void Process(std::wstring_view) override {}
        void SubProcess(std::wstring_view) override {}
        void ShowProgress(int, std::wstring_view) override {}
        void CanCancel(bool) override {}
        bool DidCancel() const override { return false; }
    };
    class Maker final : public ProgressMaker {
      public:
        std::unique_ptr<Progress> makeProgress() override { return std::make_unique<Unshowable>(); }
    } maker;
    test::RecordingHost host;
    gProgram().host.progress = &maker;
    EXPECT_THROW(ProgressScope(nullptr, &host, L"Work"), int);
    EXPECT_FALSE(gProgram().progressShowing);
    EXPECT_EQ(host.log, (Lines{"disable", "enable", "focus"}));
}

TEST(ProgressScope, AnInnerScopeLeavesTheOutersFlag) {
    test::RecordingHost host;
    ProgressScope outer(nullptr, nullptr, L"Outer");
    { ProgressScope inner(nullptr, nullptr, L"Inner"); }
    EXPECT_TRUE(gProgram().progressShowing);
}

TEST(ProgressScope, WorksWithoutAHost) {
    ProgramScope program;
    ProgressScope scope(nullptr, nullptr, L"Work");
    scope.process(L"More");
    scope.show(1, L"one");
    EXPECT_FALSE(scope.didCancel());
}

TEST(Percentage, RoundsHalvesToEven) {
    const struct {
        std::size_t index;
        std::size_t count;
        int percentage;
    } cases[] = {{0, 0, 0},  {0, 5, 0},   {1, 3, 33},  {2, 3, 67},     {1, 8, 12},
                 {3, 8, 38}, {1, 200, 0}, {3, 200, 2}, {100, 100, 100}};
    for (const auto& c : cases) {
        EXPECT_EQ(percentage(c.index, c.count), c.percentage) << c.index << " of " << c.count;
    }
}

}  // namespace
}  // namespace kestrel
