#include "ui/common/statuspanels.h"

#include <algorithm>

#include "ui/common/listen.h"
#include "ui/common/strings.h"

namespace kestrel {

StatusPanels::StatusPanels(wxWindow* parent, std::vector<Panel> panels)
    : wxStatusBar(parent, wxID_ANY, wxSTB_SIZEGRIP | wxSTB_ELLIPSIZE_END, "stbMain"),
      panels_(std::move(panels)) {
    std::vector<int> widths;
    for (const Panel& panel : panels_) widths.push_back(-panel.share);
    SetFieldsCount(static_cast<int>(widths.size()), widths.data());
    labels_ = makePanelLabels(*this, panels_.size());
    for (std::size_t i = 0; i < labels_.size(); ++i) labels_[i]->SetToolTip(panels_[i].tooltip);
    listen(*this, wxEVT_SIZE, [this] { CallAfter([this] { placeLabels(); }); });
    if (!labels_.empty()) return;
    listen(*this, wxEVT_MOTION,
           [this](const wxMouseEvent& event) { tellPanel(event.GetPosition()); });
}

void StatusPanels::setPanel(int panel, std::wstring_view text) {
    const wxString shown = shownLine(text);
    if (labels_.empty()) return SetStatusText(shown, panel);
    wxStaticText& label = *labels_.at(static_cast<std::size_t>(panel));
    if (label.GetLabelText() != shown) label.SetLabelText(shown);
}

void StatusPanels::setTooltip(int panel, const wxString& tooltip) {
    const auto index = static_cast<std::size_t>(panel);
    panels_.at(index).tooltip = tooltip;
    if (!labels_.empty()) labels_[index]->SetToolTip(tooltip);
}

void StatusPanels::placeLabels() {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        wxRect field;
        if (!GetFieldRect(static_cast<int>(i), field)) continue;
        const int height = labels_[i]->GetBestSize().y;
        labels_[i]->SetSize(field.x + GetBorderX(), field.y + (field.height - height) / 2,
                            std::max(0, field.width - 2 * GetBorderX()), height);
    }
}

// The system's status bar has one tooltip for all panels.
void StatusPanels::tellPanel(const wxPoint& mouse) {
    wxString tip;
    for (std::size_t i = 0; i < panels_.size(); ++i) {
        wxRect field;
        if (GetFieldRect(static_cast<int>(i), field) && field.Contains(mouse)) {
            tip = panels_[i].tooltip;
        }
    }
    if (GetToolTipText() != tip) SetToolTip(tip);
}

}  // namespace kestrel
