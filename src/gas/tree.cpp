#include "gas/tree.h"

#include <string_view>
#include <unordered_map>

namespace kestrel {
namespace {

// The part of `group` before the sub-block `name` that ends it.
std::wstring_view parentGroup(std::wstring_view group, std::wstring_view name) {
    const std::size_t length = group.size() > name.size() ? group.size() - name.size() - 1 : 0;
    return group.substr(0, length);
}

std::wstring_view lastComponent(std::wstring_view group) {
    const std::size_t at = group.rfind(L'\\');
    return at == std::wstring_view::npos ? group : group.substr(at + 1);
}

}  // namespace

std::vector<BlockNode> blockTree(const GasTemplate& record) {
    std::vector<BlockNode> nodes{{record.Name, record.Name + L'\\', BlockNode::kNoParent}};
    std::unordered_map<std::wstring_view, std::size_t> latest;  // node of each group
    int level = 0;
    for (const GasProperty& property : record.Properties) {
        // A header that is named inside its brackets has no entry of its own:
        // the first property at the new level tells of it.
        const bool opens = property.IsBlock || property.Level > level;
        if (!opens || property.Group.empty()) continue;
        level = property.Level;
        const std::wstring_view name =
            property.IsBlock ? std::wstring_view(property.Name) : lastComponent(property.Group);
        const auto parent = latest.find(parentGroup(property.Group, name));
        latest[property.Group] = nodes.size();
        nodes.push_back({std::wstring(name) + L'_' + std::to_wstring(level),
                         groupPath(record.Name, property),
                         parent == latest.end() ? 0 : parent->second});
    }
    return nodes;
}

std::wstring fullPath(const BlockNode& node) {
    return node.tag.substr(0, node.tag.size() - 1);
}

}  // namespace kestrel
