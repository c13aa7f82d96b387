// The desktops that still have such an area have no other way to it.
#define GDK_DISABLE_DEPRECATION_WARNINGS
#include <gtk/gtk.h>

#include "ui/common/strings.h"
#include "ui/frmMain/modTray.h"

namespace kestrel {
namespace {

struct Unref {
    void operator()(GtkStatusIcon* icon) const { g_object_unref(icon); }
};

// The toolkit's own class does not tell whether its icon was taken in, nor when the
// notification area has gone.
class TrayIconGtk final : public TrayIcon {
  public:
    void add(const wxIcon& icon, const wxString& tip) override {
        if (!icon_) {
            icon_.reset(gtk_status_icon_new_from_pixbuf(icon.GetPixbuf()));
            gtk_status_icon_set_tooltip_text(icon_.get(), tip.utf8_str());
            gtk_status_icon_set_title(icon_.get(), tip.utf8_str());
            connect();
        }
        gtk_status_icon_set_visible(icon_.get(), TRUE);
        if (isShown() && onShown) onShown();
    }

    void remove() override { icon_.reset(); }

    void popUp(wxWindow& owner, wxMenu& menu) override { owner.PopupMenu(&menu); }

    bool isShown() const override { return icon_ && gtk_status_icon_is_embedded(icon_.get()); }

  private:
    void connect() {
        const auto on = [this](const char* signal, GCallback run) {
            g_signal_connect(icon_.get(), signal, run, this);
        };
        on("notify::embedded", G_CALLBACK(+[](GtkStatusIcon*, GParamSpec*, TrayIconGtk* self) {
               self->isShown() ? self->onShown() : self->onLost();
           }));
        on("activate", G_CALLBACK(+[](GtkStatusIcon*, TrayIconGtk* self) { self->onRestore(); }));
        on("popup-menu",
           G_CALLBACK(+[](GtkStatusIcon*, guint, guint, TrayIconGtk* self) { self->onMenu(); }));
    }

    std::unique_ptr<GtkStatusIcon, Unref> icon_;
};

}  // namespace

std::unique_ptr<TrayIcon> makeTrayIcon() {
    return std::make_unique<TrayIconGtk>();
}

}  // namespace kestrel
