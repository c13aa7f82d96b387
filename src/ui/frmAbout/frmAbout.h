#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/hyperlink.h>
#include <wx/sizer.h>

#include <string>
#include <string_view>

#include "ui/frmAbout/website.h"

namespace kestrel {

// What a report of a fault should tell of this program: its version, the
// libraries in use, the system. One line each, with the system's line ends.
std::wstring aboutText();

// The About box.
class frmAbout final : public wxDialog {
  public:
    explicit frmAbout(wxWindow* parent, std::wstring_view website = kWebsite);

    wxButton* cmdCommands[2];               // 0: Close, 1: Copy
    wxHyperlinkCtrl* lnkWebsite = nullptr;  // null when no page is set

  private:
    wxSizer* header(std::wstring_view website);
    wxSizer* facts();
    wxSizer* buttons();
    wxWindow* link(std::wstring_view website);
};

// Shows the About box until it is closed.
void showAbout(wxWindow* parent);

}  // namespace kestrel
