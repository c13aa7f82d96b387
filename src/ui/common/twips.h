#pragma once

#include <wx/window.h>

#include "ui/host/desktop.h"

namespace kestrel {

inline constexpr int kTwipsPerInch = 1440;

// The gap between neighbouring controls.
inline constexpr int kGapTwips = 40;

// `twips` in the pixels of `window`'s screen, rounded: they grow with its resolution
// and with the size of texts that the user chose.
inline int fromTwips(const wxWindow& window, int twips) {
    return (twips * dotsPerInch(window) + kTwipsPerInch / 2) / kTwipsPerInch;
}

inline constexpr int kUsualDots = 96;

// `size`, told in pixels at 96 dots an inch, in those of the window's screen.
inline int scaled(const wxWindow& window, int size) {
    return (size * dotsPerInch(window) + kUsualDots / 2) / kUsualDots;
}

// The other way round.
inline int unscaled(const wxWindow& window, int pixels) {
    const int dots = dotsPerInch(window);
    return (pixels * kUsualDots + dots / 2) / dots;
}

}  // namespace kestrel
