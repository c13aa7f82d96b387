#pragma once

#include <wx/dialog.h>

#include <string_view>

#include "services/host.h"

namespace kestrel {

// A question or a notice with its icon, which the toolkits' own boxes do not all show.
// Ctrl+C copies the text. Returns the answer.
Answer showMessageBox(wxWindow* parent, std::wstring_view text, std::wstring_view title, Icon icon,
                      Buttons buttons);

}  // namespace kestrel
