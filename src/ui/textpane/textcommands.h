#pragma once

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/timer.h>
#include <wx/toplevel.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "ui/common/releasedkeys.h"
#include "ui/common/statuspanels.h"
#include "ui/textpane/textpane.h"
#include "view/drafts.h"

namespace kestrel {

// What every window that shows a text has: the pane, the buttons and keys of its
// six commands, the read-outs and the mark of a changed text in the caption. The
// controls are children of the window. As an event handler it hears nothing more of
// them once it has ended, which it does before they do.
class TextCommands final : public wxEvtHandler {
  public:
    enum Button { kDone, kSave, kCopy, kFind, kFindAgain, kScriptEditor, kButtons };
    enum Panel { pnlLine, pnlCol, pnlChar, pnlChars, pnlLines, kPanels, pnlMore = kPanels };

    // With a `share` of its width (a number has 3) the status bar has one more panel, pnlMore.
    TextCommands(wxTopLevelWindow& window, OpenFile openFile, int share = 0);
    ~TextCommands() override;

    TextPane* txtView;
    std::array<wxButton*, kButtons> cmdCommands;
    StatusPanels* stbMain;

    // Draws a border around a control of the window, as around the text.
    void frame(const wxWindow& control) { framed_.push_back(&control); }

    // The distance of the controls from each other and from the window's edges.
    int margin() const;

    // A space that takes the width left, then the buttons from SkritPad to Done. A
    // window may put its own buttons between them.
    wxSizer* buttonRow();

    // Shows the read-outs and the caption's mark.
    void refresh();

    // Takes the window's caption as the base of the marked one, unless one was
    // taken before.
    void takeCaption();

    // The text that was set is a block of a file; it can be edited as such alone. Its
    // draft is known to the user by `caption`.
    void shows(const std::optional<FileBlock>& block, std::wstring_view caption);

    // Shows the text of a draft that was left, changed as it is, and goes on with that.
    void restore(LeftDraft left);

    // What Save does in place of saving the text that is shown; false when it does not.
    std::function<bool()> savesOther;

    // True when the window may close: nothing would be lost, or the user agrees. What ends
    // without being asked (`mayAsk` false) leaves its changes as a draft.
    bool mayClose(bool mayAsk);

    // Keeps what is not saved, now.
    void keepDraft();

  private:
    struct Row {
        int index;  // of its button
        const char* icon;
        const char* label;
        const char* tooltip;
        int key;
        int modifiers;
        void (TextCommands::*handler)();
    };
    static const std::array<Row, 7> kRows;

    void addControls(int share);
    void caretMoved();
    void forgetDraft();
    void paintBorder(wxPaintEvent& event);
    void keyPressed(wxKeyEvent& event);
    static const Row* rowOf(const KeyPress& key);

    void run(const Row& row);
    void done();
    void save();
    void copy();
    void find();
    void findAgain();
    void openEditor();
    void selectAll();
    void search();
    ViewedText viewed() const;

    wxTopLevelWindow& window_;
    std::vector<const wxWindow*> framed_;
    OpenFile openFile_;
    std::optional<wxString> caption_;
    std::wstring searchText_;
    std::optional<FileBlock> block_;
    std::wstring loaded_;             // the block, as its file has it
    std::optional<FileStamp> stamp_;  // of that file, then
    std::wstring draftCaption_;
    DraftFile draft_;
    wxTimer draftTimer_;
    ReleasedKeys released_;
    bool stale_ = false;  // the read-outs wait for the events to end
};

}  // namespace kestrel
