#pragma once

#include <string>
#include <utility>
#include <vector>

#include <wx/window.h>

namespace kestrel {

// What the program itself can tell of a file: its name, folder, size, times and
// permissions, as labels and texts.
std::vector<std::pair<std::wstring, std::wstring>> fileFacts(const std::wstring& path);

// Shows fileFacts() in a small sheet.
void showOwnProperties(wxWindow* parent, const std::wstring& path);

}  // namespace kestrel
