#include "ui/frmView/frmView.h"

#include <wx/utils.h>

#include "services/bytes.h"
#include "ui/common/twips.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

using Lines = std::vector<std::string>;

class ViewTest : public UiTest {
  public:
    ViewTest() { gProgram().version.fileDescription = L"Kestrel"; }

    void open(std::wstring_view text, bool canEdit) {
        view = new frmView(nullptr, {[this] { return openPath; }, [this] { ++reloads; },
                                     [this] { return loaded; }});
        view->TextBlock(text);
        view->CanEdit(canEdit);
        view->SetTitle("View Source: oak");
        show(*view);
        waitUntil("the viewer has the keyboard", [this] { return view->txtView->HasFocus(); });
    }

    bool isOpen() const {
        settle();
        return wxTopLevelWindows.Find(view) != nullptr;
    }

    void type(const char* text) {
        view->txtView->AddText(text);
        key(*view->txtView, WXK_SHIFT);
    }

    Lines panels() const {
        Lines texts;
        for (int i = 0; i < view->stbMain->GetFieldsCount(); ++i) {
            texts.push_back(view->stbMain->GetStatusText(i).utf8_string());
        }
        return texts;
    }

    // A key that went down in another window.
    void releaseOnly(int code) {
        wxKeyEvent event(wxEVT_KEY_UP);
        event.m_keyCode = code;
        event.SetEventObject(view->txtView);
        view->txtView->ProcessWindowEvent(event);
        settle();
    }

    frmView* view = nullptr;
    std::wstring openPath = folder.path(L"open.gas");
    std::optional<FileStamp> loaded;
    int reloads = 0;
};

TEST_F(ViewTest, ButtonsHaveTheirTextsOrderAndRoom) {
    open(L"", false);
    const std::pair<const char*, const char*> buttons[] = {
        {"&Done", "Done (Esc)"},
        {"Save to file...", "Save to file... (Ctl+S)"},
        {"Copy", "Copy selected (all if no selection)"},
        {"Find", "Find (Ctrl+F)"},
        {"Find Again", "Find Again (F3)"},
        {"ScritPad", "ScritPad (Ctl+E)"}};
    for (std::size_t i = 0; i < view->cmdCommands.size(); ++i) {
        EXPECT_EQ(view->cmdCommands[i]->GetLabel(), buttons[i].first);
        EXPECT_EQ(view->cmdCommands[i]->GetToolTipText(), buttons[i].second);
        EXPECT_TRUE(view->cmdCommands[i]->GetBitmap().IsOk());
    }
    const int bottom = view->txtView->GetRect().GetBottom();
    int right = 0;
    for (const std::size_t index : {5U, 3U, 4U, 2U, 1U, 0U}) {
        const wxRect button = view->cmdCommands[index]->GetRect();
        EXPECT_GT(button.x, right);
        EXPECT_GT(button.y, bottom);
        EXPECT_EQ(button.y, view->cmdCommands[0]->GetRect().y);
        right = button.GetRight();
    }
    EXPECT_EQ(right, view->txtView->GetRect().GetRight());
    EXPECT_GE(view->GetMinSize().x, fromTwips(*view, 5000));
    EXPECT_GE(view->GetMinSize().y, fromTwips(*view, 5000));
    resize(*view, {10, 10});
    waitUntil("the text fills the width", [&] {
        const wxRect text = view->txtView->GetRect();
        return view->GetClientSize().x - text.GetRight() - 1 == text.x;
    });
    EXPECT_GE(view->cmdCommands[5]->GetRect().x, 0);
}

TEST_F(ViewTest, CaptionAndReadOutsFollowTheTextAndTheCaret) {
    open(L"one\r\ntwo", true);
    EXPECT_EQ(view->GetTitle(), "View Source: oak");
    type("x");
    EXPECT_TRUE(view->TextBlockChanged());
    EXPECT_EQ(view->GetTitle(), "View Source: oak *");
    EXPECT_EQ(view->TextBlock(), L"xone\r\ntwo");
    key(*view->txtView, WXK_BACK);
    EXPECT_EQ(view->GetTitle(), "View Source: oak");
    type("x");
    view->TextBlock(L"\u00E9\r\nabc");
    EXPECT_FALSE(view->TextBlockChanged());
    EXPECT_EQ(view->GetTitle(), "View Source: oak");
    view->txtView->GotoPos(5);
    key(*view->txtView, WXK_RIGHT);
    EXPECT_EQ(panels(), (Lines{"Line: 2", "Col: 3", "Char: 5", "Chars: 6", "Lines: 2"}));
}

TEST_F(ViewTest, DoneAsksBeforeChangesAreLost) {
    open(L"text", true);
    type("x");
    host.answers = {Answer::no, Answer::yes};
    for (const bool staysOpen : {true, false}) {
        click(*view->cmdCommands[0]);
        EXPECT_EQ(isOpen(), staysOpen);
    }
    EXPECT_EQ(host.logged("ask: Source has been changed. Exit anyway and discard changes?").size(),
              2U);
}

TEST_F(ViewTest, EscClosesOnItsReleaseAndOnlyWhenItWasPressedHere) {
    open(L"text", false);
    releaseOnly(WXK_ESCAPE);
    ASSERT_TRUE(isOpen());
    host.prompts = {std::nullopt};
    key(*view->txtView, 'F', wxMOD_CONTROL);
    releaseOnly(WXK_ESCAPE);
    ASSERT_TRUE(isOpen());
    key(*view->cmdCommands[0], WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(host.logged("ask"), Lines{});
}

TEST_F(ViewTest, FindRemembersItsText) {
    open(L"xABx ab", false);
    host.prompts = {L"ab", L"zz", std::nullopt};
    key(*view->txtView, WXK_F3);
    EXPECT_EQ(panels().at(2), "Char: 3");
    key(*view->cmdCommands[4], WXK_F3);
    EXPECT_EQ(view->txtView->selectedText(), L"ab");
    click(*view->cmdCommands[4]);
    EXPECT_EQ(view->txtView->selectedText(), L"AB");
    EXPECT_EQ(host.logged("prompt").size(), 1U);
    key(*view->txtView, 'F', wxMOD_CONTROL);
    EXPECT_EQ(host.log.back(), "ask: Substring not found: zz | Find Text | exclamation | ok");
    click(*view->cmdCommands[3]);
    EXPECT_TRUE(host.log.back().ends_with(" | Find Text | zz"));
    EXPECT_EQ(view->txtView->selectedText(), L"AB");
}

TEST_F(ViewTest, CopyTakesTheSelectionOrAll) {
    open(L"a\r\nb", false);
    click(*view->cmdCommands[2]);
    view->txtView->SetSelection(0, 1);
    key(*view->txtView, 'C', wxMOD_CONTROL);
    key(*view->txtView, 'A', wxMOD_CONTROL);
    EXPECT_EQ(panels().at(2), "Char: 4");
    key(*view->txtView, 'C', wxMOD_CONTROL);
    EXPECT_EQ(host.log, (Lines{"clipboard: a\\r\\nb", "clipboard: a", "clipboard: a\\r\\nb"}));
}

TEST_F(ViewTest, SavesOverTheOpenFileAndReloadsIt) {
    folder.put(L"open.gas", "before");
    open(L"[a]\r\n{\n}", true);
    host.files = {openPath, openPath};
    key(*view->txtView, 'S', wxMOD_CONTROL);
    EXPECT_EQ(folder.bytes(L"open.gas"), "[a]\r\n{\n}");
    click(*view->cmdCommands[1]);
    EXPECT_EQ(reloads, 2);
}

TEST_F(ViewTest, KeepsAnotherProgramsChangeAndTheEditedTextOnNo) {
    folder.put(L"open.gas", "before");
    loaded = fileStamp(openPath);
    open(L"[a]", true);
    type("x");
    folder.put(L"open.gas", "changed meanwhile");
    host.files = {openPath};
    host.answers = {Answer::yes, Answer::no};
    key(*view->txtView, 'S', wxMOD_CONTROL);
    EXPECT_EQ(host.logged("ask: The file has been changed by another program").size(), 1U);
    EXPECT_EQ(folder.bytes(L"open.gas"), "changed meanwhile");
    EXPECT_TRUE(view->TextBlockChanged());
    EXPECT_EQ(reloads, 0);
}

TEST_F(ViewTest, HandsItsTextToSkritPad) {
    const TemporaryFilesIn here(folder);
    gProgram().settings.skritpad = L"/opt/pad";
    open(L"text", false);
    key(*view->txtView, 'E', wxMOD_CONTROL);
    ASSERT_EQ(folder.names().size(), 1U);
    const std::wstring file = fromUtf8(folder.names()[0]);
    EXPECT_EQ(folder.bytes(file), "text");
    EXPECT_EQ(host.log, Lines{"run: /opt/pad " + toUtf8(folder.path(file)) + " | /opt/pad"});
    host.missingProgram = L"/opt/pad";
    click(*view->cmdCommands[5]);
    EXPECT_TRUE(host.log.back().starts_with("ask: Error (53): File not found in '"));
}

TEST_F(ViewTest, LetsTheMouseGoWhenItClosesWhileAButtonIsHeld) {
    open(L"oak", false);
    view->txtView->CaptureMouse();
    key(*view->txtView, WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(wxWindow::GetCapture(), nullptr);
}

}  // namespace
}  // namespace kestrel::test
