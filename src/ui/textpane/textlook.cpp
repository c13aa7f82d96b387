#include <wx/fontenum.h>
#include <wx/settings.h>

#include <algorithm>
#include <array>

#include "gas/lexer.h"
#include "ui/common/twips.h"
#include "ui/textpane/textpane.h"
#include "ui/textpane/tokencolours.h"

namespace kestrel {
namespace {

// In quarters of a character's width.
constexpr std::array<int, 4> kTabStops = {10, 120, 220, 320};

// How far the match of a brace is looked for, in bytes.
constexpr int kBraceReach = 256 * 1024;

Rgb rgbOf(const wxColour& colour) {
    return {colour.Red(), colour.Green(), colour.Blue()};
}

wxColour colourOf(Rgb colour) {
    return {colour.red, colour.green, colour.blue};
}

int positionOf(std::size_t place) {
    return static_cast<int>(place);
}

}  // namespace

void TextPane::applyFont() {
    const int points =
        static_cast<int>(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT).GetPointSize());
    // The product's font has pictures for one size alone; elsewhere it is not sharp.
    constexpr int kFixedsysPoints = 9;
    const bool sharp =
        dotsPerInch(*this) == kUsualDots && wxFontEnumerator::IsValidFacename("Fixedsys");
    StyleSetFont(wxSTC_STYLE_DEFAULT, sharp ? wxFontInfo(kFixedsysPoints).FaceName("Fixedsys")
                                            : wxFontInfo(points).Family(wxFONTFAMILY_TELETYPE));
    StyleClearAll();
}

void TextPane::applyStyle(int style, const wxColour& text, const wxColour& background) {
    StyleSetForeground(style, text);
    StyleSetBackground(style, background);
}

void TextPane::applyColours() {
    const auto system = [](wxSystemColour colour) { return wxSystemSettings::GetColour(colour); };
    const wxColour background = system(canEdit_ ? wxSYS_COLOUR_WINDOW : wxSYS_COLOUR_BTNFACE);
    const wxColour text = system(canEdit_ ? wxSYS_COLOUR_WINDOWTEXT : wxSYS_COLOUR_BTNTEXT);
    for (int style = 0; style <= wxSTC_STYLE_LASTPREDEFINED; ++style) {
        applyStyle(style, text, background);
    }
    for (std::size_t token = 0; token < kGasTokens; ++token) {
        const auto colour =
            tokenColour(static_cast<GasToken>(token), rgbOf(text), rgbOf(background));
        applyStyle(positionOf(token), colourOf(colour), background);
    }
    StyleSetBold(static_cast<int>(GasToken::header), true);
    StyleSetItalic(static_cast<int>(GasToken::comment), true);
    applyStyle(wxSTC_STYLE_BRACELIGHT, system(wxSYS_COLOUR_HIGHLIGHTTEXT),
               system(wxSYS_COLOUR_HIGHLIGHT));
    SetSelForeground(true, system(wxSYS_COLOUR_HIGHLIGHTTEXT));
    SetSelBackground(true, system(wxSYS_COLOUR_HIGHLIGHT));
    SetCaretForeground(text);
}

void TextPane::textFormat(int format) {
    for (int line = 0; textFormat_ != 0 && line < GetLineCount(); ++line) ClearTabStops(line);
    textFormat_ = format;
    // Behind the last stop of tab-delimited text a tab is as wide as elsewhere.
    SetTabWidth(format == 0 ? 1 : 8);
    chooseColours();
    showLines();
}

void TextPane::chooseColours() {
    coloured_ = textFormat_ == 0 && looksLikeGas(reference_);
    colouredRange_ = {};
    StartStyling(0);
    if (!coloured_) SetStyling(GetLength(), static_cast<int>(GasToken::plain));
}

void TextPane::showLines() {
    const int first = GetFirstVisibleLine();
    const int last = std::min(first + LinesOnScreen() + 1, GetLineCount() - 1);
    for (int line = first; textFormat_ != 0 && line <= last; ++line) setTabStops(line);
    if (coloured_) colourLines(first, last);
}

void TextPane::setTabStops(int line) {
    constexpr int kSample = 10;
    const int width = TextWidth(wxSTC_STYLE_DEFAULT, wxString('0', kSample));
    const auto pixels = [width](int quarters) { return quarters * width / (4 * kSample); };
    if (GetNextTabStop(line, 0) == pixels(kTabStops.front())) return;
    ClearTabStops(line);
    for (const int stop : kTabStops) AddTabStop(line, pixels(stop));
}

void TextPane::colourLines(int first, int last) {
    const int begin = PositionFromLine(first);
    const int end = last + 1 < GetLineCount() ? PositionFromLine(last + 1) : GetLength();
    const TextRange range{static_cast<std::size_t>(begin), static_cast<std::size_t>(end)};
    if (range == colouredRange_) return;
    colouredRange_ = range;
    std::string tokens = gasTokens(bytes(begin, end));
    StartStyling(begin);
    SetStyleBytes(end - begin, tokens.data());
}

int TextPane::braceAtCaret() const {
    constexpr std::string_view kBraces = "{}[]";
    const int caret = GetCurrentPos();
    for (const int at : {caret - 1, caret}) {
        if (at < 0 || at >= GetLength()) continue;
        if (kBraces.find(bytes(at, at + 1)) != kBraces.npos) return at;
    }
    return wxSTC_INVALID_POSITION;
}

void TextPane::showBraces() {
    const int brace = coloured_ ? braceAtCaret() : wxSTC_INVALID_POSITION;
    int match = wxSTC_INVALID_POSITION;
    if (brace >= 0) {
        const int begin = PositionFromLine(LineFromPosition(std::max(0, brace - kBraceReach)));
        const int end = std::min(GetLength(), brace + kBraceReach);
        const auto found =
            matchingBrace(bytes(begin, end), static_cast<std::size_t>(brace - begin));
        if (found) match = begin + positionOf(*found);
    }
    BraceHighlight(match < 0 ? wxSTC_INVALID_POSITION : brace, match);
}

}  // namespace kestrel
