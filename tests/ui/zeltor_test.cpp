#include "ui/frmZeltor/frmZeltor.h"

#include <wx/hyperlink.h>

#include <chrono>
#include <filesystem>
#include <functional>

#include "ui/common/strings.h"
#include "ui/frmView/frmView.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

using Lines = std::vector<std::string>;

class ZeltorTest : public UiTest {
  public:
    ZeltorTest() {
        gProgram().version.fileDescription = L"Kestrel";
        gProgram().settings.zeltor = L"" KESTREL_STUB_BUILDER;
    }

    void open(std::wstring_view website = L"") {
        dialog = new frmZeltor(nullptr, launcher, {}, website);
        show(*dialog);
        waitUntil("the dialog has the keyboard", [this] { return dialog->IsActive(); });
        // Now the boxes whose focus is asked for by tests get it.
        dialog->cboSourceFolder->SetFocus();
        settle();
    }

    bool isOpen() const {
        settle();
        return wxTopLevelWindows.Find(dialog) != nullptr;
    }

    // Fills in what the stub builder plays as `part`.
    void fill(const char* part) {
        dialog->cboSourceFolder->SetValue(toWx(folder.path()));
        dialog->cboTarget->SetValue(toWx(target));
        dialog->txtTitle->SetValue(part);
        settle();
    }

    void press(frmZeltor::Command command) { click(*dialog->cmdCommands[command]); }

    // Presses Create and runs `look` on the log's viewer until it holds; the viewer
    // is then closed.
    void create(const char* what, const std::function<bool(frmView&)>& look) {
        const ExpectDialog log([&](wxDialog& shown) {
            auto& viewer = dynamic_cast<frmView&>(shown);
            viewer.Show();
            waitUntil(what, [&] { return look(viewer); });
            viewer.Hide();
            return wxID_CANCEL;
        });
        press(frmZeltor::kCreate);
    }

    void waitForEnd() {
        waitUntil("the builder has ended", [this] { return !launcher.running(); });
    }

    TimedLauncher launcher;
    frmZeltor* dialog = nullptr;
    std::wstring target = folder.path(L"islands.dsres");
};

TEST_F(ZeltorTest, ReadsAsTheProductsTexts) {
    open(L"https://zeltor.example/");
    EXPECT_EQ(dialog->GetTitle(), "Rapid Zeltor");
    const char* const kLabels[] = {
        "&Source Folder", "&Destination Tank Filename", "Title:", "Author:", "Build:", "Priority:",
        "Copyright:"};
    for (std::size_t i = 0; i < std::size(kLabels); ++i) {
        EXPECT_EQ(dialog->lblGeneric[i]->GetLabel(), kLabels[i]);
    }
    EXPECT_EQ(dialog->fraOptional->GetLabel(), "&Optional");
    EXPECT_EQ(dialog->chkDev->GetLabel(), "Dev. only?");
    EXPECT_EQ(dialog->chkMPXfer->GetLabel(), "Multi-player Transfer?");
    EXPECT_EQ(dialog->chkProtected->GetLabel(), "Protected?");
    EXPECT_EQ(dialog->cmdCommands[0]->GetLabel(), "&Done");
    EXPECT_EQ(dialog->cmdCommands[1]->GetLabel(), "&Create");
    EXPECT_EQ(dialog->cmdCommands[2]->GetToolTipText(), "Open Recent");
    EXPECT_EQ(dialog->cmdCommands[3]->GetToolTipText(), "Open Recent");
    EXPECT_EQ(dialog->lblInfo->GetLabel(), "Click for more info on Zeltor...");
    EXPECT_EQ(dialog->lblInfo->GetToolTipText(), "https://zeltor.example/");
}

TEST_F(ZeltorTest, CreateNeedsBothPaths) {
    open();
    wxButton& create = *dialog->cmdCommands[frmZeltor::kCreate];
    EXPECT_FALSE(create.IsEnabled());
    dialog->cboSourceFolder->SetValue("s");
    EXPECT_FALSE(create.IsEnabled());
    dialog->cboTarget->SetValue("t");
    EXPECT_TRUE(create.IsEnabled());
    dialog->cboSourceFolder->SetValue("");
    EXPECT_FALSE(create.IsEnabled());
    dialog->cboTarget->onEnter();
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(ZeltorTest, RefusesAMissingSourceAndAsksBeforeOverwriting) {
    open();
    fill("words");
    dialog->cboSourceFolder->SetValue(toWx(folder.path(L"missing")));
    press(frmZeltor::kCreate);
    fill("words");
    folder.put(L"islands.dsres", "old");
    host.answers = {Answer::no};
    press(frmZeltor::kCreate);
    EXPECT_FALSE(launcher.running());
    EXPECT_EQ(host.log,
              (Lines{"ask: Source Folder not found. Please enter a valid Source Folder name and "
                     "try again. | Kestrel | exclamation | ok",
                     "ask: Target file already exists, do you wish to overwrite the existing "
                     "file? | Kestrel | question | yesNo"}));
    create("the builder has run",
           [](frmView& log) { return log.TextBlock().ends_with(L"<words>\n"); });
}

TEST_F(ZeltorTest, HandsItsValuesToTheBuilder) {
    open();
    fill(" words  ");
    dialog->txtAuthor->SetValue("Me and You");
    dialog->txtBuild->SetValue("1");
    dialog->txtPriority->SetValue("12");
    tick(*dialog->chkDev);
    tick(*dialog->chkMPXfer);
    tick(*dialog->chkProtected);
    std::wstring text;
    create("the builder has told its words", [&](frmView& log) {
        EXPECT_EQ(log.GetTitle(), toWx(L"View Log: " + target));
        EXPECT_FALSE(log.txtView->canEdit());
        text = log.TextBlock();
        return text.ends_with(L"<words>\n");
    });
    EXPECT_EQ(shown(text), "<-source>\\n<" + shown(folder.path()) + ">\\n<-out>\\n<" +
                               shown(target) +
                               ">\\n<-author>\\n<Me and You>\\n<-copyright>\\n<>\\n<-build>\\n<1>"
                               "\\n<-flagdev>\\n<-flagmpxfer>\\n<-flagprotected>\\n<-priority>"
                               "\\n<12>\\n<-title>\\n<words>\\n");
    EXPECT_EQ(host.log, Lines{});
    waitForEnd();
}

TEST_F(ZeltorTest, LogFollowsTheOutput) {
    open();
    fill("dribble");
    create("the builder has written all", [](frmView& log) {
        const bool all = log.TextBlock().ends_with(L"\u00E2\u201A");
        EXPECT_EQ(log.txtView->GetCurrentPos(), log.txtView->GetLength());
        EXPECT_FALSE(log.TextBlockChanged());
        return all;
    });
    fill("crash");
    // The last log is gone.
    create("the builder has crashed", [this](frmView& log) {
        return !launcher.running() && log.TextBlock() == L"about to crash";
    });
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(ZeltorTest, BuilderRunsOnWithoutItsLogAndDialog) {
    open();
    fill("wait");
    create("the builder waits", [](frmView& log) { return log.TextBlock() == L"waiting\n"; });
    EXPECT_TRUE(launcher.running());
    create("the log is shown once more", [](frmView& log) { return log.IsShown(); });
    EXPECT_EQ(host.log, (Lines{"ask: Error (-2147219504): App is already running! in "
                               "'gExecZeltor' | Kestrel | exclamation | ok"}));
    press(frmZeltor::kDone);
    EXPECT_FALSE(isOpen());
    open();
    EXPECT_TRUE(launcher.running());
    folder.put(L"islands.dsres.go", "");
    waitForEnd();
    EXPECT_EQ(folder.bytes(L"islands.dsres.done"), "done");
    fill("nothing");
    create("another builder has run", [this](frmView&) { return !launcher.running(); });
}

TEST_F(ZeltorTest, EscClosesTheLogOfASilentBuilder) {
    open();
    fill("wait");
    std::chrono::steady_clock::time_point pressed;
    const ExpectDialog log([&](wxDialog& shown) {
        auto& viewer = dynamic_cast<frmView&>(shown);
        viewer.CallAfter([&] {
            waitUntil("the builder waits", [&] { return viewer.TextBlock() == L"waiting\n"; });
            pressed = std::chrono::steady_clock::now();
            key(*viewer.txtView, WXK_ESCAPE);
        });
        return wxID_NONE;
    });
    press(frmZeltor::kCreate);
    EXPECT_LT(std::chrono::steady_clock::now() - pressed, std::chrono::seconds(1));
    EXPECT_TRUE(launcher.running());
    folder.put(L"islands.dsres.go", "");
    waitForEnd();
}

TEST_F(ZeltorTest, ARefusedStartShowsNoLog) {
    gProgram().settings.zeltor = folder.path(L"my zeltor");
    open();
    fill("words");
    press(frmZeltor::kCreate);
    ASSERT_EQ(host.log.size(), 1U);
    EXPECT_TRUE(host.log[0].starts_with("ask: Error (-2147219504): Cannot start '" +
                                        shown(folder.path(L"my zeltor")) + "': "));
    EXPECT_TRUE(host.log[0].ends_with(" in 'gExecZeltor' | Kestrel | exclamation | ok"));
}

TEST_F(ZeltorTest, PickersFillTheBoxesAndTheHistories) {
    folder.put(L"zeltor1.his", "old source\r\n");
    folder.put(L"zeltor2.his", "old target\r\n");
    open();
    EXPECT_EQ(dialog->cboSourceFolder->at(0), L"old source");
    host.folders = {std::nullopt, L"picked source"};
    host.files = {std::nullopt, L"picked target"};
    for (int i = 0; i < 2; ++i) {
        press(frmZeltor::kPickSource);
        press(frmZeltor::kPickTarget);
        EXPECT_EQ(dialog->cmdCommands[frmZeltor::kCreate]->IsEnabled(), i == 1);
    }
    EXPECT_EQ(host.log[0], "folder: Select the Source Folder of your New Tank file.  | owner");
    EXPECT_EQ(host.log[3],
              "save: Select Target TANK Filename and Location | Resource Files (*.dsres)|*.dsres|"
              "Save Files (*.dssave)|*.dsave|Party Files (*.dsparty)|*.dsparty|All files (*.*)|"
              "*.* | picked source");
    key(*dialog->txtTitle, WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(folder.bytes(L"zeltor1.his"), "picked source\r\nold source\r\n");
    EXPECT_EQ(folder.bytes(L"zeltor2.his"), "picked target\r\nold target\r\n");
}

TEST_F(ZeltorTest, PriorityTakesDigitsAlone) {
    open();
    const auto passes = [this](int code) {
        wxKeyEvent event(wxEVT_CHAR);
        event.m_keyCode = code;
        event.m_uniChar = static_cast<wxChar>(code < WXK_START ? code : 0);
        event.SetEventObject(dialog->txtPriority);
        dialog->txtPriority->GetEventHandler()->ProcessEvent(event);
        return event.GetSkipped();
    };
    for (const int code : std::initializer_list<int>{'0', '9', WXK_TAB, WXK_DELETE, WXK_LEFT}) {
        EXPECT_TRUE(passes(code)) << code;
    }
    for (const int code : std::initializer_list<int>{'a', '-', ' ', WXK_BACK, WXK_CONTROL_V}) {
        EXPECT_FALSE(passes(code)) << code;
    }
}

TEST_F(ZeltorTest, PriorityIsLeftAsANumber) {
    open();
    const auto leaveWith = [this](const char* text) {
        dialog->txtPriority->SetFocus();
        waitUntil("the box has the keyboard", [this] { return dialog->txtPriority->HasFocus(); });
        dialog->txtPriority->ChangeValue(text);
        dialog->txtCopyright->SetFocus();
        settle();
    };
    for (const char* text : {"", "12", "-3"}) leaveWith(text);
    EXPECT_EQ(host.log, Lines{});
    EXPECT_TRUE(dialog->txtCopyright->HasFocus());
    leaveWith("five");
    EXPECT_EQ(host.log, (Lines{"ask: Priority must be a number. | Kestrel | exclamation | ok"}));
    EXPECT_TRUE(dialog->txtPriority->HasFocus());
    host.log.clear();
    dialog->txtPriority->ChangeValue("40000");
    fill("words");
    press(frmZeltor::kCreate);
    EXPECT_EQ(host.log, (Lines{"ask: Error (6): Overflow in 'cmdCommands_Click' | Kestrel | "
                               "exclamation | ok"}));
    EXPECT_FALSE(launcher.running());
}

TEST_F(ZeltorTest, LinkOpensItsPageIfThereIsOne) {
    const auto follow = [this] {
        wxHyperlinkEvent event(dialog->lblInfo, dialog->lblInfo->GetId(), "");
        dialog->lblInfo->ProcessWindowEvent(event);
    };
    const auto hover = [this](wxEventType type) {
        wxMouseEvent event(type);
        dialog->lblInfo->ProcessWindowEvent(event);
        return dialog->lblInfo->GetFont().GetUnderlined();
    };
    open();
    follow();
    EXPECT_EQ(host.log, Lines{});
    EXPECT_EQ(dialog->lblInfo->GetToolTipText(), "No web page is set for this build.");
    EXPECT_FALSE(dialog->lblInfo->GetFont().GetUnderlined());
    EXPECT_TRUE(hover(wxEVT_ENTER_WINDOW));
    EXPECT_FALSE(hover(wxEVT_LEAVE_WINDOW));
    press(frmZeltor::kDone);
    open(L"https://zeltor.example/");
    follow();
    EXPECT_EQ(host.log, (Lines{"perform: open | https://zeltor.example/"}));
}

}  // namespace
}  // namespace kestrel::test
