#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gas/sharedgroup.h"
#include "gas/sharedtext.h"
#include "gas/sourcetext.h"

// The document model: a loaded `.gas` file is an array of GasTemplate, one for
// each top-level block. An empty text is the absent value throughout. Records
// are plain values.
namespace kestrel {

// A property, or the header of a sub-block, inside a block.
struct GasProperty {
    SharedText Name;         // as written, cleaned; a header's sub-block name
    std::wstring Value;      // cleaned; empty for a header
    SharedGroup Group;       // sub-blocks around it
    bool IsBlock = false;    // stands for a sub-block header
    std::int16_t Level = 0;  // sub-block headers met so far in the block, as far as it counts

    bool operator==(const GasProperty&) const = default;
};

// One top-level block. Without a Name it is no record.
struct GasTemplate {
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

    std::wstring Name;  // shown name: the kind and the index, or its `doc` value
    std::wstring Kind;  // display name of the block's kind
    std::vector<GasProperty> Properties;
    SourceText Text;        // the block's source text after normalisation
    std::wstring Comments;  // "Line n:" TAB text CR LF for each comment
    // The block's place among the headers of its file; kNowhere for what is no block there
    // as it stands.
    std::size_t Place = kNowhere;

    bool operator==(const GasTemplate&) const = default;
};

// The properties of `record` that its block has: a block without any keeps an array of empty
// ones, which are nobody's.
std::span<const GasProperty> ownProperties(const GasTemplate& record);

struct BlockKind {
    std::string_view prefix;  // of the header, compared with case
    std::wstring_view name;   // display name
};

// The known kinds. The order matters: the first row whose prefix stands at a
// file's first header decides the kind of the whole file.
inline constexpr std::array<BlockKind, 11> kBlockKinds{{
    {"[t:template,", L"Template"},
    {"[party]", L"Party"},
    {"[info]", L"Info"},
    {"[t:tsd,", L"TSD"},
    {"[t:siege_nodes,", L"Seige Nodes"},
    {"[t:sed,", L"SED"},
    {"[credits_movie", L"Credits Movie"},
    {"[outro]", L"Outro"},
    {"[intro_movie]", L"Intro Movie"},
    {"[t:component,", L"Component"},
    {"[XXXXX", L"Unknown"},
}};

// The path by which the tree, the property list and the renderer agree on where
// a property sits: `root`, "\" and, inside a sub-block, group, "_", level, "\".
std::wstring groupPath(std::wstring_view root, const GasProperty& property);

// As groupPath(), appending to `text`.
void appendGroupPath(std::wstring& text, std::wstring_view root, const GasProperty& property);

// False when `path` is too long or too short for the group path of `property`, which is not
// made for that.
bool mayBeGroupPath(std::wstring_view path, std::wstring_view root, const GasProperty& property);

}  // namespace kestrel
