#include <gtk/gtk.h>

#include "ui/common/toolbarstyle.h"

namespace kestrel {
namespace {

constexpr const char* kStyle =
    "toolbar { padding: 2px; }"
    "toolbar button { padding: 3px 5px; min-width: 0; margin: 0; }"
    "toolbar menubutton button, toolbar button.toggle { padding: 3px 1px; }";

void addStyle(GtkWidget* widget, gpointer provider) {
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget),
                                   GTK_STYLE_PROVIDER(provider),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    if (GTK_IS_CONTAINER(widget)) gtk_container_forall(GTK_CONTAINER(widget), addStyle, provider);
}

}  // namespace

void makeCompact(wxToolBar& toolBar) {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, kStyle, -1, nullptr);
    addStyle(toolBar.m_widget, provider);
    g_object_unref(provider);
}

}  // namespace kestrel
