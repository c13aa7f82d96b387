#pragma once

#include <wx/icon.h>
#include <wx/menu.h>

#include <functional>
#include <memory>

namespace kestrel {

// The program's icon in the notification area.
class TrayIcon {
  public:
    virtual ~TrayIcon() = default;
    TrayIcon() = default;
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    // Asks the notification area to show the icon with the tip `tip`. Whether and when
    // it does is up to that.
    virtual void add(const wxIcon& icon, const wxString& tip) = 0;
    virtual void remove() = 0;
    // Lets the user choose from a menu at the icon; `owner` is the program's window.
    virtual void popUp(wxWindow& owner, wxMenu& menu) = 0;
    // True while the icon can be seen.
    virtual bool isShown() const = 0;

    std::function<void()> onShown;
    std::function<void()> onLost;     // it can be seen no more, though not removed
    std::function<void()> onRestore;  // a double click
    std::function<void()> onMenu;     // the other button
};

std::unique_ptr<TrayIcon> makeTrayIcon();

}  // namespace kestrel
