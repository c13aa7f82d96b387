#pragma once

#include <wx/taskbar.h>

#include <functional>

class wxMenu;

namespace kestrel {

// The program's icon in the notification area.
class TrayIcon final : public wxTaskBarIcon {
  public:
    // `restore` brings the window back; `menu` makes the menu that the icon pops
    // up, for the icon to own.
    TrayIcon(std::function<void()> restore, std::function<wxMenu*()> menu);

    // Shows the icon with the tip `tip`. False where there is no notification
    // area: the window must then stay where it is.
    bool add(const wxIcon& icon, const wxString& tip);

  protected:
    wxMenu* CreatePopupMenu() override { return menu_(); }

  private:
    std::function<wxMenu*()> menu_;
};

}  // namespace kestrel
