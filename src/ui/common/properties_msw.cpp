#include <windows.h>

#include <shellapi.h>

#include "ui/common/properties_wx.h"

namespace kestrel {

bool showDesktopProperties(const std::wstring& path) {
    SHELLEXECUTEINFOW request{};
    request.cbSize = sizeof request;
    request.fMask = SEE_MASK_INVOKEIDLIST | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    request.lpVerb = L"properties";
    request.lpFile = path.c_str();
    request.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&request)) return false;
    if (request.hProcess != nullptr) CloseHandle(request.hProcess);
    return true;
}

}  // namespace kestrel
