#pragma once

#include <wx/listctrl.h>

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "gas/browse.h"
#include "services/host.h"

namespace kestrel {

// A report list over rows that stand elsewhere: it holds only their positions,
// in the order in which it shows them, so that 100,000 rows cost nothing. A
// row's key is "K" and its position. A sorted list stays sorted when its content
// changes.
class ReportList final : public wxListCtrl {
  public:
    struct Column {
        const wchar_t* header;
        int width;  // the least, in DIP
        int share;  // of the width that all of them leave
    };
    using Text = std::function<std::wstring(std::size_t position, std::size_t column)>;

    // `text` gives the text of a cell, for as long as the list holds its row.
    ReportList(wxWindow* parent, const wxString& name, std::vector<Column> columns, Text text);

    // The content is now `count` rows, of which all are shown. Nothing is selected.
    void fill(std::size_t count);
    // Shows those positions that `keep` leaves of the content's order. Nothing is
    // selected.
    void limit(const std::function<RowOrder(RowOrder order)>& keep);
    void clear() { fill(0); }

    // The positions shown, and that of the selected row.
    const RowOrder& rows() const { return rows_; }
    std::optional<std::size_t> selected() const { return selected_; }
    std::optional<std::size_t> selectedRow() const;
    // The text in the first column of a row.
    std::wstring firstText(std::size_t row) const { return text_(rows_.at(row), 0); }

    // Select a row and scroll it into view, without calling onSelect. False when
    // there is no such row.
    bool selectRow(std::size_t row);
    bool selectPosition(std::size_t position);

    // What the list shows; `tag` is the file that it comes from.
    ListShot shot(std::wstring_view tag) const;

    // Called when the user has selected another row, and when a row was double
    // clicked or Enter pressed on it.
    std::function<void()> onSelect;
    std::function<void()> onActivate;

  private:
    wxString OnGetItemText(long row, long column) const override;
    void sortBy(int column);
    void sortContent();
    void show(RowOrder rows);
    void select(std::optional<std::size_t> row);
    void userSelected(long row);
    void userDeselected();
    void stretchColumns();
    std::optional<std::size_t> rowOf(std::size_t position) const;

    std::vector<Column> columns_;
    Text text_;
    SortState sort_;
    RowOrder order_;  // the whole content, sorted
    RowOrder rows_;   // those of it that are shown
    std::optional<std::size_t> selected_;
    bool selecting_ = false;  // by the program, not by the user
    bool dragged_ = false;    // the user has set the columns' widths
};

}  // namespace kestrel
