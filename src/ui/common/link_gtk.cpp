#include <wx/hyperlink.h>

#include "ui/common/link.h"

namespace kestrel {

// Its look, underlined or not, is a matter of style_gtk.cpp.
wxWindow* makePlatformLink(wxWindow* parent, const wxString& text, const wxString& address) {
    return new wxHyperlinkCtrl(parent, wxID_ANY, text, address);
}

}  // namespace kestrel
