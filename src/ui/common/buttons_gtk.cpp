#include <gtk/gtk.h>

#include "ui/common/buttons.h"

namespace kestrel {

void setAccessibleName(wxWindow& control, const wxString& name) {
    atk_object_set_name(gtk_widget_get_accessible(control.m_widget), name.utf8_str());
}

}  // namespace kestrel
