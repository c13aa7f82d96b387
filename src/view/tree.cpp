#include "view/tree.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace kestrel {
namespace {

// Trees of more levels are wider than toolkits can draw, which follow them by recursion.
constexpr std::size_t kMostLevels = 250;

// The group around the sub-block `name` that ends `group`.
SharedGroup parentGroup(SharedGroup group, std::wstring_view name) {
    for (auto names = std::ranges::count(name, L'\\') + 1; names > 0; --names) {
        group = group.around();
    }
    return group;
}

// Adds nodes to a tree, each under one that is there.
class TreeMaker {
  public:
    explicit TreeMaker(const GasTemplate& record) { nodes_.push_back({.label = record.Name}); }

    void add(const GasProperty& property) {
        const std::wstring_view name =
            property.IsBlock ? std::wstring_view(property.Name) : property.Group.name();
        const auto found = latest_.find(parentGroup(property.Group, name).id());
        std::size_t parent = found == latest_.end() ? 0 : found->second;
        if (depths_[parent] == kMostLevels) parent = nodes_[parent].parent;
        latest_[property.Group.id()] = nodes_.size();
        depths_.push_back(depths_[parent] + 1);
        nodes_.push_back({std::wstring(name) + L'_' + std::to_wstring(property.Level), parent,
                          property.Group, property.Level});
    }

    std::vector<BlockNode> take() { return std::move(nodes_); }

  private:
    std::vector<BlockNode> nodes_;
    std::vector<std::size_t> depths_{1};
    std::unordered_map<std::uint64_t, std::size_t> latest_;  // node of each group
};

}  // namespace

std::vector<BlockNode> blockTree(const GasTemplate& record) {
    TreeMaker tree(record);
    int level = 0;
    for (const GasProperty& property : record.Properties) {
        // A header that is named inside its brackets has no entry of its own:
        // the first property at the new level tells of it.
        const bool opens = property.IsBlock || property.Level > level;
        if (!opens || property.Group.empty()) continue;
        level = property.Level;
        tree.add(property);
    }
    return tree.take();
}

std::wstring branchPath(const GasTemplate& record, const BlockNode& node) {
    return groupPath(record.Name, {{}, {}, node.group, true, node.level});
}

std::vector<BlockNode>::const_iterator nodeOf(const std::vector<BlockNode>& nodes,
                                              const GasProperty& property) {
    return std::ranges::find_if(nodes, [&](const BlockNode& node) {
        // Outside of all sub-blocks the level tells nothing.
        if (property.Group.empty()) return node.group.empty();
        return node.level == property.Level && node.group == property.Group;
    });
}

std::wstring fullPath(const GasTemplate& record, const BlockNode& node) {
    std::wstring path = branchPath(record, node);
    path.pop_back();
    return path;
}

}  // namespace kestrel
