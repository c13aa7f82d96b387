#pragma once

#include <wx/stc/stc.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "view/viewtext.h"

namespace kestrel {

// A text box for texts of any size: each of them comes out as it was put in,
// whatever its line ends and characters are. `.gas` texts are shown in colours.
class TextPane final : public wxStyledTextCtrl {
  public:
    TextPane(wxWindow* parent, const wxString& name);

    // Shows `text`; it becomes what changed() compares with. Undo does not go
    // behind it.
    void setText(std::wstring_view text);
    // Adds `text` to a pane that cannot be edited and moves the caret to the end. It
    // counts as set. The time it takes does not depend on the text before it.
    void append(std::wstring_view text);
    // Takes whole lines away from the start of such a text, so many bytes at least; none where
    // that would be all.
    void cutStart(int bytes);
    // Puts `text` in the place of the one that is shown, as its user would, who can undo it.
    void edit(std::wstring_view text);
    std::wstring text() const;
    // True when the text differs from the one that was set.
    bool changed() const;
    // The text as it is now becomes what it is compared with.
    void settle();

    // An editable pane has the background of a window, another one that of a
    // button. A text that is not shown whole cannot be edited.
    void canEdit(bool can);
    bool canEdit() const noexcept { return canEdit_; }

    // Whether Tab goes on to the next control, as it does in a pane that cannot be
    // edited; Ctrl+Tab and F6 do in any.
    void tabMovesOn(bool moves) { tabMovesOn_ = moves; }

    // Other than 0: tab stops for tab-delimited text, at 10, 120, 220 and 320
    // quarters of a character. 0: a tab is as wide as one character.
    void textFormat(int format);

    ReadOuts readOuts() const;

    // The bytes of a part of the text as it is now, until it changes.
    std::string_view bytes(int begin, int end) const;

    // Positions are places among the bytes; people count characters.
    std::size_t characterAt(int position) const;
    int positionAt(std::size_t character) const;

    // Called after the text from the character `at` on was put in or taken out.
    std::function<void(bool inserted, std::size_t at, const std::string& text)> onTextChanged;

    bool hasSelection() const { return GetSelectionStart() != GetSelectionEnd(); }
    std::wstring selectedText() const;
    // The selection, or the whole text without one, into the clipboard.
    void copyText() const;
    // Selects the whole text and scrolls the caret into view.
    void selectEverything();
    // Selects the next place of `what`, scrolls to it and takes the keyboard;
    // false when there is none.
    bool find(std::wstring_view what);

  private:
    // Set up once (textpane.cpp) and what it looks like (textlook.cpp).
    void bindEvents();
    void clearUnusualKeys();
    void fitScrollWidth();
    void applyFont();
    void applyColours();
    void applyStyle(int style, const wxColour& text, const wxColour& background);

    // What is lazily done for the visible lines alone, so that the size of the
    // text does not matter (textlook.cpp).
    void chooseColours();
    void showLines();
    void setTabStops(int line);
    void colourLines(int first, int last);
    void showBraces();
    int braceAtCaret() const;

    void addUnedited(std::string_view bytes);
    void changeUnedited(const std::function<void()>& change);
    void keyPressed(wxKeyEvent& event);
    void showMenu();
    void cutSelection();
    void addCuts(std::vector<HiddenPart> cuts);
    std::optional<TextRange> findShown(std::wstring_view what) const;
    void textModified(const wxStyledTextEvent& event);
    std::string_view bytes() const { return bytes(0, GetLength()); }

    std::string reference_;             // what was set, as the control holds it
    std::optional<std::wstring> kept_;  // what was set, where the control cannot hold it
    StandIn shown_;                     // how places in the two belong together; has no text
    std::size_t surplus_ = 0;           // bytes of the text beyond its characters
    int textFormat_ = 0;
    bool canEdit_ = true;
    bool tabMovesOn_ = false;
    bool coloured_ = false;
    TextRange colouredRange_;  // of the text as it is now
};

}  // namespace kestrel
