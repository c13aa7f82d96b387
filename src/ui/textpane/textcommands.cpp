#include "ui/textpane/textcommands.h"

#include <wx/dcclient.h>
#include <wx/settings.h>

#include <algorithm>
#include <utility>

#include "services/guard.h"
#include "ui/common/buttons.h"
#include "ui/common/listen.h"
#include "ui/common/mnemonics.h"
#include "ui/common/mousecapture.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "view/saving.h"

namespace kestrel {
namespace {

constexpr int kMargin = 6;

constexpr int kNoIndex = -1;

// From a change to its draft: what a crash costs, and how often somebody who types pays for
// a write to the disk.
constexpr int kDraftMilliseconds = 2000;

}  // namespace

// The buttons from left to right.
const std::array<TextCommands::Row, 7> TextCommands::kRows = {{
    {kScriptEditor, "skritpad", "ScritPad", "ScritPad (Ctl+E)", 'E', wxMOD_CONTROL,
     &TextCommands::openEditor},
    {kFind, "find", "Find", "Find (Ctrl+F)", 'F', wxMOD_CONTROL, &TextCommands::find},
    {kFindAgain, "find-again", "Find Again", "Find Again (F3)", WXK_F3, wxMOD_NONE,
     &TextCommands::findAgain},
    {kCopy, "copy", "Copy", "Copy selected (all if no selection)", 'C', wxMOD_CONTROL,
     &TextCommands::copy},
    {kSave, "save", "Save to file...", "Save to file... (Ctl+S)", 'S', wxMOD_CONTROL,
     &TextCommands::save},
    {kDone, "done", "&Done", "Done (Esc)", WXK_ESCAPE, wxMOD_NONE, &TextCommands::done},
    {kNoIndex, nullptr, nullptr, nullptr, 'A', wxMOD_CONTROL, &TextCommands::selectAll},
}};

TextCommands::TextCommands(wxTopLevelWindow& window, OpenFile openFile, int share)
    : window_(window),
      openFile_(std::move(openFile)),
      released_(
          window, [](const KeyPress& key) { return rowOf(key) != nullptr; },
          [this](const KeyPress& key) { run(*rowOf(key)); }) {
    addControls(share);
    window_.Bind(wxEVT_CHAR_HOOK, &TextCommands::keyPressed, this);
    // A window that takes the keyboard before it is shown may have no caption yet.
    listen(window_, wxEVT_ACTIVATE, [this](const wxActivateEvent& event) {
        if (event.GetActive() && window_.IsShown()) takeCaption();
    });
    window_.Bind(wxEVT_PAINT, &TextCommands::paintBorder, this);
    listen(*txtView, wxEVT_STC_UPDATEUI, [this] { caretMoved(); });
    listen(*txtView, wxEVT_STC_CHANGE, [this] {
        if (block_ && !draftTimer_.IsRunning()) draftTimer_.StartOnce(kDraftMilliseconds);
    });
    draftTimer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { keepDraft(); });
}

TextCommands::~TextCommands() {
    releaseMouse(window_);
}

// The pane tells of its caret in the midst of its painting, where nothing else may be
// painted.
void TextCommands::caretMoved() {
    if (std::exchange(stale_, true)) return;
    CallAfter([this] {
        stale_ = false;
        refresh();
    });
}

// The border that toolkits draw around such a pane cannot be seen everywhere.
void TextCommands::paintBorder(wxPaintEvent&) {
    wxPaintDC canvas(&window_);
    canvas.SetPen(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNSHADOW));
    canvas.SetBrush(*wxTRANSPARENT_BRUSH);
    for (const wxWindow* window : framed_) canvas.DrawRectangle(window->GetRect().Inflate(1));
}

void TextCommands::addControls(int share) {
    txtView = new TextPane(&window_, "txtView");
    frame(*txtView);
    for (const Row& row : kRows) {
        if (row.index == kNoIndex) continue;
        wxButton* button =
            addPictureButton(&window_, row.icon, row.label, row.tooltip, row.index == kDone);
        button->SetName(wxString::Format("cmdCommands%d", row.index));
        button->Bind(wxEVT_BUTTON, [this, &row](wxCommandEvent&) { run(row); });
        cmdCommands[static_cast<std::size_t>(row.index)] = button;
    }
    std::vector<StatusPanels::Panel> panels{{3, ""}, {2, ""}, {4, ""}, {4, ""}, {3, ""}};
    if (share > 0) panels.push_back({share, ""});
    stbMain = new StatusPanels(&window_, std::move(panels));
}

int TextCommands::margin() const {
    return scaled(window_, kMargin);
}

wxSizer* TextCommands::buttonRow() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->AddStretchSpacer();
    for (const Row& command : kRows) {
        if (command.index == kNoIndex) continue;
        row->Add(cmdCommands[static_cast<std::size_t>(command.index)],
                 wxSizerFlags().Expand().Border(wxLEFT, margin()));
    }
    return row;
}

const TextCommands::Row* TextCommands::rowOf(const KeyPress& key) {
    const auto* row = std::find_if(kRows.begin(), kRows.end(), [&key](const Row& one) {
        return KeyPress{one.key, one.modifiers} == key;
    });
    return row == kRows.end() ? nullptr : row;
}

void TextCommands::keyPressed(wxKeyEvent& event) {
    if (event.GetModifiers() == wxMOD_ALT && pressMnemonic(window_, event.GetKeyCode())) return;
    event.Skip();
}

void TextCommands::run(const Row& row) {
    guarded(L"cmdCommands", [&] { (this->*row.handler)(); });
}

void TextCommands::done() {
    window_.Close();
}

void TextCommands::save() {
    if (savesOther && savesOther()) return;
    ViewedText text = viewed();
    if (!saveViewedText(text, openFile_)) return;
    loaded_ = text.loaded;
    txtView->settle();
    forgetDraft();
    refresh();
}

// NOLINTNEXTLINE(readability-make-member-function-const): a row of the table.
void TextCommands::copy() {
    txtView->copyText();
}

void TextCommands::find() {
    searchText_ = askForSearchText(searchText_);
    search();
}

void TextCommands::findAgain() {
    if (searchText_.empty()) searchText_ = askForSearchText(searchText_);
    search();
}

void TextCommands::search() {
    if (!searchText_.empty() && !txtView->find(searchText_)) tellNotFound(searchText_);
    refresh();
}

void TextCommands::openEditor() {
    openInScriptEditor(viewed());
}

void TextCommands::selectAll() {
    txtView->selectEverything();
    refresh();
}

ViewedText TextCommands::viewed() const {
    return {[this] { return txtView->text(); }, txtView->canEdit(), txtView->changed(), loaded_,
            block_};
}

void TextCommands::refresh() {
    const auto texts = readOutTexts(txtView->readOuts());
    for (int panel = 0; panel < kPanels; ++panel) {
        stbMain->setPanel(panel, texts[static_cast<std::size_t>(panel)]);
    }
    if (!caption_) return;
    const wxString caption = toWx(markedCaption(fromWx(*caption_), txtView->changed()));
    if (window_.GetTitle() != caption) window_.SetTitle(caption);
}

void TextCommands::takeCaption() {
    if (!caption_) caption_ = window_.GetTitle();
}

void TextCommands::shows(const std::optional<FileBlock>& block, std::wstring_view caption) {
    block_ = block;
    draftCaption_ = caption;
    loaded_ = block ? txtView->text() : std::wstring();
    forgetDraft();
    txtView->canEdit(block.has_value());
}

// Nothing of the text would be lost now.
void TextCommands::forgetDraft() {
    draftTimer_.Stop();
    draft_.drop();
    stamp_ = block_ ? fileStamp(block_->path) : std::nullopt;
}

void TextCommands::restore(LeftDraft left) {
    txtView->setText(left.draft.loaded);
    shows(left.draft.block, left.draft.caption);
    stamp_ = left.draft.stamp;
    draft_ = std::move(left.file);
    txtView->edit(left.draft.text);
    refresh();
}

void TextCommands::keepDraft() {
    if (!block_) return;
    if (!txtView->changed()) return draft_.drop();
    draft_.keep({draftCaption_, *block_, stamp_, loaded_, txtView->text()});
}

bool TextCommands::mayClose(bool mayAsk) {
    if (mayAsk && !mayDiscard(viewed())) return false;
    draftTimer_.Stop();
    mayAsk ? draft_.drop() : keepDraft();
    return true;
}

}  // namespace kestrel
