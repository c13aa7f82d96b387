#include <wx/taskbar.h>

#include "ui/frmMain/modTray.h"

namespace kestrel {
namespace {

class TrayIconMsw final : public TrayIcon {
  public:
    TrayIconMsw() {
        icon_.Bind(wxEVT_TASKBAR_LEFT_DCLICK, [this](wxTaskBarIconEvent&) { onRestore(); });
        icon_.Bind(wxEVT_TASKBAR_RIGHT_UP, [this](wxTaskBarIconEvent&) { onMenu(); });
    }

    void add(const wxIcon& icon, const wxString& tip) override {
        if (icon_.IsIconInstalled() || icon_.SetIcon(icon, tip)) onShown();
    }
    void remove() override { icon_.RemoveIcon(); }
    // A hidden window could not take the keyboard for it.
    void popUp(wxWindow&, wxMenu& menu) override { icon_.PopupMenu(&menu); }
    bool isShown() const override { return icon_.IsIconInstalled(); }

  private:
    wxTaskBarIcon icon_;
};

}  // namespace

std::unique_ptr<TrayIcon> makeTrayIcon() {
    return std::make_unique<TrayIconMsw>();
}

}  // namespace kestrel
