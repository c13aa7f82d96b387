#include "ui/common/buttons.h"

#include "ui/common/accessible.h"
#include "ui/common/listen.h"
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
    listen(*button, wxEVT_SYS_COLOUR_CHANGED,
           [button, iconName] { button->SetBitmap(icon(iconName, *button)); });
    return button;
}

}  // namespace kestrel
