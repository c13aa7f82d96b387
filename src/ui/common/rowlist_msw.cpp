#include <wx/listctrl.h>
#include <wx/treectrl.h>

#include <algorithm>
#include <unordered_map>

#include "ui/common/accessible.h"
#include "ui/common/listen.h"
#include "ui/common/rowlist.h"

namespace kestrel {
namespace {

class RowListMsw final : public wxListCtrl, public RowList {
  public:
    RowListMsw(wxWindow* parent, const wxString& name, const std::vector<std::wstring>& headers)
        : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                     wxLC_REPORT | wxLC_VIRTUAL | wxLC_SINGLE_SEL, wxDefaultValidator, name) {
        for (const std::wstring& header : headers) AppendColumn(header);
        Bind(wxEVT_LIST_COL_CLICK, [this](wxListEvent& event) {
            if (event.GetColumn() >= 0) onHeader(static_cast<std::size_t>(event.GetColumn()));
        });
        Bind(wxEVT_LIST_COL_END_DRAG,
             [this](wxListEvent&) { CallAfter([this] { onColumnDragged(); }); });
        Bind(wxEVT_LIST_ITEM_SELECTED, [this](wxListEvent& event) { selected(event.GetIndex()); });
        Bind(wxEVT_LIST_ITEM_DESELECTED, [this](wxListEvent&) { deselected(); });
        Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent&) { onActivate(); });
    }

    wxWindow& window() override { return *this; }

    void setRowCount(std::size_t count) override {
        select(std::nullopt);
        SetItemCount(static_cast<long>(count));
        if (count > 0) EnsureVisible(0);
        Refresh();
    }

    void select(std::optional<std::size_t> row) override {
        constexpr long kState = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
        selecting_ = true;
        if (const long before = selectedRow(); before >= 0) SetItemState(before, 0, kState);
        if (row) {
            SetItemState(static_cast<long>(*row), kState, kState);
            EnsureVisible(static_cast<long>(*row));
        }
        chosen_ = row;
        selecting_ = false;
    }

    void alignRight(std::size_t column) override {
        wxListItem format;
        format.SetMask(wxLIST_MASK_FORMAT);
        format.SetAlign(wxLIST_FORMAT_RIGHT);
        SetColumn(static_cast<int>(column), format);
    }
    void showSorted(std::size_t column, bool ascending) override {
        ShowSortIndicator(static_cast<int>(column), ascending);
    }
    int columnWidth(std::size_t column) const override {
        return GetColumnWidth(static_cast<int>(column));
    }
    void setColumnWidth(std::size_t column, int width) override {
        SetColumnWidth(static_cast<int>(column), width);
    }
    int width() const override { return GetClientSize().x; }

  private:
    wxString OnGetItemText(long row, long column) const override {
        return text(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
    }
    long selectedRow() const { return GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED); }
    void selected(long row) {
        if (selecting_ || row < 0) return;
        chosen_ = static_cast<std::size_t>(row);
        onSelect(*chosen_);
    }
    // A click beside the rows must not leave the window without a selected row while
    // others still show it.
    void deselected() {
        if (selecting_) return;
        CallAfter([this] {
            if (chosen_ && GetSelectedItemCount() == 0) select(chosen_);
        });
    }

    std::optional<std::size_t> chosen_;
    bool selecting_ = false;  // by the program, not by the user
};

class NodeTreeMsw final : public wxTreeCtrl, public NodeTree {
  public:
    NodeTreeMsw(wxWindow* parent, const wxString& name)
        : wxTreeCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                     wxTR_DEFAULT_STYLE | wxTR_SINGLE, wxDefaultValidator, name) {
        Bind(wxEVT_TREE_SEL_CHANGED, [this](wxTreeEvent&) {
            if (!filling_ && onSelect) onSelect();
        });
        Bind(wxEVT_TREE_ITEM_ACTIVATED, [this](wxTreeEvent&) { pressed(); });
        listen(*this, wxEVT_LEFT_DOWN, [this](const wxMouseEvent& event) {
            int where = 0;
            const wxTreeItemId item = HitTest(event.GetPosition(), where);
            const bool on = (where & (wxTREE_HITTEST_ONITEMICON | wxTREE_HITTEST_ONITEMLABEL)) != 0;
            if (on && item == GetSelection()) pressed();
        });
        listen(*this, wxEVT_RIGHT_DOWN, [this](const wxMouseEvent& event) {
            int where = 0;
            if (const wxTreeItemId item = HitTest(event.GetPosition(), where)) SelectItem(item);
            SetFocus();
        });
    }

    ~NodeTreeMsw() override { filling_ = true; }

    wxWindow& window() override { return *this; }

    void setNodes(std::vector<Node> nodes, bool open) override {
        filling_ = true;
        Freeze();
        DeleteAllItems();
        items_.clear();
        index_.clear();
        for (const Node& node : nodes) {
            items_.push_back(node.parent == Node::kNoParent
                                 ? AddRoot(node.label)
                                 : AppendItem(items_[node.parent], node.label));
            index_[items_.back().GetID()] = items_.size() - 1;
        }
        if (open && !items_.empty()) {
            ExpandAll();
        } else if (!items_.empty()) {
            Expand(items_.front());
        }
        Thaw();
        filling_ = false;
    }

    void select(std::size_t node) override {
        filling_ = true;
        SelectItem(items_.at(node));
        wxTreeItemIdValue cookie = nullptr;
        if (const wxTreeItemId child = GetFirstChild(items_[node], cookie)) EnsureVisible(child);
        EnsureVisible(items_[node]);
        filling_ = false;
    }

    std::optional<std::size_t> selected() const override {
        const auto found = index_.find(GetSelection().GetID());
        return found == index_.end() ? std::nullopt : std::optional(found->second);
    }

  private:
    void pressed() {
        if (onPress) onPress();
    }

    std::vector<wxTreeItemId> items_;
    std::unordered_map<void*, std::size_t> index_;
    bool filling_ = false;  // the tree changes by code, not by the user
};

}  // namespace

RowList* makeRowList(wxWindow* parent, const wxString& name,
                     const std::vector<std::wstring>& headers) {
    return new RowListMsw(parent, name, headers);
}

NodeTree* makeNodeTree(wxWindow* parent, const wxString& name) {
    return new NodeTreeMsw(parent, name);
}

}  // namespace kestrel
