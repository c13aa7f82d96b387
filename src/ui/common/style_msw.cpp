#include <windows.h>

#include <wx/menu.h>

#include "ui/common/style.h"

namespace kestrel {

// The system's own controls are as close as they can be.
void settleStyle() {}

void finishToolBar(wxToolBar&) {}

void focusToolBar(wxToolBar& toolBar) {
    toolBar.SetFocus();
}

bool holdsFocus(const wxToolBar& toolBar) {
    return toolBar.HasFocus();
}

void placeAt(wxTopLevelWindow& window, const wxPoint& place) {
    window.Move(place);
}

void settleSize(wxTopLevelWindow&) {}

void showKey(wxMenu& menu, wxMenuItem& item, const wxString& key) {
    const wxString text = item.GetItemLabel() + (key.empty() ? wxString() : "\t" + key);
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STRING;
    info.dwTypeData = const_cast<wchar_t*>(static_cast<const wchar_t*>(text.wc_str()));
    SetMenuItemInfoW(static_cast<HMENU>(menu.GetHMenu()), static_cast<UINT>(item.GetMSWId()), FALSE,
                     &info);
}

}  // namespace kestrel
