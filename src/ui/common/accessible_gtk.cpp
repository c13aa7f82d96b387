#include "ui/common/accessible.h"

#include <gtk/gtk.h>

namespace kestrel {
namespace {

void setName(GtkWidget* widget, const wxString& name) {
    atk_object_set_name(gtk_widget_get_accessible(widget), name.utf8_str());
}

}  // namespace

void setAccessibleName(wxWindow& control, const wxString& name) {
    // What has the keyboard, and not what it scrolls in.
    setName(control.m_focusWidget != nullptr ? control.m_focusWidget : control.m_widget, name);
    // The text of a combo box is a control of its own.
    if (GTK_IS_COMBO_BOX(control.m_widget)) {
        setName(control.m_widget, name);
        GtkWidget* entry = gtk_bin_get_child(GTK_BIN(control.m_widget));
        if (entry != nullptr) setName(entry, name);
    }
}

void markAsMessage(wxWindow& window) {
    atk_object_set_role(gtk_widget_get_accessible(window.m_widget), ATK_ROLE_ALERT);
}

}  // namespace kestrel
