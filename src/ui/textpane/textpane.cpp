#include "ui/textpane/textpane.h"

#include <wx/menu.h>

#include <algorithm>
#include <limits>

#include "base/bytes.h"
#include "base/error.h"
#include "services/program.h"
#include "ui/common/accessible.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/textpane/textaccess.h"

namespace kestrel {
namespace {

constexpr int kEdge = 4;
constexpr int kModifications = wxSTC_MOD_INSERTTEXT | wxSTC_MOD_DELETETEXT;

void copyToClipboard(std::wstring_view text) {
    if (gProgram().host.clipboard != nullptr) gProgram().host.clipboard->setText(text);
}

void checkLength(std::size_t bytes) {
    if (bytes > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw RunTimeError(kOutOfMemory, L"The text is too long to be shown");
    }
}

}  // namespace

TextPane::TextPane(wxWindow* parent, const wxString& name)
    : wxStyledTextCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, name) {
    SetLexer(wxSTC_LEX_CONTAINER);
    SetModEventMask(kModifications);
    SetMultipleSelection(false);
    SetEOLMode(wxSTC_EOL_CRLF);
    SetScrollWidthTracking(true);
    SetLayoutCache(wxSTC_CACHE_PAGE);
    for (int margin = 0; margin < GetMarginCount(); ++margin) SetMarginWidth(margin, 0);
    SetMargins(scaled(*this, kEdge), scaled(*this, kEdge));
    UsePopUp(wxSTC_POPUP_NEVER);
    clearUnusualKeys();
    applyFont();
    applyColours();
    textFormat(0);
    bindEvents();
    makeReadable(*this);
    setAccessibleName(*this, "Text");
}

void TextPane::bindEvents() {
    Bind(wxEVT_STC_MODIFIED, [this](wxStyledTextEvent& event) { textModified(event); });
    Bind(wxEVT_STC_STYLENEEDED, [this](wxStyledTextEvent& event) {
        showLines();
        // The rest is coloured when it comes into view.
        if (GetEndStyled() < event.GetPosition()) StartStyling(event.GetPosition());
    });
    listen(*this, wxEVT_STC_UPDATEUI, [this] {
        showLines();
        showBraces();
    });
    listen(*this, wxEVT_SIZE, [this] {
        CallAfter([this] {
            fitScrollWidth();
            showLines();
        });
    });
    listen(*this, wxEVT_SYS_COLOUR_CHANGED, [this] { applyColours(); });
    Bind(wxEVT_KEY_DOWN, &TextPane::keyPressed, this);
    Bind(wxEVT_CONTEXT_MENU, [this](wxContextMenuEvent&) { showMenu(); });
}

// What edits or copies in ways that a text box does not, and what the window's
// own commands do.
void TextPane::clearUnusualKeys() {
    const auto clear = [this](std::string_view letters, int modifiers) {
        for (const char letter : letters)
            CmdKeyClear(static_cast<unsigned char>(letter), modifiers);
    };
    clear("ACDLTUX", wxSTC_KEYMOD_CTRL);
    clear("LTU", wxSTC_KEYMOD_CTRL | wxSTC_KEYMOD_SHIFT);
    CmdKeyClear(wxSTC_KEY_INSERT, wxSTC_KEYMOD_CTRL);
    CmdKeyClear(wxSTC_KEY_DELETE, wxSTC_KEYMOD_SHIFT);
    CmdKeyAssign('Z', wxSTC_KEYMOD_CTRL | wxSTC_KEYMOD_SHIFT, wxSTC_CMD_REDO);
    SetRectangularSelectionModifier(0);
}

void TextPane::setText(std::wstring_view text) {
    kept_.reset();
    std::optional<StandIn> shown = standIn(text);
    if (shown) kept_.emplace(text);
    reference_ = toUtf8(shown ? std::wstring_view(shown->text) : text);
    checkLength(reference_.size());
    surplus_ = reference_.size() - (shown ? shown->text.size() : text.size());
    shown_.cuts = shown ? std::move(shown->cuts) : std::vector<HiddenPart>();
    canEdit_ = canEdit_ && shown_.cuts.empty();

    SetModEventMask(0);
    SetReadOnly(false);
    SetUndoCollection(false);
    ClearAll();
    addUnedited(reference_);

    SetEOLMode(endsLinesInLf(reference_) ? wxSTC_EOL_LF : wxSTC_EOL_CRLF);
    chooseColours();
    fitScrollWidth();
    GotoPos(0);
    SetXOffset(0);
    showLines();
}

void TextPane::append(std::wstring_view text) {
    const std::optional<StandIn> shown = standIn(text);
    const std::string bytes = toUtf8(shown ? std::wstring_view(shown->text) : text);
    checkLength(static_cast<std::size_t>(GetLength()) + bytes.size());
    if (shown && !kept_) kept_ = fromUtf8(this->bytes());
    if (shown) addCuts(shown->cuts);
    if (kept_) kept_->append(text);
    surplus_ += bytes.size() - (shown ? shown->text.size() : text.size());
    // Nobody changes the text, so nothing has to be compared with it.
    reference_.clear();
    addUnedited(bytes);
    GotoPos(GetLength());
}

void TextPane::cutStart(int bytes) {
    const int next = LineFromPosition(bytes) + 1;
    const int end = next < GetLineCount() ? PositionFromLine(next) : 0;
    const std::size_t characters = characterAt(end);
    if (kept_) kept_->erase(0, shown_.toWhole(characters));
    std::erase_if(shown_.cuts, [&](const HiddenPart& cut) { return cut.at < characters; });
    for (HiddenPart& cut : shown_.cuts) cut.at -= characters;
    surplus_ -= static_cast<std::size_t>(end) - characters;
    changeUnedited([&] { DeleteRange(0, end); });
}

// Puts `bytes` at the end as a part of the text that was set.
void TextPane::addUnedited(std::string_view bytes) {
    changeUnedited([&] { AppendTextRaw(bytes.data(), static_cast<int>(bytes.size())); });
}

void TextPane::changeUnedited(const std::function<void()>& change) {
    SetModEventMask(0);
    SetReadOnly(false);
    SetUndoCollection(false);
    change();
    SetUndoCollection(true);
    EmptyUndoBuffer();
    SetSavePoint();
    SetReadOnly(!canEdit_);
    SetModEventMask(kModifications);
}

void TextPane::edit(std::wstring_view text) {
    const std::string bytes = toUtf8(text);
    checkLength(bytes.size());
    BeginUndoAction();
    ClearAll();
    AppendTextRaw(bytes.data(), static_cast<int>(bytes.size()));
    EndUndoAction();
}

std::wstring TextPane::text() const {
    return kept_ && !changed() ? *kept_ : fromUtf8(bytes());
}

// A width below the visible one makes GTK draw an edge as if it were scrolled too
// far. Lines that are wider make it grow.
void TextPane::fitScrollWidth() {
    SetScrollWidth(std::max(1, GetClientSize().x - 2 * scaled(*this, kEdge)));
}

bool TextPane::changed() const {
    if (!GetModify()) return false;
    // Looking at the bytes moves them together, which takes long in a long text.
    return static_cast<std::size_t>(GetLength()) != reference_.size() || bytes() != reference_;
}

void TextPane::settle() {
    if (!changed()) return;
    reference_ = bytes();
    kept_.reset();
    SetSavePoint();
}

void TextPane::canEdit(bool can) {
    canEdit_ = can && shown_.cuts.empty();
    SetReadOnly(!canEdit_);
    applyColours();
}

void TextPane::textModified(const wxStyledTextEvent& event) {
    colouredRange_ = {};
    const auto length = static_cast<std::size_t>(event.GetLength());
    const std::size_t beyond = length - event.GetString().length();
    const bool inserted = (event.GetModificationType() & wxSTC_MOD_INSERTTEXT) != 0;
    surplus_ = inserted ? surplus_ + beyond : surplus_ - beyond;
    if (onTextChanged) {
        onTextChanged(inserted, characterAt(event.GetPosition()), event.GetString().utf8_string());
    }
}

std::string_view TextPane::bytes(int begin, int end) const {
    if (begin >= end) return {};
    return {GetRangePointer(begin, end - begin), static_cast<std::size_t>(end - begin)};
}

std::size_t TextPane::characterAt(int position) const {
    // A text of ASCII alone, however long, need not be counted.
    if (surplus_ == 0) return static_cast<std::size_t>(position);
    return characterCount(bytes(0, position));
}

int TextPane::positionAt(std::size_t character) const {
    const int length = GetLength();
    if (surplus_ == 0) return static_cast<int>(std::min<std::size_t>(character, length));
    const std::string_view text = bytes();
    std::size_t at = 0;
    for (; character > 0 && at < text.size(); --character) {
        do {
            ++at;
        } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
    }
    return static_cast<int>(at);
}

ReadOuts TextPane::readOuts() const {
    const int caret = GetSelectionEnd();
    const int line = LineFromPosition(caret);
    ReadOuts readOuts;
    readOuts.line = static_cast<std::size_t>(line) + 1;
    readOuts.column = characterCount(bytes(PositionFromLine(line), caret)) + 1;
    readOuts.caret = shown_.toWhole(characterAt(caret));
    readOuts.characters = shown_.toWhole(static_cast<std::size_t>(GetLength()) - surplus_);
    readOuts.lines = static_cast<std::size_t>(GetLineCount());
    return readOuts;
}

std::wstring TextPane::selectedText() const {
    const int begin = GetSelectionStart();
    const int end = GetSelectionEnd();
    if (!kept_ || changed()) return fromUtf8(bytes(begin, end));
    const std::size_t from = shown_.toWhole(characterAt(begin));
    return kept_->substr(from, shown_.toWhole(characterAt(end)) - from);
}

void TextPane::copyText() const {
    copyToClipboard(hasSelection() ? selectedText() : text());
}

void TextPane::selectEverything() {
    SetSelection(0, GetLength());
    EnsureCaretVisible();
}

bool TextPane::find(std::wstring_view what) {
    const std::optional<TextRange> found = findShown(what);
    if (!found) return false;
    SetSelection(static_cast<int>(found->begin), static_cast<int>(found->end));
    EnsureCaretVisible();
    SetFocus();
    return true;
}

// In the whole text, too: what is found in a cut is shown as its begin.
std::optional<TextRange> TextPane::findShown(std::wstring_view what) const {
    const int end = GetSelectionEnd();
    if (shown_.cuts.empty()) return findText(bytes(), what, static_cast<std::size_t>(end));
    const std::string whole = toUtf8(*kept_);
    const std::size_t from = toUtf8(kept_->substr(0, shown_.toWhole(characterAt(end)))).size();
    const std::optional<TextRange> found = findText(whole, what, from);
    if (!found) return std::nullopt;
    const auto shownAt = [&](std::size_t byte) {
        const std::size_t at = characterCount(std::string_view(whole).substr(0, byte));
        return static_cast<std::size_t>(positionAt(shown_.toShown(at)));
    };
    return TextRange{shownAt(found->begin), shownAt(found->end)};
}

// Of what was added behind the text.
void TextPane::addCuts(std::vector<HiddenPart> cuts) {
    const std::size_t before = static_cast<std::size_t>(GetLength()) - surplus_;
    for (HiddenPart& cut : cuts) cut.at += before;
    std::ranges::move(cuts, std::back_inserter(shown_.cuts));
}

void TextPane::cutSelection() {
    if (!canEdit_ || !hasSelection()) return;
    copyToClipboard(selectedText());
    ReplaceSelection(wxString());
}

void TextPane::keyPressed(wxKeyEvent& event) {
    const int code = event.GetKeyCode();
    const int modifiers = event.GetModifiers();
    const bool ctrl = modifiers == wxMOD_CONTROL;
    if ((ctrl && code == 'X') || (modifiers == wxMOD_SHIFT && code == WXK_DELETE)) {
        cutSelection();
    } else if (ctrl && code == WXK_INSERT) {
        copyText();
    } else if (code == WXK_F6 || (code == WXK_TAB && (ctrl || !canEdit_ || tabMovesOn_))) {
        Navigate(event.ShiftDown() ? wxNavigationKeyEvent::IsBackward
                                   : wxNavigationKeyEvent::IsForward);
    } else {
        event.Skip();
    }
}

void TextPane::showMenu() {
    wxMenu menu;
    const auto add = [&menu](int id, bool enabled, const std::function<void()>& run) {
        menu.Append(id)->Enable(enabled);
        menu.Bind(
            wxEVT_MENU, [run](wxCommandEvent&) { run(); }, id);
    };
    add(wxID_UNDO, CanUndo() && canEdit_, [this] { Undo(); });
    add(wxID_REDO, CanRedo() && canEdit_, [this] { Redo(); });
    menu.AppendSeparator();
    add(wxID_CUT, canEdit_ && hasSelection(), [this] { cutSelection(); });
    add(wxID_COPY, hasSelection(), [this] { copyText(); });
    add(wxID_PASTE, CanPaste(), [this] { Paste(); });
    menu.AppendSeparator();
    add(wxID_SELECTALL, GetLength() > 0, [this] { selectEverything(); });
    PopupMenu(&menu);
}

}  // namespace kestrel
