#pragma once

#include <wx/hyperlink.h>

#include <wx/generic/hyperlink.h>

#include <string>
#include <string_view>

namespace kestrel {

// A label that opens a web page, underlined while the mouse is over it. Its
// tooltip tells the page, or that there is none: nothing then happens.
class LinkLabel final : public wxGenericHyperlinkCtrl {
  public:
    LinkLabel(wxWindow* parent, const wxString& text, std::wstring_view address,
              const wxString& name);

  private:
    void underline(bool underlined);
    void applyColours();

    std::wstring address_;
};

}  // namespace kestrel
