#include "ui/common/linklabel.h"

#include <wx/settings.h>

#include "services/shell.h"
#include "ui/common/strings.h"

namespace kestrel {

LinkLabel::LinkLabel(wxWindow* parent, const wxString& text, std::wstring_view address,
                     const wxString& name)
    : wxGenericHyperlinkCtrl(parent, wxID_ANY, text, toWx(address), wxDefaultPosition,
                             wxDefaultSize, wxHL_ALIGN_LEFT | wxBORDER_NONE, name),
      address_(address) {
    SetToolTip(address_.empty() ? wxString("No web page is set for this build.") : toWx(address_));
    applyColours();
    underline(false);
    Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) {
        if (!address_.empty()) gShellExec(address_, L"open");
    });
    Bind(wxEVT_ENTER_WINDOW, [this](wxMouseEvent& event) {
        underline(true);
        event.Skip();
    });
    Bind(wxEVT_LEAVE_WINDOW, [this](wxMouseEvent& event) {
        underline(false);
        event.Skip();
    });
    Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
        applyColours();
        event.Skip();
    });
}

void LinkLabel::underline(bool underlined) {
    wxFont font = GetFont();
    font.SetUnderlined(underlined);
    SetFont(font);
    Refresh();
}

void LinkLabel::applyColours() {
    const wxColour colour = wxSystemSettings::GetColour(wxSYS_COLOUR_HOTLIGHT);
    SetNormalColour(colour);
    SetVisitedColour(colour);
    SetHoverColour(colour);
}

}  // namespace kestrel
