#include "view/tree.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace kestrel {
namespace {

// Trees of more levels are wider than toolkits can draw, which follow them by recursion.
constexpr std::size_t kMostLevels = 250;

// The group around the sub-block `name` that ends `group`.
const GasGroup* parentGroup(const GasGroup* group, std::string_view name) {
    for (auto names = std::ranges::count(name, '\\') + 1; names > 0 && group != nullptr; --names) {
        group = group->outer();
    }
    return group;
}

// Adds nodes to a tree, each under one that is there.
class TreeMaker {
  public:
    explicit TreeMaker(const GasTemplate& record) { nodes_.push_back({record.Name.wide()}); }

    void add(const GasProperty& property, std::size_t index) {
        const GasGroup* group = property.Group.group();
        const Text name = property.IsBlock ? property.Name : group->name;
        const auto found = latest_.find(parentGroup(group, name.bytes()));
        std::size_t parent = found == latest_.end() ? 0 : found->second;
        if (depths_[parent] == kMostLevels) parent = nodes_[parent].parent;
        latest_[group] = nodes_.size();
        depths_.push_back(depths_[parent] + 1);
        nodes_.push_back({name.wide() + L'_' + std::to_wstring(property.Level), parent, index});
    }

    std::vector<BlockNode> take() { return std::move(nodes_); }

  private:
    std::vector<BlockNode> nodes_;
    std::vector<std::size_t> depths_{1};
    std::unordered_map<const GasGroup*, std::size_t> latest_;  // node of each group
};

GasProperty propertyOf(const GasTemplate& record, const BlockNode& node) {
    return node.property == BlockNode::kNoParent ? GasProperty() : record.Properties[node.property];
}

}  // namespace

std::vector<BlockNode> blockTree(const GasTemplate& record) {
    TreeMaker tree(record);
    int level = 0;
    for (std::size_t i = 0; i < record.Properties.size(); ++i) {
        const GasProperty property = record.Properties[i];
        // A header that is named inside its brackets has no entry of its own:
        // the first property at the new level tells of it.
        const bool opens = property.IsBlock || property.Level > level;
        if (!opens || property.Group.empty()) continue;
        level = property.Level;
        tree.add(property, i);
    }
    return tree.take();
}

std::wstring branchPath(const GasTemplate& record, const BlockNode& node) {
    return groupPath(record, propertyOf(record, node));
}

std::vector<BlockNode>::const_iterator nodeOf(const GasTemplate& record,
                                              const std::vector<BlockNode>& nodes,
                                              const GasProperty& property) {
    return std::ranges::find_if(nodes, [&](const BlockNode& node) {
        const GasProperty own = propertyOf(record, node);
        // Outside of all sub-blocks the level tells nothing.
        if (property.Group.empty()) return own.Group.empty();
        return own.Level == property.Level && own.Group == property.Group;
    });
}

std::wstring fullPath(const GasTemplate& record, const BlockNode& node) {
    std::wstring path = branchPath(record, node);
    path.pop_back();
    return path;
}

}  // namespace kestrel
