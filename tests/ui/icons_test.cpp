#include "ui/icons/icons.h"

#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/image.h>

#include <algorithm>
#include <map>
#include <set>

#include "ui/icons/iconsources.h"
#include "ui/textpane/tokencolours.h"

namespace kestrel::test {
namespace {

class Icons : public testing::Test {
  protected:
    wxImage drawn(std::string_view name, int size) {
        return icon(name, window).GetBitmap(wxSize(size, size)).ConvertToImage();
    }

    wxFrame window{nullptr, wxID_ANY, "owner"};
};

Rgb rgb(const wxColour& colour) {
    return {colour.Red(), colour.Green(), colour.Blue()};
}

TEST_F(Icons, AreDrawnWholeAndDifferAtEverySize) {
    EXPECT_EQ(icon("save", window).GetDefaultSize(), wxSize(16, 16));
    EXPECT_EQ(icon("save", window).GetPreferredBitmapSizeAtScale(2), wxSize(32, 32));
    for (const int size : {16, 24, 32, 48}) {
        std::map<std::string, std::string_view> seen;
        for (std::string_view name : iconNames()) {
            if (name == "kestrel") continue;
            const wxImage image = drawn(name, size);
            ASSERT_TRUE(image.IsOk() && image.HasAlpha()) << name;
            ASSERT_EQ(image.GetSize(), wxSize(size, size)) << name;
            const std::string alpha(image.GetAlpha(), image.GetAlpha() + size * size);
            const auto [same, fresh] = seen.emplace(alpha, name);
            EXPECT_TRUE(fresh) << name << " looks like " << same->second << " at " << size;
            const auto solid = std::ranges::count_if(
                alpha, [](char one) { return static_cast<unsigned char>(one) > 128; });
            EXPECT_GT(solid, size * size / 12) << name << " is faint at " << size;
            for (int i = 0; i < size; ++i) {
                const int edge = std::max({image.GetAlpha(i, 0), image.GetAlpha(i, size - 1),
                                           image.GetAlpha(0, i), image.GetAlpha(size - 1, i)});
                EXPECT_LT(edge, 128) << name << " is cut off at " << size;
            }
        }
    }
}

TEST_F(Icons, TakeTheWindowsTextColourAndAnAccentThatCanBeSeen) {
    const std::pair<const char*, const char*> themes[] = {{"#2e3436", "#f6f5f4"},
                                                          {"#000000", "#ffffff"},
                                                          {"#eeeeec", "#353535"},
                                                          {"#ffffff", "#000000"}};
    for (const auto& [text, background] : themes) {
        window.SetForegroundColour(text);
        for (const IconSource& source : iconSources()) {
            if (source.name == "kestrel") continue;
            const wxImage image = drawn(source.name, 48);
            std::set<wxUint32> colours;
            for (int i = 0; i < 48 * 48; ++i) {
                if (image.GetAlpha()[i] < 64) continue;
                const auto* pixel = image.GetData() + 3 * i;
                const wxColour colour(pixel[0], pixel[1], pixel[2]);
                // A smooth edge has the stroke's own colour, only less of it.
                EXPECT_GE(contrast(rgb(colour), rgb(background)), 4)
                    << source.name << " at " << i << " on " << background;
                if (image.GetAlpha()[i] == 255) colours.insert(colour.GetRGB());
            }
            EXPECT_EQ(colours.count(wxColour(text).GetRGB()), 1U) << source.name;
            EXPECT_GE(colours.size(), 2U) << source.name << " has no accent";
            for (std::size_t at = 0; (at = source.svg.find("=\"#", at)) != source.svg.npos; ++at) {
                const std::string_view colour = source.svg.substr(at + 2, 7);
                EXPECT_TRUE(colour == kIconInk || colour == kIconAccent) << source.name << colour;
            }
        }
    }
}

}  // namespace
}  // namespace kestrel::test
