#pragma once

#include <gtk/gtk.h>
#include <wx/string.h>

#include <cstddef>

#include "ui/common/rowlist.h"

namespace kestrel {

constexpr std::size_t kRoot = NodeTree::Node::kNoParent;

// What a tree view shows: nodes under kRoot and under each other, each known by a number.
class Nodes {
  public:
    virtual std::size_t columns() const = 0;
    virtual std::size_t count(std::size_t parent) const = 0;
    virtual std::size_t child(std::size_t parent, std::size_t index) const = 0;
    virtual std::size_t parentOf(std::size_t node) const = 0;
    virtual std::size_t indexOf(std::size_t node) const = 0;  // under its parent
    virtual wxString textOf(std::size_t node, std::size_t column) const = 0;
    virtual bool isFlat() const = 0;

  protected:
    Nodes() = default;
    ~Nodes() = default;
    Nodes(const Nodes&) = default;
    Nodes& operator=(const Nodes&) = default;
};

// The node of a place in a model of makeModel(); kRoot for none.
std::size_t nodeOf(const GtkTreeIter* iter);

// The path of a node, owned by the caller.
GtkTreePath* pathOf(const Nodes& nodes, std::size_t node);

// A model over `nodes`, which outlive it; owned by the caller.
GtkTreeModel* makeModel(const Nodes& nodes);

}  // namespace kestrel
