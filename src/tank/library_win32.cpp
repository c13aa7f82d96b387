#include "tank/library.h"

#include <windows.h>

#include "base/paths.h"
#include "system/codepage_win32.h"

namespace kestrel::dynamic {

std::wstring_view tankFileName() noexcept {
    return L"tank.dll";
}

bool isFullPath(std::wstring_view path) noexcept {
    if (path.size() < 3) return false;
    const bool onServer = isSeparator(path[0]) && isSeparator(path[1]);
    return onServer || (path[1] == L':' && isSeparator(path[2]));
}

std::wstring nameText(std::string_view name) {
    return textInPage(CP_ACP, name);
}

HostCommand hostCommand(const std::vector<std::wstring>& folders, const std::wstring& host) {
    const std::wstring library = findInFolders(folders, tankFileName());
    if (library.empty()) throwNoLibrary(folders);
    return {host, {L"--serve"}, library, {}};
}

}  // namespace kestrel::dynamic
