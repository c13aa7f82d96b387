#include "ui/frmArchive/frmArchive.h"

#include <wx/stattext.h>
#include <wx/utils.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "base/bytes.h"
#include "base/paths.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/letters.h"
#include "tank/extract.h"
#include "ui/common/accessible.h"
#include "ui/common/dialogend.h"
#include "ui/common/listen.h"
#include "ui/common/mnemonics.h"
#include "ui/common/sash.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmArchive/frmExtract.h"
#include "ui/frmView/frmView.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr long kStyle = wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER | wxMAXIMIZE_BOX;
constexpr int kFirstWidth = 900;
constexpr int kFirstHeight = 600;
constexpr int kLeastWidth = 560;
constexpr int kLeastHeight = 320;
constexpr int kTreeWidth = 220;
constexpr int kLeastPane = 120;
constexpr int kMargin = 8;

// What a tree can draw, and open at once; the list shows the others.
constexpr std::size_t kMostFolders = 20'000;
constexpr std::size_t kMostLevels = 250;
constexpr std::size_t kMany = 100'000;  // rows that take long to sort
// A desktop's list takes half a microsecond a row.
constexpr std::size_t kMostRows = 20'000;

// The text of a file in an archive; nothing where it holds none.
std::optional<std::wstring> wideText(std::string_view bytes) {
    if (bytes.find('\0') != bytes.npos) return std::nullopt;
    const CodePage& page = pageOf(bytes, *gProgram().sourcePage);
    if (page.isUtf8() && bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    return page.wide(bytes);
}

}  // namespace

frmArchive::frmArchive(wxWindow* parent, std::unique_ptr<TankContents> contents, OpenFile openFile)
    : wxDialog(parent, wxID_ANY, shownLine(L"Archive: " + contents->path()), wxDefaultPosition,
               wxDefaultSize, kStyle, "frmArchive"),
      contents_(std::move(contents)),
      openFile_(std::move(openFile)),
      treeWidth_(scaled(*this, kTreeWidth)),
      released_(
          *this, [this](const KeyPress& key) { return wants(key); },
          [this](const KeyPress& key) { keyReleased(key); }) {
    layOut();
    bind();
    fillTree();
    lvwFiles->fill(contents_->items().size(),
                   [this](const RowOrder& order) { return shownOf(order); });
    tellShown();
    lvwFiles->window().SetFocus();
}

wxSizer* frmArchive::buildFilter() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(new wxStaticText(this, wxID_ANY, "F&ilter:"), wxSizerFlags().CentreVertical());
    txtFilter = new wxTextCtrl(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0,
                               wxDefaultValidator, "txtFilter");
    setAccessibleName(*txtFilter, "Filter");
    txtFilter->SetToolTip("Show all below the folder whose name holds this");
    row->Add(txtFilter, wxSizerFlags(1).CentreVertical().Border(wxLEFT, scaled(*this, kMargin)));
    return row;
}

wxSizer* frmArchive::buildPanes() {
    const int gap = scaled(*this, kMargin);
    tvwFolders = makeNodeTree(this, "tvwFolders");
    setAccessibleName(tvwFolders->window(), "Folders");
    auto* sash = new Sash(this, gap, [this, gap](int x) {
        treeWidth_ = x - gap;
        fitTree();
        Layout();
        Refresh();
    });
    lvwFiles = std::make_unique<ReportList>(
        this, "lvwFiles",
        std::vector<ReportList::Column>{{L"Name", 150, 3},
                                        {L"Folder", 110, 2},
                                        {L"Size", 80, 0, true},
                                        {L"Packed", 80, 0, true},
                                        {L"Ratio", 60, 0, true},
                                        {L"Format", 70, 0},
                                        {L"CRC", 90, 0, true}},
        [this](std::size_t position, std::size_t column) {
            return contents_->text(static_cast<std::uint32_t>(position),
                                   static_cast<TankColumn>(column));
        });
    setAccessibleName(lvwFiles->window(), "Files");
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    treeItem_ = row->Add(&tvwFolders->window(), wxSizerFlags().Expand());
    row->Add(sash, wxSizerFlags().Expand());
    row->Add(&lvwFiles->window(), wxSizerFlags(1).Expand());
    return row;
}

wxSizer* frmArchive::buildButtons() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->AddStretchSpacer();
    const auto add = [&](const char* label, const char* tooltip) {
        auto* button = new wxButton(this, wxID_ANY, label);
        button->SetToolTip(tooltip);
        row->Add(button, wxSizerFlags().Border(wxLEFT, scaled(*this, kMargin)));
        return button;
    };
    cmdView = add("&View", "Show the text of the selected file, or enter the folder");
    cmdFind = add("&Find...", "Find all names in the archive that hold a text");
    cmdExtract = add("&Extract...", "Write files of the archive into a folder");
    cmdDone = add("&Done", "Also use ESC");
    return row;
}

void frmArchive::layOut() {
    const wxSizerFlags part = wxSizerFlags().Expand().Border(wxALL, scaled(*this, kMargin));
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildFilter(), part);
    column->Add(buildPanes(),
                wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT, scaled(*this, kMargin)));
    column->Add(buildButtons(), part);
    stbMain = new StatusPanels(this, {{1, "What the list shows"}, {1, "All of the archive"}});
    column->Add(stbMain, wxSizerFlags().Expand());
    SetSizer(column);
    SetMinSize(wxSize(scaled(*this, kLeastWidth), scaled(*this, kLeastHeight)));
    SetSize(scaled(*this, kFirstWidth), scaled(*this, kFirstHeight));
    CentreOnParent();
    fitTree();
    std::wstring all = L"Archive: " + textOf(contents_->totals(0));
    if (!contents_->isWhole()) all += L", not read to its end";
    stbMain->setPanel(pnlArchive, all);
}

void frmArchive::fitTree() {
    const int least = scaled(*this, kLeastPane);
    const int most = GetClientSize().x - 3 * scaled(*this, kMargin) - least;
    treeItem_->SetMinSize(std::max(least, std::min(treeWidth_, most)), -1);
}

void frmArchive::bind() {
    SetEscapeId(wxID_NONE);
    listen(*this, wxEVT_SIZE, [this] { fitTree(); });
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
        if (gProgram().progress != nullptr && event.CanVeto()) return event.Veto();
        endDialog(*this);
    });
    Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
        const bool alt = event.GetModifiers() == wxMOD_ALT;
        if (!alt || !pressMnemonic(*this, event.GetKeyCode())) event.Skip();
    });
    listen(*txtFilter, wxEVT_TEXT, [this] { limit(); });
    tvwFolders->onSelect = [this] {
        const auto node = tvwFolders->selected();
        if (node) showFolder(nodes_.at(*node));
    };
    lvwFiles->order = [this](const SortState& state) { return sorted(state); };
    lvwFiles->onSorted = [this] { limit(); };
    lvwFiles->onSelect = [this] { refresh(); };
    lvwFiles->onActivate = [this] { activate(); };
    const auto onPress = [](wxButton& button, std::function<void()> command) {
        button.Bind(wxEVT_BUTTON, [command = std::move(command)](wxCommandEvent&) {
            guarded(L"cmdCommands_Click", command);
        });
    };
    onPress(*cmdView, [this] { activate(); });
    onPress(*cmdFind, [this] { find(); });
    onPress(*cmdExtract, [this] { extractSome(); });
    onPress(*cmdDone, [this] { Close(); });
}

void frmArchive::fillTree() {
    std::vector<NodeTree::Node> nodes{
        {shownLine(fileName(contents_->path())), NodeTree::Node::kNoParent}};
    std::vector<std::size_t> levels{0};
    nodes_ = {0};
    const std::vector<TankItem>& items = contents_->items();
    for (std::uint32_t i = 1; i < items.size() && nodes.size() < kMostFolders; ++i) {
        if (!items[i].isFolder) continue;
        const auto around = std::ranges::lower_bound(nodes_, items[i].parent);
        if (around == nodes_.end() || *around != items[i].parent) continue;
        const auto parent = static_cast<std::size_t>(around - nodes_.begin());
        if (levels[parent] >= kMostLevels) continue;
        nodes.push_back({shownLine(contents_->name(i)), parent});
        levels.push_back(levels[parent] + 1);
        nodes_.push_back(i);
    }
    tvwFolders->setNodes(std::move(nodes), false);
    tvwFolders->select(0);
}

bool frmArchive::wants(const KeyPress& key) const {
    return key == KeyPress{WXK_ESCAPE, wxMOD_NONE} || key == KeyPress{'F', wxMOD_CONTROL} ||
           (key == KeyPress{WXK_BACK, wxMOD_NONE} && lvwFiles->window().HasFocus());
}

void frmArchive::keyReleased(const KeyPress& key) {
    if (key.code == WXK_ESCAPE) {
        Close();
    } else if (key.code == WXK_BACK) {
        if (folder_ != 0) enter(contents_->items()[folder_].parent);
    } else {
        guarded(L"cmdCommands_Click", [this] { find(); });
    }
}

RowOrder frmArchive::sorted(const SortState& state) {
    const auto column = static_cast<TankColumn>(state.column);
    if (contents_->items().size() < kMany) {
        return contents_->sorted(column, state.descending, nullptr);
    }
    OwnerWx owner(*this, &lvwFiles->window());
    ProgressScope scope(nullptr, &owner, L"Sorting");
    // The rows are needed: there is nothing to cancel to.
    if (scope.dialog() != nullptr) scope.dialog()->CanCancel(false);
    return contents_->sorted(column, state.descending, [&] { scope.goesOn(); });
}

RowOrder frmArchive::shownOf(const RowOrder& order) {
    found_ = contents_->inFolder(folder_, fromWx(txtFilter->GetValue()), order);
    RowOrder shown = found_;
    shown.resize(std::min(shown.size(), kMostRows));
    return shown;
}

void frmArchive::showFolder(std::uint32_t folder) {
    folder_ = folder;
    limit();
}

// Shows the folder, and selects it in the tree, or what is there around it.
void frmArchive::enter(std::uint32_t folder) {
    showFolder(folder);
    auto node = std::ranges::upper_bound(nodes_, folder) - 1;
    for (std::uint32_t up = folder; *node != up;) {
        up = contents_->items()[up].parent;
        node = std::ranges::upper_bound(nodes_, up) - 1;
    }
    tvwFolders->select(static_cast<std::size_t>(node - nodes_.begin()));
    lvwFiles->window().SetFocus();
}

// What was selected stays so where it is still shown.
void frmArchive::limit() {
    const auto selected = lvwFiles->selected();
    lvwFiles->limit([this](const RowOrder& order) { return shownOf(order); });
    if (selected) lvwFiles->selectPosition(*selected);
    tellShown();
}

void frmArchive::tellShown() {
    const bool all = found_.size() <= kMostRows;
    const std::wstring what =
        all ? L"Shown: " : L"The first " + std::to_wstring(kMostRows) + L" of ";
    stbMain->setPanel(pnlShown, what + textOf(contents_->totals(found_)));
    refresh();
}

void frmArchive::refresh() {
    cmdView->Enable(lvwFiles->selected().has_value());
    cmdExtract->Enable(contents_->items().size() > 1);
}

void frmArchive::activate() {
    const auto selected = lvwFiles->selected();
    if (!selected) return;
    const auto number = static_cast<std::uint32_t>(*selected);
    if (contents_->items()[number].isFolder) {
        txtFilter->ChangeValue("");
        return enter(number);
    }
    guarded(L"lvwFiles_DblClick", [&] { view(number); });
}

void frmArchive::view(std::uint32_t number) {
    const std::wstring name = contents_->name(number);
    std::optional<std::wstring> text;
    {
        const wxBusyCursor busyCursor;
        text = wideText(contents_->read(number));
    }
    if (!text) {
        return tellUser(L"'" + name +
                            L"' holds no text. Extract it to open it with another "
                            L"program.",
                        Icon::information);
    }
    frmView viewer(this, openFile_);
    viewer.TextBlock(*std::exchange(text, std::nullopt));
    viewer.CanEdit(false);
    viewer.SetTitle(shownLine(contents_->shownPath(number)));
    bool opens = false;
    if (endsWithoutCase(name, L".gas")) {
        viewer.Offer("Open in &Main Window", "Open a temporary copy of this file",
                     [&] { opens = true; });
    }
    showModal(viewer);
    if (opens) openCopy(number);
}

void frmArchive::openCopy(std::uint32_t number) {
    copy_ = temporaryCopy(*contents_, number);
    if (!copy_.empty()) Close();
}

void frmArchive::find() {
    const std::wstring searched =
        promptUser(L"Please enter a part of the names to find in the whole archive:", L"Find All",
                   lastSearch_);
    if (searched.empty()) return;
    lastSearch_ = searched;
    txtFilter->ChangeValue(toWx(searched));
    enter(0);
    if (lvwFiles->rows().empty()) return tellNotFound(searched);
    lvwFiles->selectRow(0);
    refresh();
}

void frmArchive::extractSome() {
    const auto selected = lvwFiles->selected();
    Numbers one;
    if (selected) one.push_back(static_cast<std::uint32_t>(*selected));
    frmExtract dialog(this, *contents_, std::move(one), found_, !txtFilter->IsEmpty());
    showModal(dialog);
}

}  // namespace kestrel
