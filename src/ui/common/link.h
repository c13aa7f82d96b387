#pragma once

#include <wx/window.h>

namespace kestrel {

// A label that opens the web page that was set for this program (KESTREL_WEBSITE in its
// build, or in its environment), underlined while the mouse is over it; without `text`
// it shows the address. Null, and nothing to be seen, where none is set.
wxWindow* makeLink(wxWindow* parent, const wxString& text = {});

// The platform's link; pressing it sends wxEVT_HYPERLINK.
wxWindow* makePlatformLink(wxWindow* parent, const wxString& text, const wxString& address);

}  // namespace kestrel
