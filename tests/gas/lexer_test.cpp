#include "gas/lexer.h"

#include <gtest/gtest.h>

namespace kestrel::test {
namespace {

TEST(GasLexer, TellsTheTokens) {
    const std::pair<const char*, const char*> cases[] = {
        {"  doc = \"a; b\"; // c", "__nnnn__vvvvvv__cccc"},
        {"[t:template,n:a]{b=c d;}", "hhhhhhhhhhhhhhhhbn_v_v_b"},
        {"a=\"//x\";//\"", "n_vvvvv_ccc"},
        {"[open\r\nname\nx=1\ry", "hhhhh__nnnn_n_v_n"},
        {"f x = 1;", "nnnn__v_"},
    };
    for (const auto& [line, expected] : cases) {
        std::string tokens = gasTokens(line);
        for (char& token : tokens) token = "_hnvcb"[static_cast<std::size_t>(token)];
        EXPECT_EQ(tokens, expected) << line;
    }
}

TEST(GasLexer, KnowsGasTextAndMatchesBraces) {
    for (const char* text : {"[info]\r\n{", "\r\n// about\n\t [t:template,n:a]", "[a]"}) {
        EXPECT_TRUE(looksLikeGas(text)) << text;
    }
    for (const char* text : {"", " \r\n", "// only", "Name\tValue", "[open", "x [a]"}) {
        EXPECT_FALSE(looksLikeGas(text)) << text;
    }
    const std::string text = "[a]\n{ b { // }\n c = \"}\"; } }\n}";
    const std::pair<std::size_t, std::optional<std::size_t>> cases[] = {
        {0, 2},   {2, 0},   {4, 27},  {27, 4}, {8, 25},  {25, 8},
        {13, {}}, {21, {}}, {29, {}}, {1, {}}, {99, {}},
    };
    for (const auto& [at, match] : cases) EXPECT_EQ(matchingBrace(text, at), match) << at;
}

}  // namespace
}  // namespace kestrel::test
