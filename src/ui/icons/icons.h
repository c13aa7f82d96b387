#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>
#include <wx/window.h>

#include <string_view>
#include <vector>

// The program's own icons, compiled in as SVG.
namespace kestrel {

// The icon `name` in the text colour of `window`, `size` device-independent
// pixels wide and high, sharp on every screen. Ask again when the window's
// colours change. An unknown name asserts and gives an empty bundle.
wxBitmapBundle icon(std::string_view name, const wxWindow& window, int size = 16);

// The names that icon() knows.
std::vector<std::string_view> iconNames();

// The icon of the program's windows.
wxIconBundle programIcon();

}  // namespace kestrel
