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
    std::wstring tag;                // branch path, with its last "\"
    std::size_t parent = kNoParent;  // index of the enclosing node
};

// The block tree of `record`: the root at index 0, then one node per sub-block
// in order of appearance, each behind its parent.
std::vector<BlockNode> blockTree(const GasTemplate& record);

// What the status bar shows for a node: its branch path without the last "\".
std::wstring fullPath(const BlockNode& node);

}  // namespace kestrel
