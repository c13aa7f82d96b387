#include <gtk/gtk.h>
#include <wx/menu.h>

#include "ui/common/accessible.h"
#include "ui/common/style.h"

namespace kestrel {
namespace {

constexpr const char* kStyle =
    "button { padding: 2px 5px; min-height: 20px; }"
    "button.link > label { text-decoration-line: none; }"
    "button.link:hover > label { text-decoration-line: underline; }"
    "entry { min-height: 26px; }"
    "combobox button { padding: 2px 5px; }"
    "treeview.view header button { padding: 1px 6px; }"
    "toolbar { padding: 2px; }"
    "toolbar button { padding: 3px 5px; min-width: 0; margin: 0; }"
    "toolbar button.toggle { padding: 3px 1px; }";

using ForWidget = std::function<void(GtkWidget*)>;

void forEach(GtkWidget* widget, const ForWidget& run) {
    run(widget);
    if (!GTK_IS_CONTAINER(widget)) return;
    const ForWidget* each = &run;
    gtk_container_forall(
        GTK_CONTAINER(widget),
        [](GtkWidget* child, gpointer data) {
            forEach(child, **static_cast<const ForWidget**>(data));
        },
        &each);
}

// A chooser of pictures that no `.gas` file can hold. It takes all keys and clicks, and
// keeps them where a window has no room for it.
void leaveOutEmoji() {
    const auto leaveOut = [](GSignalInvocationHint*, guint, const GValue* values, gpointer) {
        const gpointer widget = g_value_get_object(values);
        if (GTK_IS_ENTRY(widget)) {
            gtk_entry_set_input_hints(GTK_ENTRY(widget), GTK_INPUT_HINT_NO_EMOJI);
        }
        return gboolean{TRUE};
    };
    GtkBindingSet* keys = gtk_binding_set_by_class(g_type_class_ref(GTK_TYPE_ENTRY));
    for (const guint key : {GDK_KEY_period, GDK_KEY_semicolon}) {
        gtk_binding_entry_remove(keys, key, GDK_CONTROL_MASK);
    }
    g_signal_add_emission_hook(g_signal_lookup("realize", GTK_TYPE_WIDGET), 0, leaveOut, nullptr,
                               nullptr);
}

}  // namespace

void settleStyle() {
    leaveOutEmoji();
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, kStyle, -1, nullptr);
    gtk_style_context_add_provider_for_screen(gdk_screen_get_default(),
                                              GTK_STYLE_PROVIDER(provider),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
}

void finishToolBar(wxToolBar& toolBar) {
    std::string name;
    forEach(toolBar.m_widget, [&](GtkWidget* widget) {
        if (!GTK_IS_BUTTON(widget)) return;
        gtk_widget_set_focus_on_click(widget, FALSE);
        AtkObject* accessible = gtk_widget_get_accessible(widget);
        if (GTK_IS_TOGGLE_BUTTON(widget)) {
            atk_object_set_name(accessible, (name + ": choices").c_str());
        } else if (const char* own = atk_object_get_name(accessible)) {
            name = own;
        }
    });
}

void focusToolBar(wxToolBar& toolBar) {
    GtkWidget* first = nullptr;
    forEach(toolBar.m_widget, [&first](GtkWidget* widget) {
        if (first == nullptr && GTK_IS_BUTTON(widget) && gtk_widget_is_sensitive(widget)) {
            first = widget;
        }
    });
    if (first != nullptr) gtk_widget_grab_focus(first);
}

bool holdsFocus(const wxToolBar& toolBar) {
    GtkWidget* window = gtk_widget_get_toplevel(toolBar.m_widget);
    GtkWidget* focus = GTK_IS_WINDOW(window) ? gtk_window_get_focus(GTK_WINDOW(window)) : nullptr;
    return focus != nullptr && gtk_widget_is_ancestor(focus, toolBar.m_widget);
}

// Window managers choose the place of a window unless its user did.
void placeAt(wxTopLevelWindow& window, const wxPoint& place) {
    GdkGeometry none{};
    gtk_window_set_geometry_hints(GTK_WINDOW(window.m_widget), nullptr, &none, GDK_HINT_USER_POS);
    window.Move(place);
}

// The toolkit gives it a width of two pixels at first, and complains of what is too
// narrow for its tools.
void settleSize(wxTopLevelWindow& window) {
    const wxSize size = window.GetSize();
    GtkAllocation room{0, 0, size.x, size.y};
    gtk_widget_set_allocation(window.m_widget, &room);
}

void showKey(wxMenu&, wxMenuItem& item, const wxString& key) {
    GtkWidget* label = gtk_bin_get_child(GTK_BIN(item.GetMenuItem()));
    if (!GTK_IS_ACCEL_LABEL(label)) return;
    // Assistive programs are told of accelerators alone.
    atk_object_set_description(gtk_widget_get_accessible(item.GetMenuItem()), key.utf8_str());
    guint code = 0;
    GdkModifierType modifiers{};
    wxString accelerator = key;
    accelerator.Replace("Ctrl+", "<Control>");
    accelerator.Replace("Shift+", "<Shift>");
    accelerator.Replace("Alt+", "<Alt>");
    gtk_accelerator_parse(accelerator.utf8_str(), &code, &modifiers);
    gtk_accel_label_set_accel(GTK_ACCEL_LABEL(label), code, modifiers);
}

}  // namespace kestrel
