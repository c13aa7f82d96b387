#include <wx/hyperlink.h>

#include <wx/generic/hyperlink.h>
#include <wx/settings.h>

#include "ui/common/accessible.h"
#include "ui/common/link.h"
#include "ui/common/listen.h"

namespace kestrel {

// The system's own one is always underlined.
wxWindow* makePlatformLink(wxWindow* parent, const wxString& text, const wxString& address) {
    auto* link = new wxGenericHyperlinkCtrl(parent, wxID_ANY, text, address, wxDefaultPosition,
                                            wxDefaultSize, wxHL_ALIGN_LEFT | wxBORDER_NONE);
    const auto underline = [link](bool underlined) {
        wxFont font = link->GetFont();
        font.SetUnderlined(underlined);
        link->SetFont(font);
        link->Refresh();
    };
    const auto colour = [link] {
        const wxColour hot = wxSystemSettings::GetColour(wxSYS_COLOUR_HOTLIGHT);
        link->SetNormalColour(hot);
        link->SetVisitedColour(hot);
        link->SetHoverColour(hot);
    };
    underline(false);
    colour();
    listen(*link, wxEVT_ENTER_WINDOW, [underline] { underline(true); });
    listen(*link, wxEVT_LEAVE_WINDOW, [underline] { underline(false); });
    listen(*link, wxEVT_SYS_COLOUR_CHANGED, colour);
    setAccessibleName(*link, text);
    return link;
}

}  // namespace kestrel
