#include "ui/common/link.h"

#include <wx/hyperlink.h>
#include <wx/utils.h>

#include "services/shell.h"
#include "services/version.h"
#include "ui/common/strings.h"

namespace kestrel {
namespace {

wxString website() {
    wxString address = KESTREL_WEBSITE;
    wxGetEnv("KESTREL_WEBSITE", &address);
    return address;
}

}  // namespace

wxWindow* makeLink(wxWindow* parent, const wxString& text) {
    const wxString address = website();
    if (address.empty()) return nullptr;
    wxWindow* link = makePlatformLink(parent, text.empty() ? address : text, address);
    link->SetName("lblInfo");
    link->SetToolTip(address);
    link->Bind(wxEVT_HYPERLINK,
               [address](wxHyperlinkEvent&) { gShellExec(fromWx(address), L"open"); });
    return link;
}

}  // namespace kestrel
