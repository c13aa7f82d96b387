#include "gas/tree.h"

#include <gtest/gtest.h>

#include <map>

#include "gas/load.h"
#include "services/program.h"
#include "support/shown.h"

namespace kestrel {
namespace {

// The tree as indented lines "label tag".
std::wstring drawn(const std::vector<BlockNode>& nodes) {
    std::map<std::size_t, std::size_t> depths;
    std::wstring text;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const bool root = nodes[i].parent == BlockNode::kNoParent;
        depths[i] = root ? 0 : depths[nodes[i].parent] + 1;
        text += std::wstring(depths[i], L' ') + nodes[i].label + L" " + nodes[i].tag + L"\n";
    }
    return text;
}

TEST(Tree, NestsAsTheBlocksNest) {
    const struct {
        const wchar_t* body;
        const wchar_t* tree;
    } cases[] = {
        {L"x = 1;", L"Info0 Info0\\\n"},
        {L"[a]\r\n{\r\n[b]\r\n{\r\n}\r\n[c]\r\n{\r\n}\r\n}\r\n[a]\r\n{\r\n[b]\r\n{\r\n}\r\n}",
         L"Info0 Info0\\\n"
         L" a_1 Info0\\a_1\\\n"
         L"  b_2 Info0\\a\\b_2\\\n"
         L"  c_3 Info0\\a\\c_3\\\n"
         L" a_4 Info0\\a_4\\\n"
         L"  b_5 Info0\\a\\b_5\\\n"},
        {L"[t:x,n:lid]\r\n{\r\n[hinge]{pin=2}\r\n}\r\n[t:x,n:lid]\r\n{\r\n}\r\n",
         L"Info0 Info0\\\n"
         L" lid_1 Info0\\lid_1\\\n"
         L"  hinge_2 Info0\\lid\\hinge_2\\\n"
         L" lid_3 Info0\\lid_3\\\n"},
        {L"[a\\b]\r\n{\r\n[c]\r\n{\r\n}\r\n}",
         L"Info0 Info0\\\n"
         L" a\\b_1 Info0\\a\\b_1\\\n"
         L"  c_2 Info0\\a\\b\\c_2\\\n"},
    };
    const ProgramScope program;
    for (const auto& c : cases) {
        std::vector<GasTemplate> templates;
        ASSERT_TRUE(loadGasText(std::wstring(L"[info]\r\n") + c.body, templates));
        const std::vector<BlockNode> nodes = blockTree(templates[0]);
        EXPECT_EQ(drawn(nodes), c.tree) << test::shown(c.body);
        EXPECT_EQ(fullPath(nodes.back()) + L'\\',
                  groupPath(L"Info0", templates[0].Properties.back()));
    }
}

}  // namespace
}  // namespace kestrel
