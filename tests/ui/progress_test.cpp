#include <wx/frame.h>
#include <wx/textctrl.h>

#include "services/progress.h"
#include "ui/common/host_wx.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

// The dialog at work over the real toolkit.
class ProgressDialog : public UiTest {
  protected:
    ProgressDialog() : frame(new wxFrame(nullptr, wxID_ANY, "owner")) {
        // Not the first control: what had the keyboard gets it back.
        new wxTextCtrl(frame, wxID_ANY);
        field = new wxTextCtrl(frame, wxID_ANY);
        show(*frame);
        field->SetFocus();
        gProgram().host.progress = &maker;
        waitUntil("the field has the keyboard", [this] { return field->HasFocus(); });
    }

    ProgressMakerWx maker;
    wxFrame* frame;
    wxTextCtrl* field;
};

TEST_F(ProgressDialog, IsShownPaintedAndGoneWithItsScope) {
    {
        OwnerWx owner(*frame);
        ProgressScope scope(nullptr, &owner, L"Processing: two.gas");
        const frmProgress* dialog = frmProgress::current();
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(dialog->IsShownOnScreen());
        EXPECT_EQ(dialog->GetTitle(), "Please wait...");
        EXPECT_EQ(dialog->lblProces->GetLabelText(), "Processing: two.gas");
        EXPECT_EQ(dialog->cmdCommands[0]->GetLabel(), "&Cancel");
        EXPECT_FALSE(frame->IsEnabled());
        EXPECT_TRUE(gProgram().progressShowing);
    }
    EXPECT_EQ(frmProgress::current(), nullptr);
    EXPECT_TRUE(frame->IsEnabled());
    EXPECT_FALSE(gProgram().progressShowing);
    waitUntil("the owner has the keyboard again", [this] { return field->HasFocus(); });
}

TEST_F(ProgressDialog, AnswersOnlyOnOddPercentages) {
    OwnerWx owner(*frame);
    ProgressScope scope(nullptr, &owner, L"");
    frmProgress& dialog = *frmProgress::current();
    EXPECT_EQ(dialog.lblProces->GetLabelText(), "False");
    EXPECT_EQ(dialog.lblSubProcess->GetLabelText(), "");

    dialog.cmdCommands[0]->CallAfter([&] { click(*dialog.cmdCommands[0]); });
    for (int percent = 0; percent <= 100; percent += 2) scope.show(percent, L"even");
    EXPECT_FALSE(scope.didCancel());
    EXPECT_EQ(dialog.prbMain->GetValue(), 100);
    EXPECT_NE(dialog.lblSubProcess->GetLabelText(), "even");

    wxMilliSleep(40);
    scope.show(51, L"odd");
    EXPECT_TRUE(scope.didCancel());
    EXPECT_EQ(dialog.lblSubProcess->GetLabelText(), "odd");
    EXPECT_EQ(dialog.prbMain->GetValue(), 51);
}

TEST_F(ProgressDialog, EscapeAndClosingAreRequestsToCancelWorkThatCanStop) {
    for (const bool escape : {true, false}) {
        OwnerWx owner(*frame);
        ProgressScope scope(nullptr, &owner, L"x");
        frmProgress& dialog = *frmProgress::current();
        scope.dialog()->CanCancel(false);
        EXPECT_FALSE(dialog.cmdCommands[0]->IsEnabled());
        dialog.Close();
        EXPECT_FALSE(scope.didCancel());
        scope.dialog()->CanCancel(true);
        escape ? key(*dialog.cmdCommands[0], WXK_ESCAPE) : void(dialog.Close());
        EXPECT_TRUE(scope.didCancel());
        EXPECT_TRUE(dialog.IsShown()) << "closing it is its owner's";
    }
}

TEST_F(ProgressDialog, AMillionStepsTakeNoTime) {
    OwnerWx owner(*frame);
    ProgressScope scope(nullptr, &owner, L"x");
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 1'000'000; ++i)
        scope.show(percentage(static_cast<std::size_t>(i), 1'000'000), L"step");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace kestrel::test
