#pragma once

#include <wx/window.h>

namespace kestrel {

inline constexpr int kTwipsPerDip = 15;

// The gap between neighbouring controls.
inline constexpr int kGapTwips = 40;

// `twips` in the pixels of `window`'s screen, rounded.
inline int fromTwips(const wxWindow& window, int twips) {
    return window.FromDIP((twips + kTwipsPerDip / 2) / kTwipsPerDip);
}

}  // namespace kestrel
