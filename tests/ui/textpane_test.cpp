#include "ui/common/textpane.h"

#include <wx/frame.h>
#include <wx/settings.h>

#include <random>

#include "services/bytes.h"
#include "ui/common/gaslexer.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

class TextPaneTest : public UiTest {
  public:
    TextPaneTest() {
        frame->SetSize(640, 400);
        show(*frame);
        waitUntil("the frame is shown", [this] { return frame->IsShownOnScreen(); });
    }

    void select(int begin, int end) { pane->SetSelection(begin, end); }

    std::string readOuts() const {
        std::string line;
        for (const std::wstring& text : readOutTexts(pane->readOuts())) {
            line += (line.empty() ? "" : ", ") + toUtf8(text);
        }
        return line;
    }

    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "pane");
    TextPane* pane = new TextPane(frame, "txtView");
};

TEST_F(TextPaneTest, AppendedTextCountsAsSet) {
    pane->canEdit(false);
    pane->setText(L"");
    std::wstring all;
    for (const std::wstring& piece :
         {std::wstring(L"one\r"), std::wstring(L"\n\u00E9\0\u20AC\U0001F600", 5), std::wstring(),
          std::wstring(1, static_cast<wchar_t>(0xDC80)), std::wstring(L"\nlast")}) {
        pane->append(piece);
        all += piece;
        EXPECT_TRUE(pane->text() == all) << shown(pane->text());
        EXPECT_FALSE(pane->changed());
        EXPECT_EQ(pane->GetCurrentPos(), pane->GetLength());
        EXPECT_EQ(pane->readOuts().characters, all.size());
    }
    EXPECT_FALSE(pane->CanUndo());
    EXPECT_TRUE(pane->GetReadOnly());
    EXPECT_EQ(readOuts(), "Line: 3, Col: 5, Char: 15, Chars: 15, Lines: 3");
}

TEST_F(TextPaneTest, GivesBackWhatWasPutIn) {
    const std::wstring lone = {L'a', static_cast<wchar_t>(0xD800), L'\0',
                               static_cast<wchar_t>(0xDC80)};
    std::wstring everyByte;
    std::string bytes;
    for (int i = 0; i < 3 * 256; ++i) bytes += static_cast<char>(i);
    everyByte += widen(bytes);
    const std::wstring texts[] = {
        L"",
        L"one\r\ntwo\nthree\rfour\r\r\n\n\r",
        std::wstring(L"\0a\0\r\n\0", 6),
        everyByte,
        L"\uFEFF\u20AC\u2028\uFFFF\U0001F600 e\u0301",
        lone,
        std::wstring(1'000'000, L'x') + L"\r\n" + std::wstring(1'000'000, L'\u00E9'),
    };
    for (const bool canEdit : {true, false}) {
        pane->canEdit(canEdit);
        for (const std::wstring& text : texts) {
            pane->setText(text);
            settle();
            EXPECT_TRUE(pane->text() == text) << shown(pane->text().substr(0, 80));
            EXPECT_FALSE(pane->changed());
            EXPECT_EQ(pane->readOuts().characters, text.size());
            EXPECT_FALSE(pane->CanUndo());
        }
    }
}

TEST_F(TextPaneTest, ReadOutsCountCharactersWithCrLfAsTwo) {
    const struct {
        const wchar_t* text;
        int caret;  // in the bytes of the text
        const char* readOuts;
    } cases[] = {
        {L"", 0, "Line: 1, Col: 1, Char: 0, Chars: 0, Lines: 1"},
        {L"a\r\n\u20AC\r\n", 8, "Line: 3, Col: 1, Char: 6, Chars: 6, Lines: 3"},
        {L"a\r\n\u20ACb", 6, "Line: 2, Col: 2, Char: 4, Chars: 5, Lines: 2"},
    };
    for (const auto& one : cases) {
        pane->setText(one.text);
        select(0, one.caret);
        EXPECT_EQ(readOuts(), one.readOuts);
    }
}

// A random edit as a user makes them.
void edit(TextPane& pane, std::mt19937& random) {
    const wchar_t* const pieces[] = {L"a", L"\r\n", L"\u00E9", L"\u20ACuro", L"\U0001F600"};
    const auto choose = [&](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    // Only whole characters can be selected.
    const auto place = [&] { return pane.PositionRelative(0, choose(pane.GetLength() + 1)); };
    pane.SetSelection(place(), place());
    switch (choose(5)) {
        case 0:
            return pane.Undo();
        case 1:
            return pane.Redo();
        case 2:
            return pane.Clear();
        default:
            pane.ReplaceSelection(pieces[choose(5)]);
    }
}

TEST_F(TextPaneTest, CountsStayRightWhileEditing) {
    pane->setText(L"first \u00E9\r\nsecond\r\n");
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i) {
        edit(*pane, random);
        const std::wstring text = pane->text();
        ASSERT_EQ(pane->readOuts().characters, text.size());
        ASSERT_EQ(pane->changed(), text != L"first \u00E9\r\nsecond\r\n");
    }
}

TEST_F(TextPaneTest, ChangedIsTakenBackByTheOppositeEdit) {
    pane->setText(L"ab\r\n");
    pane->AddText("c");
    EXPECT_TRUE(pane->changed());
    pane->DeleteBack();
    EXPECT_FALSE(pane->changed());
    pane->Undo();
    EXPECT_EQ(pane->text(), L"cab\r\n");
    pane->setText(L"new");
    EXPECT_FALSE(pane->CanUndo() || pane->CanRedo());
}

TEST_F(TextPaneTest, KeysEditAsInATextBox) {
    pane->setText(L"ab\r\ncd");
    pane->GotoPos(2);
    key(*pane, WXK_RETURN);
    EXPECT_EQ(pane->text(), L"ab\r\n\r\ncd");
    key(*pane, 'Z', wxMOD_CONTROL);
    EXPECT_EQ(pane->text(), L"ab\r\ncd");
    key(*pane, 'Z', wxMOD_CONTROL | wxMOD_SHIFT);
    EXPECT_EQ(pane->text(), L"ab\r\n\r\ncd");
    key(*pane, 'Z', wxMOD_CONTROL);
    key(*pane, 'Y', wxMOD_CONTROL);
    for (const int unusual : {'D', 'L', 'T', 'U'}) key(*pane, unusual, wxMOD_CONTROL);
    EXPECT_EQ(pane->text(), L"ab\r\n\r\ncd");
    select(0, 4);
    key(*pane, 'X', wxMOD_CONTROL);
    EXPECT_EQ(pane->text(), L"\r\ncd");
    EXPECT_EQ(host.log, std::vector<std::string>{"clipboard: ab\\r\\n"});
    for (const auto& [text, after] : {std::pair(L"a\nb", L"\na\nb"), std::pair(L"", L"\r\n")}) {
        pane->setText(text);
        key(*pane, WXK_RETURN);
        EXPECT_EQ(pane->text(), after) << "lines end as the others of the text do";
    }
}

TEST_F(TextPaneTest, ALockedTextCannotBeEdited) {
    pane->setText(L"abc");
    pane->canEdit(false);
    select(0, 2);
    for (const int code : {WXK_RETURN, WXK_DELETE, WXK_BACK, WXK_TAB}) key(*pane, code);
    key(*pane, 'X', wxMOD_CONTROL);
    key(*pane, 'V', wxMOD_CONTROL);
    EXPECT_EQ(pane->text(), L"abc");
    EXPECT_EQ(host.log, std::vector<std::string>());
    EXPECT_EQ(pane->StyleGetBackground(0), wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    pane->canEdit(true);
    EXPECT_EQ(pane->StyleGetBackground(0), wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
}

TEST_F(TextPaneTest, CopiesTheSelectionOrAll) {
    const std::wstring lone = {L'\u00E9', static_cast<wchar_t>(0xD800), L'\0', L'b'};
    pane->setText(lone);
    EXPECT_TRUE(pane->text() == lone);
    select(2, 6);  // the second and the third character
    EXPECT_TRUE(pane->selectedText() == lone.substr(1, 2));
    pane->setText(L"a\r\n\u20ACb\n");
    pane->copyText();
    select(1, 6);
    pane->copyText();
    EXPECT_EQ(host.log, (std::vector<std::string>{"clipboard: a\\r\\n\u20ACb\\n",
                                                  "clipboard: \\r\\n\u20AC"}));
    pane->selectEverything();
    EXPECT_EQ(pane->selectedText(), L"a\r\n\u20ACb\n");
}

TEST_F(TextPaneTest, FindSelectsAndScrolls) {
    pane->setText(std::wstring(4000, L'\n') + L"x\u00E9AB" + std::wstring(4000, L'\n'));
    EXPECT_TRUE(pane->find(L"\u00C9ab"));
    EXPECT_EQ(pane->selectedText(), L"\u00E9AB");
    EXPECT_EQ(pane->readOuts().caret, 4004U);
    settle();
    const int line = pane->GetFirstVisibleLine();
    EXPECT_LE(line, 4000);
    EXPECT_GE(line + pane->LinesOnScreen(), 4000);
    EXPECT_FALSE(pane->find(L"abc"));
    EXPECT_EQ(pane->selectedText(), L"\u00E9AB");
}

TEST_F(TextPaneTest, TabsGoToTheirStops) {
    const int character = pane->TextWidth(wxSTC_STYLE_DEFAULT, "0000000000");
    const auto place = [&](int position) {
        return (pane->PointFromPosition(position).x - pane->PointFromPosition(0).x) * 10 /
               static_cast<double>(character);
    };
    pane->setText(L"\t\t\t\tx");
    settle();
    for (int tab = 1; tab <= 4; ++tab) EXPECT_NEAR(place(tab), tab, 0.2);
    pane->textFormat(1);
    settle();
    const double stops[] = {2.5, 30, 55, 80};
    for (int tab = 1; tab <= 4; ++tab) EXPECT_NEAR(place(tab), stops[tab - 1], 0.2);
}

std::string stylesOf(const TextPane& pane, int begin, int end) {
    std::string styles;
    for (int at = begin; at < end; ++at) {
        styles += "_hnvcb"[static_cast<std::size_t>(pane.GetStyleAt(at))];
    }
    return styles;
}

TEST_F(TextPaneTest, ColoursGasTextInView) {
    const std::wstring block = L"[t:a]\r\n{\r\nx=1;//y\r\n}\r\n";
    const std::string styles = "hhhhh__b__n_v_ccc__b__";
    std::wstring text;
    for (int i = 0; i < 500; ++i) text += block;
    const auto length = static_cast<int>(block.size());
    pane->setText(text);
    settle();
    EXPECT_EQ(stylesOf(*pane, 0, length), styles);
    settle();
    const int last = pane->GetLength() - length;
    EXPECT_EQ(stylesOf(*pane, last, last + length), std::string(block.size(), '_'));
    pane->DocumentEnd();
    EXPECT_EQ(stylesOf(*pane, last, last + length), styles);
    pane->SetTargetStart(last);
    pane->SetTargetEnd(last + 1);
    pane->ReplaceTarget("//");
    waitUntil("the new comment is coloured",
              [&] { return stylesOf(*pane, last, last + 8) == "cccccc__"; });
    pane->setText(L"Report: [a] = 1");
    settle();
    EXPECT_EQ(stylesOf(*pane, 0, pane->GetLength()), std::string(15, '_'));
}

TEST(GasLexer, TellsTheTokens) {
    const std::pair<const char*, const char*> cases[] = {
        {"  doc = \"a; b\"; // c", "__nnnn__vvvvvv__cccc"},
        {"[t:template,n:a]{b=c d;}", "hhhhhhhhhhhhhhhhbn_v_v_b"},
        {"a=\"//x\";//\"", "n_vvvvv_ccc"},
        {"[open\r\nname\nx=1\ry", "hhhhh__nnnn_n_v_n"},
        {"f x = 1;", "nnnn__v_"},
    };
    for (const auto& [line, expected] : cases) {
        std::string tokens = gasTokens(line);
        for (char& token : tokens) token = "_hnvcb"[static_cast<std::size_t>(token)];
        EXPECT_EQ(tokens, expected) << line;
    }
}

TEST(GasLexer, KnowsGasTextAndMatchesBraces) {
    for (const char* text : {"[info]\r\n{", "\r\n// about\n\t [t:template,n:a]", "[a]"}) {
        EXPECT_TRUE(looksLikeGas(text)) << text;
    }
    for (const char* text : {"", " \r\n", "// only", "Name\tValue", "[open", "x [a]"}) {
        EXPECT_FALSE(looksLikeGas(text)) << text;
    }
    const std::string text = "[a]\n{ b { // }\n c = \"}\"; } }\n}";
    const std::pair<std::size_t, std::optional<std::size_t>> cases[] = {
        {0, 2},   {2, 0},   {4, 27},  {27, 4}, {8, 25},  {25, 8},
        {13, {}}, {21, {}}, {29, {}}, {1, {}}, {99, {}},
    };
    for (const auto& [at, match] : cases) EXPECT_EQ(matchingBrace(text, at), match) << at;
}

TEST(GasLexer, ColoursAreReadableOnLightAndDark) {
    const Rgb backgrounds[] = {{255, 255, 255}, {240, 240, 240}, {246, 245, 244}, {212, 208, 200},
                               {53, 53, 53},    {45, 45, 45},    {0, 0, 0}};
    EXPECT_NEAR(contrast({0, 0, 0}, {255, 255, 255}), 21, 0.01);
    for (const Rgb background : backgrounds) {
        for (std::size_t token = 1; token < kGasTokens; ++token) {
            const Rgb colour = tokenColour(static_cast<GasToken>(token), {}, background);
            EXPECT_GE(contrast(colour, background), 4.5)
                << token << " on " << static_cast<int>(background.red);
        }
    }
}

}  // namespace
}  // namespace kestrel::test
