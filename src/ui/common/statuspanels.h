#pragma once

#include <wx/stattext.h>
#include <wx/statusbr.h>

#include <string_view>
#include <vector>

namespace kestrel {

// A status bar whose panels each have their own tooltip and are read by assistive
// programs. Nothing paints at once, so a text may be set out of a window's painting.
class StatusPanels final : public wxStatusBar {
  public:
    struct Panel {
        int share;  // of the width
        wxString tooltip;
    };
    StatusPanels(wxWindow* parent, std::vector<Panel> panels);

    // Shows `text` as it can be drawn in one line.
    void setPanel(int panel, std::wstring_view text);
    void setTooltip(int panel, const wxString& tooltip);

  private:
    void placeLabels();
    void tellPanel(const wxPoint& mouse);

    std::vector<Panel> panels_;
    std::vector<wxStaticText*> labels_;  // none where the system's panels can be read
};

// What stands in the panels of `bar` where its own texts cannot be read.
std::vector<wxStaticText*> makePanelLabels(wxStatusBar& bar, std::size_t count);

}  // namespace kestrel
