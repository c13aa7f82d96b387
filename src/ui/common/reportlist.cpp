#include "ui/common/reportlist.h"

#include <algorithm>

#include "base/keys.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"

namespace kestrel {
namespace {

std::vector<std::wstring> headersOf(const std::vector<ReportList::Column>& columns) {
    std::vector<std::wstring> headers;
    headers.reserve(columns.size());
    for (const auto& column : columns) headers.emplace_back(column.header);
    return headers;
}

}  // namespace

ReportList::ReportList(wxWindow* parent, const wxString& name, std::vector<Column> columns,
                       Text text)
    : columns_(std::move(columns)),
      text_(std::move(text)),
      rows_(*makeRowList(parent, name, headersOf(columns_))) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].isNumber) rows_.alignRight(i);
    }
    rows_.text = [this](std::size_t row, std::size_t column) {
        return row < shown_.size() ? shownLine(text_(shown_[row], column)) : wxString();
    };
    rows_.onSelect = [this](std::size_t row) {
        if (row >= shown_.size()) return;
        selected_ = shown_[row];
        if (onSelect) onSelect();
    };
    rows_.onActivate = [this] {
        if (onActivate) onActivate();
    };
    rows_.onHeader = [this](std::size_t column) { sortBy(column); };
    rows_.onColumnDragged = [this] { dragged_ = true; };
    listen(window(), wxEVT_SIZE, [this] { stretchColumns(); });
}

void ReportList::fill(std::size_t count, const Keep& keep) {
    order_.resize(count);
    sortContent();
    show(keep ? keep(order_) : order_);
}

void ReportList::limit(const Keep& keep) {
    RowOrder rows = keep(order_);
    // The control takes long to take in many rows.
    if (rows == shown_) return selected_.reset();
    show(std::move(rows));
}

void ReportList::sortContent() {
    if (order && sort_.sorted) {
        order_ = order(sort_);
        return;
    }
    const Text& text = sortText ? sortText : text_;
    order_ = rowOrder(order_.size(), sort_,
                      [&](std::size_t position) { return text(position, sort_.column); });
}

void ReportList::show(RowOrder rows) {
    selected_.reset();
    shown_ = std::move(rows);
    rows_.setRowCount(shown_.size());
}

bool ReportList::selectRow(std::size_t row) {
    if (row >= shown_.size()) return false;
    selected_ = shown_[row];
    rows_.select(row);
    return true;
}

bool ReportList::selectPosition(std::size_t position) {
    const auto row = rowOf(position);
    return row && selectRow(*row);
}

std::optional<std::size_t> ReportList::rowOf(std::size_t position) const {
    const auto found = std::find(shown_.begin(), shown_.end(), position);
    if (found == shown_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - shown_.begin());
}

std::optional<std::size_t> ReportList::selectedRow() const {
    return selected_ ? rowOf(*selected_) : std::nullopt;
}

void ReportList::sortBy(std::size_t column) {
    const auto selected = selected_;
    std::vector<bool> shown(order_.size());
    for (std::uint32_t position : shown_) shown[position] = true;
    sort_.click(column);
    sortContent();
    rows_.showSorted(column, !sort_.descending);
    if (onSorted) return onSorted();
    RowOrder rows = order_;
    std::erase_if(rows, [&](std::uint32_t position) { return !shown[position]; });
    show(std::move(rows));
    if (selected) selectPosition(*selected);
}

// The widths that the user gave the columns stay; the last one takes the rest.
void ReportList::stretchColumns() {
    const wxWindow& window = rows_.window();
    int left = rows_.width();
    int shares = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const bool fixed = dragged_ && i + 1 < columns_.size();
        left -= fixed ? rows_.columnWidth(i) : scaled(window, columns_[i].width);
        shares += columns_[i].share;
    }
    left = std::max(left, 0);
    for (std::size_t i = dragged_ ? columns_.size() - 1 : 0; i < columns_.size(); ++i) {
        const int more = dragged_ ? left : left * columns_[i].share / std::max(shares, 1);
        const int width = scaled(window, columns_[i].width) + more;
        if (width != rows_.columnWidth(i)) rows_.setColumnWidth(i, width);
    }
}

std::vector<int> ReportList::widths() const {
    std::vector<int> widths;
    for (std::size_t i = 0; dragged_ && i < columns_.size(); ++i) {
        widths.push_back(unscaled(rows_.window(), rows_.columnWidth(i)));
    }
    return widths;
}

void ReportList::setWidths(const std::vector<int>& widths) {
    if (widths.size() != columns_.size()) return;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        rows_.setColumnWidth(i, scaled(rows_.window(), std::max(widths[i], columns_[i].width / 2)));
    }
    dragged_ = true;
}

ListShot ReportList::shot(std::wstring_view tag) const {
    ListShot shot{std::wstring(tag), sort_.sorted, sort_.column, sort_.descending ? 1 : 0, {}, {}};
    for (const Column& column : columns_) shot.headers.emplace_back(column.header);
    shot.rows.reserve(shown_.size());
    for (std::uint32_t position : shown_) {
        std::vector<std::wstring>& row = shot.rows.emplace_back();
        for (std::size_t i = 0; i < columns_.size(); ++i) row.push_back(text_(position, i));
    }
    return shot;
}

}  // namespace kestrel
