#pragma once

#include <wx/combobox.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "services/host.h"

namespace kestrel {

// An editable combo box whose drop-down list is a history. It keeps its entries
// and text as the core knows them; the toolkit sees only what it can show.
class HistoryCombo final : public wxComboBox, public TextList {
  public:
    HistoryCombo(wxWindow* parent, const wxString& name);

    // True while its list is open.
    bool isOpen() const { return dropped_; }

    std::wstring text() const;
    bool isBlank() const { return GetValue().find_first_not_of(' ') == wxString::npos; }
    // Puts what the text stands for as a path in its place, and returns it.
    std::wstring takePath();
    // Sets the text without calling onChange. Of a long one the end shows.
    void setText(std::wstring_view text);

    std::size_t count() const override { return items_.size(); }
    std::wstring at(std::size_t index) const override { return items_.at(index); }
    void insert(std::size_t index, std::wstring_view text) override;
    void append(std::wstring_view text) override { insert(items_.size(), text); }
    void removeAt(std::size_t index) override;

    std::function<void()> onChange;  // the user has changed the text
    std::function<void()> onChoose;  // an entry of the opened drop-down was chosen
    std::function<void()> onEnter;   // Enter in the text

  private:
    void selected(int item);

    std::vector<std::wstring> items_;
    std::wstring text_;  // what shown_ stands for
    wxString shown_;
    bool dropped_ = false;
};

}  // namespace kestrel
