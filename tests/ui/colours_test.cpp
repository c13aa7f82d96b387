#include <gtest/gtest.h>

#include "ui/host/host_wx.h"
#include "ui/textpane/tokencolours.h"

namespace kestrel::test {
namespace {

TEST(TokenColours, AreReadableOnLightAndDark) {
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
