#include <windows.h>

#include <shellapi.h>
#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/window.h>

#include <iterator>

#include "system/systemerror.h"
#include "ui/common/strings.h"
#include "ui/host/desktop.h"

namespace kestrel {

bool showDesktopProperties(const std::wstring& path) {
    SHELLEXECUTEINFOW request{};
    request.cbSize = sizeof request;
    request.fMask = SEE_MASK_INVOKEIDLIST | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    request.hwnd = GetActiveWindow();
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

bool systemDialogIsOpen() {
    return false;
}

void restoreSystemDialog() {}

// It is only asked for when the user logs out, which waits for none.
bool cancelSystemDialog() {
    return false;
}

void awaitPlace(const wxWindow&) {}  // it is there as soon as it is shown

int dotsPerInch(const wxWindow& window) {
    return window.GetDPI().y;
}

void startIn(wxFileDialog& dialog, const std::wstring& folder) {
    dialog.SetDirectory(toWx(folder));
}
void startIn(wxDirDialog& dialog, const std::wstring& folder) {
    dialog.SetPath(toWx(folder));
}
std::wstring chosenPath(const wxFileDialog& dialog) {
    return fromWx(dialog.GetPath());
}
std::wstring chosenPath(const wxDirDialog& dialog) {
    return fromWx(dialog.GetPath());
}

void takeInput(wxDialog&, bool) {}

std::wstring longTimeText() {
    wchar_t text[128] = {};
    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, nullptr, nullptr, text,
                    static_cast<int>(std::size(text)));
    return text;
}

std::wstring longDateText() {
    wchar_t text[128] = {};
    GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_LONGDATE, nullptr, nullptr, text,
                    static_cast<int>(std::size(text)), nullptr);
    return text;
}

}  // namespace kestrel
