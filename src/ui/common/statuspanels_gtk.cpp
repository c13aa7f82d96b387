#include <gtk/gtk.h>

#include "ui/common/statuspanels.h"

namespace kestrel {

// The toolkit draws its own status bar, and assistive programs see an empty one.
std::vector<wxStaticText*> makePanelLabels(wxStatusBar& bar, std::size_t count) {
    atk_object_set_role(gtk_widget_get_accessible(bar.m_widget), ATK_ROLE_STATUSBAR);
    std::vector<wxStaticText*> labels;
    for (std::size_t i = 0; i < count; ++i) {
        labels.push_back(new wxStaticText(&bar, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                          wxST_ELLIPSIZE_END | wxST_NO_AUTORESIZE));
    }
    return labels;
}

}  // namespace kestrel
