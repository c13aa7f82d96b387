#pragma once

#include <wx/window.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// The system's own list and tree, which assistive programs can read, over rows and
// nodes that stand elsewhere: they ask for the texts that they show, so that 100,000
// rows cost next to nothing. Parents own them. Nothing here calls back but for what
// the user does.
namespace kestrel {

// A report list of one selected row.
class RowList {
  public:
    virtual ~RowList() = default;
    RowList() = default;
    RowList(const RowList&) = delete;
    RowList& operator=(const RowList&) = delete;

    virtual wxWindow& window() = 0;

    // The content is new and has so many rows; none is selected.
    virtual void setRowCount(std::size_t count) = 0;
    // Selects the row and scrolls it into view; nothing deselects.
    virtual void select(std::optional<std::size_t> row) = 0;
    // For numbers.
    virtual void alignRight(std::size_t column) = 0;
    virtual void showSorted(std::size_t column, bool ascending) = 0;

    // In pixels: of a column, and of what the rows have to show.
    virtual int columnWidth(std::size_t column) const = 0;
    virtual void setColumnWidth(std::size_t column, int width) = 0;
    virtual int width() const = 0;

    std::function<wxString(std::size_t row, std::size_t column)> text;
    std::function<void(std::size_t row)> onSelect;
    std::function<void()> onActivate;  // a double click, or Enter
    std::function<void(std::size_t column)> onHeader;
    std::function<void()> onColumnDragged;
};

RowList* makeRowList(wxWindow* parent, const wxString& name,
                     const std::vector<std::wstring>& headers);

// A tree of one selected node.
class NodeTree {
  public:
    struct Node {
        static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
        wxString label;
        std::size_t parent;  // stands before it
    };

    virtual ~NodeTree() = default;
    NodeTree() = default;
    NodeTree(const NodeTree&) = delete;
    NodeTree& operator=(const NodeTree&) = delete;

    virtual wxWindow& window() = 0;

    // Shows these nodes in place of those before, all of them open, or the first alone.
    virtual void setNodes(std::vector<Node> nodes, bool open) = 0;
    // Selects the node and scrolls to it, and to its first child where there is one.
    virtual void select(std::size_t node) = 0;
    virtual std::optional<std::size_t> selected() const = 0;

    std::function<void()> onSelect;
    std::function<void()> onPress;  // the selected node was clicked, or Enter pressed
};

NodeTree* makeNodeTree(wxWindow* parent, const wxString& name);

}  // namespace kestrel
