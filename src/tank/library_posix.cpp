#include "tank/library.h"

#include "base/error.h"
#include "base/paths.h"
#include "services/files.h"
#include "services/pagetext.h"
#include "system/process.h"

namespace kestrel::dynamic {
namespace {

constexpr std::wstring_view kWindowsLibrary = L"tank.dll";
constexpr std::wstring_view kWindowsHost = L"kestrel-tank.exe";

// The library for Windows, through Wine.
HostCommand throughWine(const std::wstring& library, const std::wstring& host) {
    const std::wstring program = findInFolders(
        {std::wstring(folderOf(host)), std::wstring(folderOf(library))}, kWindowsHost);
    if (program.empty()) {
        throw RunTimeError(kFileNotFound, L"Reading archives with '" + library + L"' takes '" +
                                              std::wstring(kWindowsHost) +
                                              L"' of Kestrel for Windows: put it beside that");
    }
    if (!isProgram(L"wine")) {
        throw RunTimeError(kFileNotFound, L"Reading archives with '" + library +
                                              L"' takes Wine, which is not installed");
    }
    return {host,
            {L"--run", L"wine", program, L"--serve"},
            library,
            L"Archives are read with '" + library + L"' through Wine."};
}

}  // namespace

std::wstring_view tankFileName() noexcept {
    return L"libtank.so";
}

bool isFullPath(std::wstring_view path) noexcept {
    return path.starts_with(L'/');
}

std::wstring nameText(std::string_view name) {
    return widen(name);
}

HostCommand hostCommand(const std::vector<std::wstring>& folders, const std::wstring& host) {
    if (const std::wstring own = findInFolders(folders, tankFileName()); !own.empty()) {
        return {host, {L"--serve"}, own, {}};
    }
    const std::wstring library = findInFolders(folders, kWindowsLibrary);
    if (library.empty()) throwNoLibrary(folders);
    return throughWine(library, host);
}

}  // namespace kestrel::dynamic
