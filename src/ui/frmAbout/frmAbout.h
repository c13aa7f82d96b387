#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/sizer.h>

#include <string>

namespace kestrel {

// What a report of a fault should tell of this program: its version, the
// libraries in use, the system. One line each, with the system's line ends.
std::wstring aboutText();

// The About box.
class frmAbout final : public wxDialog {
  public:
    explicit frmAbout(wxWindow* parent);

    wxButton* cmdCommands[2];  // 0: Close, 1: Copy

  private:
    wxSizer* header();
    wxSizer* facts();
    wxSizer* buttons();
};

// Shows the About box until it is closed.
void showAbout(wxWindow* parent);

}  // namespace kestrel
