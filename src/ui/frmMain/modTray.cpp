#include "ui/frmMain/modTray.h"

#include <wx/menu.h>

namespace kestrel {

TrayIcon::TrayIcon(std::function<void()> restore, std::function<wxMenu*()> menu)
    : menu_(std::move(menu)) {
    Bind(wxEVT_TASKBAR_LEFT_DCLICK,
         [restore = std::move(restore)](wxTaskBarIconEvent&) { restore(); });
}

bool TrayIcon::add(const wxIcon& icon, const wxString& tip) {
    if (!wxTaskBarIcon::IsAvailable()) return false;
    return IsIconInstalled() || SetIcon(icon, tip);
}

}  // namespace kestrel
