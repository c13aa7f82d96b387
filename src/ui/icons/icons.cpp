#include "ui/icons/icons.h"

#include <wx/icon.h>

#include <algorithm>
#include <string>

#include "ui/icons/iconsources.h"
#include "ui/icons/svg.h"

namespace kestrel {
namespace {

// Those of windows. Larger ones slow the start down, and desktops have them as
// files.
constexpr int kProgramIconSizes[] = {16, 24, 32, 48, 64};

// Each has a contrast of at least 4 to 1 with the window colours it is for.
constexpr std::string_view kAccentOnLight = "#b4510f";
constexpr std::string_view kAccentOnDark = "#f2a65a";

const IconSource* findSource(std::string_view name) {
    const std::span<const IconSource> all = iconSources();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const IconSource& one) { return one.name == name; });
    return found == all.end() ? nullptr : &*found;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

// The SVG reader knows neither style sheets nor an inherited text colour, so
// the colours are put into the text.
std::string coloured(std::string_view svg, const wxColour& ink) {
    std::string text(svg);
    replaceAll(text, kIconAccent, ink.GetLuminance() > 0.5 ? kAccentOnDark : kAccentOnLight);
    replaceAll(text, kIconInk, ink.GetAsString(wxC2S_HTML_SYNTAX).utf8_string());
    return text;
}

}  // namespace

wxBitmapBundle icon(std::string_view name, const wxWindow& window, int size) {
    const IconSource* source = findSource(name);
    wxCHECK_MSG(source != nullptr, wxBitmapBundle(), "no icon has this name");
    return bundleFromSvg(coloured(source->svg, window.GetForegroundColour()), size);
}

std::vector<std::string_view> iconNames() {
    std::vector<std::string_view> names;
    for (const IconSource& one : iconSources()) names.push_back(one.name);
    return names;
}

wxIconBundle programIcon() {
    const std::string svg(findSource("kestrel")->svg);
    wxIconBundle icons;
    for (const int size : kProgramIconSizes) {
        icons.AddIcon(bundleFromSvg(svg, size).GetIcon(wxSize(size, size)));
    }
    return icons;
}

}  // namespace kestrel
