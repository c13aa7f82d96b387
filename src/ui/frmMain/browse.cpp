#include "gas/browse.h"

#include <wx/utils.h>
#include <wx/wupdlock.h>

#include "gas/load.h"
#include "gas/tree.h"
#include "services/errors.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "ui/common/strings.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel {
namespace {

// Opening every branch of a tree of many thousand nodes takes longer than it
// helps to find anything.
constexpr std::size_t kOpenNodes = 500;

// The branch path of a node.
class NodeTag final : public wxTreeItemData {
  public:
    explicit NodeTag(const BlockNode& node) : tag(node.tag), path(fullPath(node)) {}
    const std::wstring tag;
    const std::wstring path;
};

const NodeTag* tagOf(const wxTreeCtrl& tree, const wxTreeItemId& item) {
    return item.IsOk() ? static_cast<const NodeTag*>(tree.GetItemData(item)) : nullptr;
}

}  // namespace

void frmMain::bindBrowsing() {
    lvwTemplates->onSelect = [this] { templateSelected(); };
    lvwProperties->onActivate = [this] {
        if (!busy()) guarded(L"lvwProperties_DblClick", [this] { propertyActivated(); });
    };
    tvwInfo->Bind(wxEVT_TREE_SEL_CHANGED, [this](wxTreeEvent&) {
        if (!filling_) nodeClicked();
    });
    chkTree->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) {
        if (!busy()) templateSelected();
    });
}

bool frmMain::openFile(std::wstring path) {
    if (busy()) return false;
    return guarded(L"mSelectFile", [&] { return mSelectFile(std::move(path)); });
}

bool frmMain::mSelectFile(std::wstring path) {
    if (path.empty()) path = askForFile(L"Select a Gas File", L"Gas File (*.gas)|*.gas", false);
    if (path.empty()) return false;
    const wxBusyCursor busyCursor;
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
    historyChanged();
    lvwTemplates->fill(document_.templates.size());
    lvwTemplates->selectRow(0);
    templateSelected();
    gAddHistoryItem(*cboHistory, path);
    return true;
}

void frmMain::reloadOpenFile() {
    const auto selected = lvwTemplates->selected();
    // Though it may not load any more: that change was our own.
    document_.stamp = fileStamp(document_.path);
    if (!openFile(document_.path) || !selected) return;
    if (lvwTemplates->selectPosition(*selected)) templateSelected();
}

void frmMain::clearViews() {
    filling_ = true;
    tvwInfo->DeleteAllItems();
    filling_ = false;
    for (int panel = 0; panel < kPanelCount; ++panel) setPanel(static_cast<Panel>(panel), L"");
}

const GasTemplate* frmMain::selectedTemplate() const {
    const auto position = lvwTemplates->selected();
    return position && *position < document_.templates.size() ? &document_.templates[*position]
                                                              : nullptr;
}

std::wstring frmMain::selectedBranch() const {
    const NodeTag* tag = tagOf(*tvwInfo, tvwInfo->GetSelection());
    return tag == nullptr ? std::wstring() : tag->tag;
}

void frmMain::templateSelected() {
    guarded(L"lvwTemplates_ItemClick", [this] {
        const GasTemplate* record = selectedTemplate();
        if (record == nullptr) return;
        mLoadTree(*record);
        setPanel(pnlInfo, selectionText(*lvwTemplates->selected(), *record));
        setPanel(pnlTemplates, countText(lvwTemplates->rows().size(), L"Templates"));
        setPanel(pnlType, record->Kind);
        lvwProperties->fill(record->Properties.size());
        fillProperties(selectedBranch());
    });
}

void frmMain::mLoadTree(const GasTemplate& record) {
    filling_ = true;
    const wxWindowUpdateLocker noPainting(tvwInfo);
    tvwInfo->DeleteAllItems();
    const std::vector<BlockNode> nodes = blockTree(record);
    std::vector<wxTreeItemId> items;
    items.reserve(nodes.size());
    for (const BlockNode& node : nodes) {
        const wxString label = shownLine(node.label);
        auto* tag = new NodeTag(node);
        items.push_back(node.parent == BlockNode::kNoParent
                            ? tvwInfo->AddRoot(label, -1, -1, tag)
                            : tvwInfo->AppendItem(items[node.parent], label, -1, -1, tag));
    }
    if (nodes.size() <= kOpenNodes) {
        tvwInfo->ExpandAll();
    } else {
        tvwInfo->Expand(items.front());
    }
    tvwInfo->SelectItem(items.front());
    tvwInfo->EnsureVisible(items.front());
    filling_ = false;
}

void frmMain::nodeClicked() {
    const NodeTag* tag = tagOf(*tvwInfo, tvwInfo->GetSelection());
    if (tag == nullptr) return;
    setPanel(pnlInfo, tag->path);
    fillProperties(tag->tag);
}

void frmMain::fillProperties(std::wstring_view path) {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return lvwProperties->clear();
    const bool useTree = chkTree->GetValue();
    const std::wstring filter = branchFilter(path, useTree);
    // Another branch changes no order: the rows need not be sorted again.
    lvwProperties->limit(
        [&](RowOrder order) { return propertyRows(*record, filter, std::move(order)); });
    lvwProperties->selectRow(0);
    setPanel(pnlProps, countText(lvwProperties->rows().size(), L"Properties"));
    if (!useTree) return;
    const std::wstring info = screenNameText(*record, lvwProperties->rows());
    if (!info.empty()) setPanel(pnlInfo, info);
}

void frmMain::setPanel(Panel panel, std::wstring_view text) {
    stbMain->SetStatusText(shownLine(text), panel);
}

}  // namespace kestrel
