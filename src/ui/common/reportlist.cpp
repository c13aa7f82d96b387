#include "ui/common/reportlist.h"

#include <algorithm>

#include "services/keys.h"
#include "ui/common/strings.h"

namespace kestrel {
namespace {

// The width that rows have: where the list is made of several windows, that of
// the one below the headers, which a scroll bar may narrow.
int rowsWidth(const wxWindow& list) {
    const wxWindow* rows = &list;
    int height = 0;
    for (const wxWindow* child : list.GetChildren()) {
        if (child->GetSize().y <= height) continue;
        rows = child;
        height = child->GetSize().y;
    }
    return rows->GetClientSize().x;
}

}  // namespace

ReportList::ReportList(wxWindow* parent, const wxString& name, std::vector<Column> columns,
                       Text text)
    : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                 wxLC_REPORT | wxLC_VIRTUAL | wxLC_SINGLE_SEL, wxDefaultValidator, name),
      columns_(std::move(columns)),
      text_(std::move(text)) {
    for (const Column& column : columns_) {
        AppendColumn(column.header, wxLIST_FORMAT_LEFT, FromDIP(column.width));
    }
    Bind(wxEVT_LIST_COL_CLICK, [this](wxListEvent& event) { sortBy(event.GetColumn()); });
    Bind(wxEVT_LIST_ITEM_SELECTED, [this](wxListEvent& event) { userSelected(event.GetIndex()); });
    Bind(wxEVT_LIST_ITEM_DESELECTED, [this](wxListEvent&) { userDeselected(); });
    Bind(wxEVT_LIST_COL_END_DRAG, [this](wxListEvent&) { dragged_ = true; });
    Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent&) {
        if (onActivate) onActivate();
    });
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        stretchColumns();
    });
}

void ReportList::fill(std::size_t count) {
    order_.resize(count);
    sortContent();
    show(order_);
}

void ReportList::limit(const std::function<RowOrder(RowOrder)>& keep) {
    show(keep(order_));
}

void ReportList::sortContent() {
    order_ = rowOrder(order_.size(), sort_,
                      [this](std::size_t position) { return text_(position, sort_.column); });
}

void ReportList::show(RowOrder rows) {
    select(std::nullopt);
    rows_ = std::move(rows);
    SetItemCount(static_cast<long>(rows_.size()));
    if (!rows_.empty()) EnsureVisible(0);
    stretchColumns();
    Refresh();
}

bool ReportList::selectRow(std::size_t row) {
    if (row >= rows_.size()) return false;
    select(row);
    return true;
}

bool ReportList::selectPosition(std::size_t position) {
    const auto row = rowOf(position);
    return row && selectRow(*row);
}

void ReportList::select(std::optional<std::size_t> row) {
    constexpr long kState = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
    selecting_ = true;
    if (const long before = GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED); before >= 0) {
        SetItemState(before, 0, kState);
    }
    selected_.reset();
    if (row) {
        SetItemState(static_cast<long>(*row), kState, kState);
        EnsureVisible(static_cast<long>(*row));
        selected_ = rows_[*row];
    }
    selecting_ = false;
}

void ReportList::userSelected(long row) {
    if (selecting_ || row < 0 || static_cast<std::size_t>(row) >= rows_.size()) return;
    selected_ = rows_[static_cast<std::size_t>(row)];
    if (onSelect) onSelect();
}

// A click beside the rows must not leave the window without a selected row while
// the tree and the other list still show it.
void ReportList::userDeselected() {
    if (selecting_) return;
    CallAfter([this] {
        if (selected_ && GetSelectedItemCount() == 0) selectPosition(*selected_);
    });
}

std::optional<std::size_t> ReportList::rowOf(std::size_t position) const {
    const auto found = std::find(rows_.begin(), rows_.end(), position);
    if (found == rows_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - rows_.begin());
}

std::optional<std::size_t> ReportList::selectedRow() const {
    return selected_ ? rowOf(*selected_) : std::nullopt;
}

void ReportList::sortBy(int column) {
    if (column < 0) return;
    const auto selected = selected_;
    std::vector<bool> shown(order_.size());
    for (std::uint32_t position : rows_) shown[position] = true;
    sort_.click(static_cast<std::size_t>(column));
    sortContent();
    RowOrder rows = order_;
    std::erase_if(rows, [&](std::uint32_t position) { return !shown[position]; });
    show(std::move(rows));
    ShowSortIndicator(column, !sort_.descending);
    if (selected) selectPosition(*selected);
}

// The widths that the user gave the columns stay.
void ReportList::stretchColumns() {
    if (dragged_ || GetColumnCount() < static_cast<int>(columns_.size())) return;
    int left = rowsWidth(*this) - FromDIP(2);
    int shares = 0;
    for (const Column& column : columns_) {
        left -= FromDIP(column.width);
        shares += column.share;
    }
    left = std::max(left, 0);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const Column& column = columns_[i];
        const int width = FromDIP(column.width) + left * column.share / std::max(shares, 1);
        const int index = static_cast<int>(i);
        if (width != GetColumnWidth(index)) SetColumnWidth(index, width);
    }
}

wxString ReportList::OnGetItemText(long row, long column) const {
    if (row < 0 || column < 0 || static_cast<std::size_t>(row) >= rows_.size()) return {};
    return shownLine(text_(rows_[static_cast<std::size_t>(row)], static_cast<std::size_t>(column)));
}

ListShot ReportList::shot(std::wstring_view tag) const {
    ListShot shot{std::wstring(tag), sort_.sorted, sort_.column, sort_.descending ? 1 : 0, {}, {}};
    for (const Column& column : columns_) shot.headers.emplace_back(column.header);
    shot.rows.reserve(rows_.size());
    for (std::uint32_t position : rows_) {
        std::vector<std::wstring>& row = shot.rows.emplace_back();
        for (std::size_t i = 0; i < columns_.size(); ++i) row.push_back(text_(position, i));
    }
    return shot;
}

}  // namespace kestrel
