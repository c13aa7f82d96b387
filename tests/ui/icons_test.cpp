#include "ui/icons/icons.h"

#include <wx/frame.h>
#include <wx/image.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

#include "ui/common/gaslexer.h"
#include "ui/harness.h"
#include "ui/icons/iconsources.h"

namespace kestrel::test {
namespace {

// The icons of commands: one style, two colours. The program icon is apart.
std::vector<std::string_view> commandIcons() {
    std::vector<std::string_view> names = iconNames();
    std::erase(names, "kestrel");
    return names;
}

class Icons : public UiTest {
  protected:
    Icons() : window(new wxFrame(nullptr, wxID_ANY, "owner")) {}

    wxImage drawn(std::string_view name, int size) {
        return icon(name, *window, size).GetBitmap(wxSize(size, size)).ConvertToImage();
    }

    wxFrame* window;
};

Rgb rgb(const wxColour& colour) {
    return {colour.Red(), colour.Green(), colour.Blue()};
}

TEST_F(Icons, AreDrawnWholeAndDifferAtEverySize) {
    for (const int size : {16, 24, 32, 48}) {
        std::map<std::string, std::string_view> seen;
        for (std::string_view name : commandIcons()) {
            const wxImage image = drawn(name, size);
            ASSERT_TRUE(image.IsOk() && image.HasAlpha()) << name;
            ASSERT_EQ(image.GetSize(), wxSize(size, size)) << name;
            const auto bytes = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
            const std::string alpha(reinterpret_cast<const char*>(image.GetAlpha()), bytes);
            const auto [same, fresh] = seen.emplace(alpha, name);
            EXPECT_TRUE(fresh) << name << " looks like " << same->second << " at " << size;
            std::size_t solid = 0;
            for (int i = 0; i < size * size; ++i) solid += image.GetAlpha()[i] > 128 ? 1U : 0U;
            EXPECT_GT(solid, bytes / 12) << name << " is faint at " << size;
            for (int i = 0; i < size; ++i) {
                const int edge = std::max({image.GetAlpha(i, 0), image.GetAlpha(i, size - 1),
                                           image.GetAlpha(0, i), image.GetAlpha(size - 1, i)});
                EXPECT_LT(edge, 128) << name << " is cut off at " << size;
            }
        }
    }
}

TEST_F(Icons, TakeTheWindowsTextColourAndAnAccentThatCanBeSeen) {
    struct Theme {
        const char* text;
        const char* background;
    };
    for (const Theme& theme : {Theme{"#2e3436", "#f6f5f4"}, Theme{"#000000", "#ffffff"},
                               Theme{"#eeeeec", "#353535"}, Theme{"#ffffff", "#000000"}}) {
        window->SetForegroundColour(theme.text);
        for (std::string_view name : commandIcons()) {
            const wxImage image = drawn(name, 48);
            std::set<wxUint32> colours;
            for (int y = 0; y < 48; ++y) {
                for (int x = 0; x < 48; ++x) {
                    if (image.GetAlpha(x, y) < 64) continue;
                    const wxColour colour(image.GetRed(x, y), image.GetGreen(x, y),
                                          image.GetBlue(x, y));
                    // A smooth edge has the stroke's own colour, only less of it.
                    EXPECT_GE(contrast(rgb(colour), rgb(theme.background)), 4)
                        << name << " at " << x << ", " << y << " on " << theme.background;
                    if (image.GetAlpha(x, y) == 255) colours.insert(colour.GetRGB());
                }
            }
            EXPECT_EQ(colours.count(wxColour(theme.text).GetRGB()), 1U) << name;
            EXPECT_GE(colours.size(), 2U) << name << " has no accent";
        }
    }
}

TEST_F(Icons, UseNoColourOfTheirOwn) {
    for (const IconSource& source : iconSources()) {
        if (source.name == "kestrel") continue;
        for (std::size_t at = source.svg.find("=\"#"); at != std::string_view::npos;
             at = source.svg.find("=\"#", at + 1)) {
            const std::string_view colour = source.svg.substr(at + 2, 7);
            EXPECT_TRUE(colour == kIconInk || colour == kIconAccent)
                << source.name << " has " << colour;
        }
    }
}

TEST_F(Icons, AreDrawnAnewForALargerScale) {
    const wxBitmapBundle bundle = icon("save", *window);
    EXPECT_EQ(bundle.GetDefaultSize(), wxSize(16, 16));
    EXPECT_EQ(bundle.GetPreferredBitmapSizeAtScale(2), wxSize(32, 32));
    const wxImage sharp = bundle.GetBitmap(wxSize(32, 32)).ConvertToImage();
    const wxImage own = drawn("save", 32);
    EXPECT_EQ(std::memcmp(sharp.GetAlpha(), own.GetAlpha(), 32 * 32), 0);
}

TEST_F(Icons, TheProgramIconHasEverySizeThatWindowsShow) {
    const wxIconBundle icons = programIcon();
    for (const int size : {16, 24, 32, 48, 64}) {
        const wxIcon one = icons.GetIcon(wxSize(size, size), wxIconBundle::FALLBACK_NONE);
        ASSERT_TRUE(one.IsOk()) << size;
        EXPECT_EQ(one.GetWidth(), size);
        EXPECT_EQ(one.GetHeight(), size);
    }
}

}  // namespace
}  // namespace kestrel::test
