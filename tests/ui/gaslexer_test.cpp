#include "ui/common/gaslexer.h"

#include <gtest/gtest.h>

#include "ui/common/host_wx.h"

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

TEST(GasLexer, ColoursAreReadableOnLightAndDark) {
    EXPECT_NEAR(contrast({0, 0, 0}, {255, 255, 255}), 21, 0.01);
    for (const Rgb background : {Rgb{255, 255, 255}, Rgb{212, 208, 200}, Rgb{53, 53, 53}, Rgb{}}) {
        for (std::size_t token = 1; token < kGasTokens; ++token) {
            const Rgb colour = tokenColour(static_cast<GasToken>(token), {}, background);
            EXPECT_GE(contrast(colour, background), 4.5)
                << token << " on " << static_cast<int>(background.red);
        }
    }
}

TEST(FileFilters, AreWhatTheToolkitUnderstands) {
    EXPECT_EQ(toolkitFilter(L"Save (*.a;*.b)|*.a;*.b|Tanks| *.ds*|All (*.*)|*.*"),
              L"Save (*.a;*.b)|*.[Aa];*.[Bb]|Tanks|*.[Dd][Ss]*|All (*.*)|*");
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"*.tab", L".tab"}, {L"*.*", L""},  {L"*.a;*.b", L""},
        {L"name.tab", L""},  {L"*.t*", L""}, {L"", L""},
    };
    for (const auto& [pattern, extension] : cases) EXPECT_EQ(extensionOf(pattern), extension);
}

}  // namespace
}  // namespace kestrel::test
