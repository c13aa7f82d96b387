#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "services/host.h"
#include "ui/common/rowlist.h"
#include "view/browse.h"

namespace kestrel {

// A report list over rows that stand elsewhere: it holds only their positions, in
// the order in which it shows them. A row's key is "K" and its position. A sorted
// list stays sorted when its content changes.
class ReportList {
  public:
    struct Column {
        const wchar_t* header;
        int width;  // the least, in pixels at 96 dots an inch
        int share;  // of the width that all of them leave
        bool isNumber = false;
    };
    using Text = std::function<std::wstring(std::size_t position, std::size_t column)>;

    // `text` gives the text of a cell, for as long as the list holds its row. `name`
    // tells assistive programs what it lists.
    ReportList(wxWindow* parent, const wxString& name, std::vector<Column> columns, Text text);

    wxWindow& window() { return rows_.window(); }

    // The content is now `count` rows, and it shows those positions that `keep`
    // leaves of their order: all of them without it. Nothing is selected.
    using Keep = std::function<RowOrder(RowOrder order)>;
    void fill(std::size_t count, const Keep& keep = nullptr);
    // Shows those positions of the same content. Nothing is selected.
    void limit(const Keep& keep);
    void clear() { fill(0); }

    // The positions shown, and that of the selected row.
    const RowOrder& rows() const { return shown_; }
    std::optional<std::size_t> selected() const { return selected_; }
    std::optional<std::size_t> selectedRow() const;
    // The text in the first column of a row.
    std::wstring firstText(std::size_t row) const { return text_(shown_.at(row), 0); }

    // Select a row and scroll it into view, without calling onSelect. False when
    // there is no such row.
    bool selectRow(std::size_t row);
    bool selectPosition(std::size_t position);

    // What the list shows; `tag` is the file that it comes from.
    ListShot shot(std::wstring_view tag) const;

    // The widths that the user gave the columns, in such pixels; none while he gave none.
    std::vector<int> widths() const;
    void setWidths(const std::vector<int>& widths);

    // Called when the user has selected another row, and when a row was double
    // clicked or Enter pressed on it.
    std::function<void()> onSelect;
    std::function<void()> onActivate;
    // Called when the user has sorted the content, to limit the rows anew: without it those
    // that are shown stay.
    std::function<void()> onSorted;

    // What rows are sorted by in place of their text.
    Text sortText;
    // Gives the whole content's order in place of that; never for an unsorted list.
    std::function<RowOrder(const SortState& state)> order;

  private:
    void sortBy(std::size_t column);
    void sortContent();
    void show(RowOrder rows);
    void stretchColumns();
    std::optional<std::size_t> rowOf(std::size_t position) const;

    std::vector<Column> columns_;
    Text text_;
    RowList& rows_;
    SortState sort_;
    RowOrder order_;  // the whole content, sorted
    RowOrder shown_;  // those of it that are shown
    std::optional<std::size_t> selected_;
    bool dragged_ = false;  // the user has set the columns' widths
};

}  // namespace kestrel
