#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gas/template.h"
#include "services/program.h"

// What the main window shows of a loaded file: the rows of its lists, their order
// and the texts around them.
namespace kestrel {

// How a report list is sorted. The order starts at descending: every click
// flips it, so the first one sorts ascending.
struct SortState {
    bool sorted = false;
    std::size_t column = 0;
    bool descending = true;

    // A click on a column's header. The order flips whichever column it was.
    void click(std::size_t clicked) noexcept;
};

// Positions of rows, in the order in which they are shown.
using RowOrder = std::vector<std::uint32_t>;

// The positions 0 to `count` - 1 in the order of `state`: by the text of the sort
// column without case, ties by case, equal texts as they stand in the file.
RowOrder rowOrder(std::size_t count, const SortState& state,
                  const std::function<std::wstring(std::size_t position)>& sortText);

// The first row at or after `start`, or else before it, whose text holds `what`
// without regard to case; nothing when none of the `count` rows does.
std::optional<std::size_t> findRow(std::size_t count, std::size_t start, std::wstring_view what,
                                   const std::function<std::wstring(std::size_t row)>& text);

// The labels of a chain as gstrGetTemplateHistory gives it, joined by " > ".
std::wstring chainText(std::wstring_view history);

// The branch path that the property list is limited to: `path` with a "\" at its
// end; empty (no limit) when `useTree` is clear.
std::wstring branchFilter(std::wstring_view path, bool useTree);

enum class PropertyColumn : std::size_t { property, value, group };

// The text of a property's row.
std::wstring propertyText(const GasTemplate& record, std::size_t position, PropertyColumn column);

// The text that its row is sorted by: of a group, the names that real ones have. All of those
// of groups in groups without end would take the square of their number.
std::wstring propertySortText(const GasTemplate& record, std::size_t position,
                              PropertyColumn column);

// The positions among `order` of the properties whose branch path is `filter`;
// all of them when it is empty.
RowOrder propertyRows(const GasTemplate& record, std::wstring_view filter, RowOrder order);

// The information text of the last "screen_name" property among `rows`, in file
// order; empty when there is none.
std::wstring screenNameText(const GasTemplate& record, const RowOrder& rows);

// "Template K2 is box".
std::wstring selectionText(std::size_t position, const GasTemplate& record);

// "12 Properties".
std::wstring countText(std::size_t count, std::wstring_view what);

// "Kestrel Template Browser (Kestrel v1.0.0)".
std::wstring mainCaption(const Version& version);

// `text` fit to be drawn in one line of a list, tree or caption: characters that
// break a line become blanks, those that show nothing, turn the direction of others
// or that no toolkit takes the replacement character, and what lies beyond a thousand
// characters is cut.
std::wstring lineText(std::wstring_view text);

}  // namespace kestrel
