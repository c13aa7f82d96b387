#include <wx/utils.h>

#include "gas/load.h"
#include "services/guard.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "system/codepage.h"
#include "system/filesystem.h"
#include "system/plainpath.h"
#include "ui/common/strings.h"
#include "ui/frmMain/frmMain.h"
#include "view/browse.h"

namespace kestrel {
namespace {

// Opening every branch of a tree of many thousand nodes takes longer than it
// helps to find anything.
constexpr std::size_t kOpenNodes = 500;

}  // namespace

void frmMain::bindBrowsing() {
    lvwTemplates->onSelect = [this] { templateSelected(); };
    lvwProperties->onSelect = [this] { refreshCommands(); };
    lvwProperties->onActivate = [this] { run(mainCommand(Command::Place::menu, "Follow")); };
    tvwInfo->onSelect = [this] { nodeClicked(); };
    chkTree->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) {
        if (!busy()) templateSelected();
    });
}

bool frmMain::openFile(std::wstring path) {
    if (busy()) return false;
    const bool opened = guarded(L"mSelectFile", [&] { return mSelectFile(std::move(path)); });
    refreshCommands();
    return opened;
}

bool frmMain::mSelectFile(std::wstring path) {
    if (path.empty()) {
        path = askForFile(L"Select a Gas File", L"Gas File (*.gas)|*.gas", false, startOfPickers());
    }
    if (path.empty()) return false;
    path = filesystem::absolutePath(plainPath(path));
    const wxBusyCursor busyCursor;
    if (path != document_.path) gProgram().sourcePage = gProgram().codePage;
    // The lists show the records that the load is about to replace.
    lvwTemplates->clear();
    lvwProperties->clear();
    const auto stamp = fileStamp(path);
    std::wstring loaded = path;
    if (!gblnLoadGas(loaded, document_.templates, nullptr)) {
        clearViews();
        return false;
    }
    document_.path = path;
    document_.stamp = stamp;
    cboHistory->setText(path);
    stbMain->setTooltip(pnlInfo, shownLine(path));
    historyChanged();
    lvwTemplates->fill(document_.templates.size());
    lvwTemplates->selectRow(0);
    templateSelected();
    // A copy out of an archive is gone in a day.
    if (!gProgram().origins.contains(path)) gAddHistoryItem(*cboHistory, path);
    lvwTemplates->window().SetFocus();
    return true;
}

bool frmMain::useEncoding(unsigned number) {
    gProgram().sourcePage = CodePage::find(number);
    reloadOpenFile();
    return true;
}

bool frmMain::refresh() {
    reloadOpenFile();
    return true;
}

void frmMain::reloadOpenFile() {
    const auto selected = lvwTemplates->selected();
    const auto block = tvwInfo->selected();
    wxWindow* focus = FindFocus();
    // Though it may not load any more: that change was our own.
    document_.stamp = fileStamp(document_.path);
    if (!openFile(document_.path)) return;
    if (focus != nullptr && IsDescendant(focus)) focus->SetFocus();
    if (!selected || !lvwTemplates->selectPosition(*selected)) return;
    templateSelected();
    if (block) selectBlock(*block);
    refreshCommands();
}

void frmMain::clearViews() {
    blocks_.clear();
    tvwInfo->setNodes({}, false);
    for (int panel = 0; panel < kPanelCount; ++panel) setPanel(static_cast<Panel>(panel), L"");
}

const GasTemplate* frmMain::selectedTemplate() const {
    const auto position = lvwTemplates->selected();
    return position && *position < document_.templates.size() ? &document_.templates[*position]
                                                              : nullptr;
}

const BlockNode* frmMain::selectedBlock() const {
    const auto node = tvwInfo->selected();
    const bool there = node && *node < blocks_.size() && selectedTemplate() != nullptr;
    return there ? &blocks_[*node] : nullptr;
}

std::optional<GasProperty> frmMain::selectedProperty() const {
    const GasTemplate* record = selectedTemplate();
    const auto position = lvwProperties->selected();
    if (record == nullptr || !position || *position >= record->Properties.size()) return {};
    return record->Properties[*position];
}

std::wstring frmMain::selectedBranch() const {
    const BlockNode* block = selectedBlock();
    return block == nullptr ? std::wstring() : branchPath(*selectedTemplate(), *block);
}

void frmMain::templateSelected() {
    guarded(L"lvwTemplates_ItemClick", [this] {
        const GasTemplate* record = selectedTemplate();
        if (record == nullptr) return;
        mLoadTree(*record);
        setPanel(pnlInfo, selectionText(*lvwTemplates->selected(), *record));
        setPanel(pnlTemplates, countText(lvwTemplates->rows().size(), L"Templates"));
        setPanel(pnlType, record->Kind.wide());
        fillProperties(selectedBranch(), true);
        refreshCommands();
    });
}

void frmMain::mLoadTree(const GasTemplate& record) {
    blocks_ = blockTree(record);
    std::vector<NodeTree::Node> nodes;
    nodes.reserve(blocks_.size());
    for (const BlockNode& block : blocks_) nodes.push_back({shownLine(block.label), block.parent});
    tvwInfo->setNodes(std::move(nodes), blocks_.size() <= kOpenNodes);
    tvwInfo->select(0);
}

void frmMain::nodeClicked() {
    const BlockNode* block = selectedBlock();
    if (block == nullptr) return;
    setPanel(pnlInfo, fullPath(*selectedTemplate(), *block));
    fillProperties(selectedBranch(), false);
    refreshCommands();
}

void frmMain::selectBlock(std::size_t node) {
    if (node >= blocks_.size()) return;
    tvwInfo->select(node);
    nodeClicked();
}

void frmMain::fillProperties(std::wstring_view path, bool anew) {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return lvwProperties->clear();
    const bool useTree = chkTree->GetValue();
    const std::wstring filter = branchFilter(path, useTree);
    const auto keep = [&](RowOrder order) {
        return propertyRows(*record, filter, std::move(order));
    };
    // Another branch changes no order: the rows need not be sorted again.
    if (anew) {
        lvwProperties->fill(ownProperties(*record).size(), keep);
    } else {
        lvwProperties->limit(keep);
    }
    lvwProperties->selectRow(0);
    setPanel(pnlProps, countText(lvwProperties->rows().size(), L"Properties"));
    if (!useTree) return;
    const std::wstring info = screenNameText(*record, lvwProperties->rows());
    if (!info.empty()) setPanel(pnlInfo, info);
}

}  // namespace kestrel
