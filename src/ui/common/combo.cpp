#include "ui/common/combo.h"

#include <algorithm>

#include "base/text.h"
#include "system/plainpath.h"
#include "ui/common/strings.h"

namespace kestrel {

namespace {

// Not cut: the user edits this text.
wxString shownEntry(std::wstring_view text) {
    return std::ranges::all_of(text, isDrawable) ? toWx(text) : shownLine(text);
}

}  // namespace

HistoryCombo::HistoryCombo(wxWindow* parent, const wxString& name)
    : wxComboBox(parent, wxID_ANY, wxEmptyString, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                 wxCB_DROPDOWN | wxTE_PROCESS_ENTER, wxDefaultValidator, name) {
    Bind(wxEVT_COMBOBOX_DROPDOWN, [this](wxCommandEvent&) { dropped_ = true; });
    // The choice is told before or after the drop-down closes, by platform.
    Bind(wxEVT_COMBOBOX_CLOSEUP,
         [this](wxCommandEvent&) { CallAfter([this] { dropped_ = false; }); });
    Bind(wxEVT_COMBOBOX, [this](wxCommandEvent& event) { selected(event.GetSelection()); });
    Bind(wxEVT_TEXT, [this](wxCommandEvent&) {
        if (onChange) onChange();
    });
    Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) {
        if (onEnter) onEnter();
    });
}

// The arrow keys walk through the entries of a closed drop-down too; only a
// choice in an open one may load a file.
void HistoryCombo::selected(int item) {
    if (item < 0 || static_cast<std::size_t>(item) >= items_.size()) return;
    text_ = items_[static_cast<std::size_t>(item)];
    shown_ = GetString(static_cast<unsigned>(item));
    if (onChange) onChange();
    if (dropped_ && onChoose) CallAfter([this] { onChoose(); });
}

std::wstring HistoryCombo::text() const {
    const wxString value = GetValue();
    return value == shown_ ? text_ : fromWx(value);
}

void HistoryCombo::setText(std::wstring_view text) {
    text_ = text;
    shown_ = shownEntry(text);
    ChangeValue(shown_);
    SetInsertionPointEnd();
}

std::wstring HistoryCombo::takePath() {
    std::wstring path = plainPath(text());
    if (path != text()) setText(path);
    return path;
}

void HistoryCombo::insert(std::size_t index, std::wstring_view text) {
    const wxString value = GetValue();
    items_.emplace(items_.begin() + static_cast<std::ptrdiff_t>(index), text);
    Insert(shownEntry(text), static_cast<unsigned>(index));
    if (GetValue() != value) ChangeValue(value);
}

void HistoryCombo::removeAt(std::size_t index) {
    const wxString value = GetValue();
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
    Delete(static_cast<unsigned>(index));
    if (GetValue() != value) ChangeValue(value);
}

}  // namespace kestrel
