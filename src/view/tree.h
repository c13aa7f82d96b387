#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "gas/template.h"

namespace kestrel {

// A node of a template's block tree.
struct BlockNode {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
    std::wstring label;              // block name + "_" + level; the template's Name at the root
    std::size_t parent = kNoParent;  // index of the enclosing node
    // The property that it was made for, whose group and level it has; none at the root.
    std::size_t property = kNoParent;
};

// The block tree of `record`: the root at index 0, then one node per sub-block
// in order of appearance, each behind its parent. Those that are nested deeper than
// windows can draw stand beside the one around them.
std::vector<BlockNode> blockTree(const GasTemplate& record);

// The branch path of a node of the tree of `record`, with its last "\".
std::wstring branchPath(const GasTemplate& record, const BlockNode& node);

// The node of the tree of `record` for the sub-block that `property` stands in; the end of
// `nodes` when there is none.
std::vector<BlockNode>::const_iterator nodeOf(const GasTemplate& record,
                                              const std::vector<BlockNode>& nodes,
                                              const GasProperty& property);

// What the status bar shows for a node: its branch path without the last "\".
std::wstring fullPath(const GasTemplate& record, const BlockNode& node);

}  // namespace kestrel
