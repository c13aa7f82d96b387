#pragma once

#include <span>
#include <string_view>

namespace kestrel {

// One icon as it is drawn: its ink is kIconInk and its accent kIconAccent, to
// be replaced by colours that suit the window. The program icon has neither.
struct IconSource {
    std::string_view name;
    std::string_view svg;
};

inline constexpr std::string_view kIconInk = "#222222";
inline constexpr std::string_view kIconAccent = "#b4510f";

// Every icon. The build makes this from the SVG files.
std::span<const IconSource> iconSources();

}  // namespace kestrel
