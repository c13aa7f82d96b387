#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/settings.h>

#include <chrono>
#include <random>

#include "services/pagetext.h"
#include "support/shown.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/textpane/textpane.h"

namespace kestrel::test {
namespace {

// Lets events run until it holds; only what is expected after it tells whether it did.
void until(const std::function<bool()>& holds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!holds() && std::chrono::steady_clock::now() < limit) {
        wxTheApp->Yield();
        wxEventLoopBase::GetActive()->ProcessIdle();
    }
}

class TextPaneTest : public testing::Test {
  protected:
    TextPaneTest() {
        frame->SetSize(640, 400);
        frame->Show();
        until([this] { return pane->LinesOnScreen() > 5; });
    }
    ~TextPaneTest() override {
        frame->Destroy();
        until([] { return wxTopLevelWindows.empty(); });
    }

    std::string readOuts() const {
        std::string line;
        for (const std::wstring& text : readOutTexts(pane->readOuts())) line += toUtf8(text) + " ";
        return line;
    }

    // The styles of as many bytes as are expected, once they are these.
    std::string styles(int begin, std::string_view expected) const {
        std::string styles;
        until([&] {
            styles.clear();
            for (int at = begin; styles.size() < expected.size(); ++at) {
                styles += "_hnvcb"[static_cast<std::size_t>(pane->GetStyleAt(at))];
            }
            return styles == expected;
        });
        return styles;
    }

    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "pane");
    TextPane* pane = new TextPane(frame, "txtView");
};

TEST_F(TextPaneTest, GivesBackWhatWasPutIn) {
    std::string bytes;
    for (int i = 0; i < 3 * 256; ++i) bytes += static_cast<char>(i);
    const std::wstring texts[] = {
        L"one\r",
        std::wstring(L"\n\u00E9\0\u20AC\U0001F600", 5),
        L"",
        {static_cast<wchar_t>(0xDC80)},
        L"\nlast",
        L"two\nthree\rfour\r\r\n\n\r",
        widen(bytes),
        L"\uFEFF\u20AC\u2028\uFFFF\U0001F600 e\u0301",
        {L'a', static_cast<wchar_t>(0xD800), L'\0', static_cast<wchar_t>(0xDC80)},
        std::wstring(1'000'000, L'x') + L"\r\n" + std::wstring(1'000'000, L'\u00E9'),
    };
    const auto holds = [this](const std::wstring& text) {
        EXPECT_TRUE(pane->text() == text) << shown(pane->text().substr(0, 80));
        EXPECT_EQ(pane->readOuts().characters, text.size());
        EXPECT_FALSE(pane->changed() || pane->CanUndo());
    };
    for (const bool canEdit : {true, false}) {
        pane->canEdit(canEdit);
        EXPECT_EQ(
            pane->StyleGetBackground(0),
            wxSystemSettings::GetColour(canEdit ? wxSYS_COLOUR_WINDOW : wxSYS_COLOUR_BTNFACE));
        EXPECT_EQ(pane->GetCaretForeground(), pane->StyleGetForeground(0));
        for (const std::wstring& text : texts) {
            pane->setText(text);
            holds(text);
        }
    }
    std::wstring all;
    pane->SetScrollWidth(9999);
    pane->setText(all);
    EXPECT_LT(pane->GetScrollWidth(), 9999);
    for (const std::wstring& piece : texts) {
        pane->append(piece);
        holds(all += piece);
        EXPECT_TRUE(pane->GetReadOnly() && pane->GetCurrentPos() == pane->GetLength());
        if (piece == L"\nlast") {
            EXPECT_EQ(readOuts(), "Line: 3 Col: 5 Char: 15 Chars: 15 Lines: 3 ");
        }
    }
    for (const std::wstring_view start : {L"\u00E9", L"lasttwo", L"three"}) {
        pane->cutStart(1);
        all.erase(0, all.find(start));
        holds(all);
    }
    pane->cutStart(pane->GetLength());
    holds(all);
}

TEST_F(TextPaneTest, CountsAndSelectsCharacters) {
    const struct {
        std::wstring text;
        int begin, caret;  // in the bytes of the text
        const char* readOuts;
        std::wstring selected;
    } cases[] = {
        {L"", 0, 0, "Line: 1 Col: 1 Char: 0 Chars: 0 Lines: 1 ", L""},
        {L"a\r\n\u20AC\r\n", 6, 8, "Line: 3 Col: 1 Char: 6 Chars: 6 Lines: 3 ", L"\r\n"},
        {L"a\nb", 1, 2, "Line: 2 Col: 1 Char: 2 Chars: 3 Lines: 2 ", L"\n"},
        {L"a\r\n\u20ACb", 1, 6, "Line: 2 Col: 2 Char: 4 Chars: 5 Lines: 2 ", L"\r\n\u20AC"},
        {std::wstring(L"\u00E9\0\0b", 4), 2, 3, "Line: 1 Col: 3 Char: 2 Chars: 4 Lines: 1 ",
         std::wstring(1, L'\0')},
    };
    for (const auto& one : cases) {
        pane->setText(one.text);
        pane->SetSelection(one.begin, one.caret);
        EXPECT_EQ(readOuts(), one.readOuts);
        EXPECT_EQ(pane->selectedText(), one.selected);
        EXPECT_EQ(pane->GetEOLMode() == wxSTC_EOL_LF, one.text == L"a\nb");
    }
}

TEST_F(TextPaneTest, CountsStayRightWhileEditing) {
    const wchar_t* const pieces[] = {L"", L"a", L"\r\n", L"\u00E9", L"\u20ACuro", L"\U0001F600"};
    pane->setText(L"first \u00E9\r\nsecond\r\n");
    std::mt19937 random(7);
    const auto choose = [&](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    // Only whole characters can be selected.
    const auto place = [&] { return pane->PositionRelative(0, choose(pane->GetLength() + 1)); };
    for (int i = 0; i < 400; ++i) {
        const int what = choose(9);
        if (what == 6) pane->Undo();
        if (what == 7) pane->Redo();
        pane->SetSelection(place(), place());
        if (what < 6) pane->ReplaceSelection(pieces[what]);
        const std::wstring text = pane->text();
        ASSERT_EQ(pane->readOuts().characters, text.size());
        ASSERT_EQ(pane->changed(), text != L"first \u00E9\r\nsecond\r\n");
    }
}

TEST_F(TextPaneTest, ColoursGasTextInViewAndItsTabsGoToTheirStops) {
    const std::string block = "[t:a]\r\n{\r\nx=1;//y\r\n}\r\n";
    const std::string coloured = "hhhhh__b__n_v_ccc__b__";
    std::wstring text;
    for (int i = 0; i < 500; ++i) text += widen(block);
    pane->setText(text);
    EXPECT_EQ(styles(0, coloured), coloured);
    const int last = pane->GetLength() - static_cast<int>(block.size());
    const std::string plain(block.size(), '_');
    EXPECT_EQ(styles(last, plain), plain);
    pane->selectEverything();
    EXPECT_EQ(styles(last, coloured), coloured);
    pane->SetTargetStart(last);
    pane->SetTargetEnd(last + 1);
    pane->ReplaceTarget("//");
    EXPECT_EQ(styles(last, "cccccc__"), "cccccc__");
    const double stops[2][5] = {{0, 1, 2, 3, 4}, {0, 2.5, 30, 55, 80}};
    for (const int format : {0, 1}) {
        pane->setText(L"\t\t\t\tx: [a] = 1");
        pane->textFormat(format);
        EXPECT_EQ(styles(0, "______________"), "______________");
        const double character = pane->TextWidth(wxSTC_STYLE_DEFAULT, "0000000000") / 10.0;
        for (int tab = 0; tab <= 4; ++tab) {
            const int width = pane->PointFromPosition(tab).x - pane->PointFromPosition(0).x;
            EXPECT_NEAR(width / character, stops[format][tab], 0.2);
        }
    }
}

TEST(ProgressDialog, AnswersOnOddPercentagesAndNotAtEachStep) {
    ProgressWindow progress;
    progress.show(nullptr);
    progress.Process(L"");
    const frmProgress& dialog = *frmProgress::current();
    EXPECT_EQ(dialog.lblProces->GetLabelText(), "False");
    progress.Overall(L"File 1 of 2");
    EXPECT_GT(dialog.lblOverall->GetRect().y, dialog.lblSubProcess->GetRect().y);
    wxQueueEvent(dialog.cmdCommands[0], new wxCommandEvent(wxEVT_BUTTON));
    for (int percent = 0; percent <= 100; percent += 2) progress.ShowProgress(percent, L"even");
    progress.breathe();
    for (int step = 0; step < 1'000'000; ++step) progress.ShowProgress(101, L"too soon");
    EXPECT_EQ(dialog.prbMain->GetValue(), 100);
    EXPECT_NE(dialog.lblSubProcess->GetLabelText(), "even");
    wxMilliSleep(40);
    progress.ShowProgress(51, L"odd");
    EXPECT_TRUE(progress.DidCancel());
    EXPECT_EQ(dialog.lblSubProcess->GetLabelText(), "odd");
    EXPECT_EQ(dialog.prbMain->GetValue(), 51);
}

}  // namespace
}  // namespace kestrel::test
