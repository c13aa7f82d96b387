#pragma once

#include <wx/bmpbndl.h>

#include <string>

namespace kestrel {

// A bundle that draws `svg` at any size, by default `size` device-independent
// pixels wide and high; an empty one when the text is no SVG.
wxBitmapBundle bundleFromSvg(const std::string& svg, int size);

}  // namespace kestrel
