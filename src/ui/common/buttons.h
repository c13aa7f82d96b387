#pragma once

#include <wx/button.h>

#include <string_view>

namespace kestrel {

// A button with the icon `iconName` and its name in words: `label`, which is
// shown beside the icon only when `showsLabel`.
wxButton* addPictureButton(wxWindow* parent, std::string_view iconName, const wxString& label,
                           const wxString& tooltip, bool showsLabel = false);

}  // namespace kestrel
