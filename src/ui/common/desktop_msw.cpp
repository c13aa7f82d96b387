#include <windows.h>

#include <shellapi.h>

#include "services/errors.h"
#include "ui/common/desktop.h"

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

void openTextEditor(const std::wstring& path) {
    SHELLEXECUTEINFOW request{};
    request.cbSize = sizeof request;
    request.fMask = SEE_MASK_FLAG_NO_UI;
    request.lpVerb = L"edit";
    request.lpFile = path.c_str();
    request.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&request))
        throwSystemError(static_cast<int>(GetLastError()), L"Cannot edit", path);
}

}  // namespace kestrel
