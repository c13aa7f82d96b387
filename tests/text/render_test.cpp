#include "text/render.h"

#include <gtest/gtest.h>

#include "support/recordinghost.h"

namespace kestrel {
namespace {

const std::wstring kEquals(50, L'=');
const std::wstring kMinus(50, L'-');
const std::wstring kStars(50, L'*');

GasTemplate crate() {
    return {L"Template0",
            L"Template",
            {{L"name", L"box", {}, false, 0}, {L"mass", L"2", L"physics", false, 1}},
            L"",
            L"Line 3:\t crate\r\n"};
}

std::wstring crateHeader() {
    return L"DS Template for: Template0\r\nFormat: TAB Delimited with CR+LF\r\n" + kEquals +
           L"\r\nName\tValue\tGroup\r\n" + kMinus + L"\r\n";
}

const std::wstring kNameRow = L"name\tbox\tTemplate0\\\r\n";
const std::wstring kMassRow = L"mass\t2\tTemplate0\\physics_1\\\r\n";

std::wstring crateText() {
    return crateHeader() + kNameRow + kMassRow + kMinus + L"\r\nComments:\r\nLine 3:\t crate\r\n" +
           kStars + L"\r\n";
}

class Render : public testing::Test {
  protected:
    test::RecordingHost host_;
    std::wstring filter_;
};

TEST_F(Render, WholeTemplate) {
    EXPECT_EQ(gstrMakeText(crate(), nullptr, filter_, false, nullptr), crateText());
    EXPECT_EQ(filter_, L"Template0\\");
    filter_ = L"nothing like it";
    EXPECT_EQ(gstrMakeText(crate(), nullptr, filter_, false, nullptr), crateText());
}

TEST_F(Render, FilteredTemplateHasNoComments) {
    const struct {
        const wchar_t* filter;
        std::wstring rows;
        const wchar_t* after;
    } cases[] = {
        {L"", kNameRow, L"Template0\\"},
        {L"Template0", kNameRow, L"Template0\\"},
        {L"Template0\\physics_1", kMassRow, L"Template0\\physics_1\\"},
        {L"Template0\\physics_1\\", kMassRow, L"Template0\\physics_1\\"},
        {L"Template0\\Physics_1", L"", L"Template0\\Physics_1\\"},
    };
    for (const auto& c : cases) {
        filter_ = c.filter;
        EXPECT_EQ(gstrMakeText(crate(), nullptr, filter_, true, nullptr),
                  crateHeader() + c.rows + kStars + L"\r\n");
        EXPECT_EQ(filter_, c.after);
    }
}

TEST_F(Render, OddTemplates) {
    const GasTemplate slash{L"a\\", L"Template", {{L"x", L"1", {}, false, 0}}, L"", L""};
    EXPECT_NE(gstrMakeText(slash, nullptr, filter_, true, nullptr).find(L"x\t1\ta\\\\\r\n"),
              std::wstring::npos);
    const GasTemplate empty{L"Info0", L"Info", {}, L"", L""};
    EXPECT_TRUE(gstrMakeText(empty, nullptr, filter_, false, nullptr)
                    .ends_with(L"Group\r\n" + kMinus + L"\r\n" + kMinus + L"\r\nComments:\r\n" +
                               kStars + L"\r\n"));
    GasTemplate big = crate();
    big.Properties.assign(10000, {L"x", L"1", L"a\\b", false, 1});
    std::wstring whole;
    std::size_t longest = 0;
    makeText(big, [&](std::wstring_view part) {
        whole += part;
        longest = std::max(longest, part.size());
    });
    filter_.clear();
    EXPECT_EQ(whole, gstrMakeText(big, nullptr, filter_, false, nullptr));
    EXPECT_LT(longest, 100000U);
}

TEST_F(Render, WholeFile) {
    EXPECT_EQ(gstrMakeFileText(L"C:\\mods\\a.gas", {crate(), crate()}, nullptr, 0, nullptr),
              L"Filename: C:\\mods\\a.gas\r\nTime:10:20:30\r\nDate:Friday, 1 March 2002\r\n"
              L"Template count: 2\r\n" +
                  kStars + L"\r\n" + crateText() + crateText());
    EXPECT_EQ(gstrMakeFileText(L"C:\\mods\\a.gas", {}, nullptr, 0, nullptr), L"");
}

TEST_F(Render, OwnDialogIsShownAndPutAwayOnEveryWayOut) {
    host_.logsProgressSteps = true;
    for (const std::size_t cancelAt : {std::size_t{100}, std::size_t{1}}) {
        host_.log.clear();
        host_.progressSteps = 0;
        host_.cancelAt = cancelAt;
        const std::wstring text = gstrMakeText(crate(), &host_, filter_, false, nullptr);
        EXPECT_EQ(text.empty(), cancelAt == 1);  // a cut text is never handed out
        EXPECT_EQ(host_.liveDialogs, 0u);
        EXPECT_FALSE(gProgram().progressShowing);
        ASSERT_GE(host_.log.size(), 2u);
        EXPECT_EQ(host_.log[host_.log.size() - 2], host_.logged("enable").back());
        EXPECT_EQ(host_.log.back(), host_.logged("focus").back());
    }
    const std::unique_ptr<Progress> dialog = host_.makeProgress();
    EXPECT_EQ(gstrMakeFileText(L"a.gas", {crate()}, &host_, 0, dialog.get()), L"");
    EXPECT_EQ(host_.liveDialogs, 1u) << "a borrowed one stays";
}

TEST_F(Render, StepsTellThePercentageAndTheLastRowWritten) {
    host_.logsProgressSteps = true;
    GasTemplate record = crate();
    record.Properties.resize(8, record.Properties[0]);
    record.Properties[7].Name = L"last";
    filter_ = L"Template0\\physics_1\\";
    gstrMakeText(record, nullptr, filter_, true, nullptr);
    const std::vector<std::string> steps = host_.logged("ShowProgress");
    ASSERT_EQ(steps.size(), 8u);
    EXPECT_TRUE(steps[1].starts_with("ShowProgress: 12 ")) << steps[1];  // 12.5: halves to even
    EXPECT_TRUE(steps[7].starts_with("ShowProgress: 88 ")) << steps[7];
    EXPECT_NE(steps[7].find("Property: mass"), std::string::npos) << steps[7];
}

}  // namespace
}  // namespace kestrel
