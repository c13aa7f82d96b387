#include "gas/tree.h"

#include <gtest/gtest.h>

#include <map>

#include "gas/load.h"
#include "services/program.h"
#include "support/shown.h"

namespace kestrel {
namespace {

// The tree as indented lines "label tag".
std::wstring drawn(const GasTemplate& record, const std::vector<BlockNode>& nodes) {
    std::map<std::size_t, std::size_t> depths;
    std::wstring text;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const bool root = nodes[i].parent == BlockNode::kNoParent;
        depths[i] = root ? 0 : depths[nodes[i].parent] + 1;
        text += std::wstring(depths[i], L' ') + nodes[i].label + L" " +
                branchPath(record, nodes[i]) + L"\n";
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
    std::vector<GasTemplate> templates;
    for (const auto& c : cases) {
        ASSERT_TRUE(loadGasText(std::wstring(L"[info]\r\n") + c.body, templates));
        const std::vector<BlockNode> nodes = blockTree(templates[0]);
        EXPECT_EQ(drawn(templates[0], nodes), c.tree) << test::shown(c.body);
        const GasProperty& last = templates[0].Properties.back();
        EXPECT_EQ(fullPath(templates[0], nodes.back()) + L'\\', groupPath(L"Info0", last));
        EXPECT_EQ(&*nodeOf(nodes, last), &nodes.back());
    }
    // Deeper ones than a window draws keep their paths.
    std::wstring deep = L"[info]\r\n";
    for (int i = 0; i < 5000; ++i) deep += L"[a]\r\n{\r\n";
    ASSERT_TRUE(loadGasText(deep, templates));
    const std::vector<BlockNode> nodes = blockTree(templates[0]);
    ASSERT_EQ(nodes.size(), 5001U);
    EXPECT_EQ(nodes[249].parent, 248U);
    EXPECT_EQ(nodes.back().parent, nodes[250].parent);
    EXPECT_EQ(nodes.back().group.start(), nodes[128].group) << "256 characters";
    EXPECT_EQ(branchPath(templates[0], nodes.back()),
              groupPath(L"Info0", templates[0].Properties.back()));
}

}  // namespace
}  // namespace kestrel
