#include "ui/common/buttons.h"

#include "ui/common/accessible.h"
#include "ui/icons/icons.h"

namespace kestrel {

wxButton* addPictureButton(wxWindow* parent, std::string_view iconName, const wxString& label,
                           const wxString& tooltip, bool showsLabel) {
    const long style = showsLabel ? 0 : wxBU_NOTEXT | wxBU_EXACTFIT;
    auto* button = new wxButton(parent, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, style);
    // A button without text drops the label that it is made with.
    button->SetLabel(label);
    setAccessibleName(*button, wxControl::RemoveMnemonics(label));
    button->SetToolTip(tooltip);
    button->SetBitmap(icon(iconName, *button));
    button->Bind(wxEVT_SYS_COLOUR_CHANGED, [button, iconName](wxSysColourChangedEvent& event) {
        button->SetBitmap(icon(iconName, *button));
        event.Skip();
    });
    return button;
}

}  // namespace kestrel
