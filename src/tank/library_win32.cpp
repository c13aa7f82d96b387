#include "tank/library.h"

#include <windows.h>

#include "base/error.h"
#include "base/paths.h"
#include "system/codepage_win32.h"
#include "system/filesystem.h"
#include "system/systemerror.h"

namespace kestrel::dynamic {
namespace {

constexpr int kCannotLoad = 48;

// No box of the system's own asks for a library that the loaded one misses.
class NoErrorBoxes {
  public:
    NoErrorBoxes() {
        ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_);
    }
    ~NoErrorBoxes() { ::SetThreadErrorMode(before_, nullptr); }
    NoErrorBoxes(const NoErrorBoxes&) = delete;
    NoErrorBoxes& operator=(const NoErrorBoxes&) = delete;

  private:
    DWORD before_ = 0;
};

// Libraries that the loaded one needs come from its own folder or the system's.
HMODULE load(const std::wstring& path) {
    const NoErrorBoxes quiet;
    return ::LoadLibraryExW(path.c_str(), nullptr,
                            LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

[[noreturn]] void refuse(DWORD code, const std::wstring& path) {
    constexpr std::wstring_view kBits = sizeof(void*) == 4 ? L"32" : L"64";
    if (code != ERROR_BAD_EXE_FORMAT) {
        throwSystemError(static_cast<int>(code), L"Cannot load", path);
    }
    throw RunTimeError(kCannotLoad, L"Cannot load '" + path + L"': it is no library for a " +
                                        std::wstring(kBits) + L"-bit program");
}

// `path` in the system's code page; empty when a character is not in it.
std::string inCodePage(const std::wstring& path) {
    BOOL replaced = FALSE;
    std::string text(path.size() * 4 + 1, '\0');
    // The calls for UTF-8 and for other code pages take different arguments.
    const bool utf8 = ::GetACP() == CP_UTF8;
    const int length = ::WideCharToMultiByte(
        CP_ACP, utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS, path.c_str(), -1, text.data(),
        static_cast<int>(text.size()), nullptr, utf8 ? nullptr : &replaced);
    text.resize(length > 0 && replaced == FALSE ? static_cast<std::size_t>(length) - 1 : 0);
    return text;
}

// The short form of `path`, which holds no letters outside the code page; empty
// where the disk keeps none.
std::wstring shortPath(const std::wstring& path) {
    std::wstring text(::GetShortPathNameW(path.c_str(), nullptr, 0), L'\0');
    if (text.empty()) return text;
    text.resize(::GetShortPathNameW(path.c_str(), text.data(), static_cast<DWORD>(text.size())));
    return text;
}

}  // namespace

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

std::string libraryText(std::wstring_view path) {
    const std::wstring name(path);
    std::string text = inCodePage(name);
    if (text.empty()) text = inCodePage(shortPath(name));
    if (!text.empty() || path.empty()) return text;
    throw RunTimeError(kPathError,
                       L"The name of '" + name + L"' has letters that the library cannot be told");
}

// The system looks beside the library only for a path with backslashes alone.
Library::Library(const std::wstring& path) : handle_(load(filesystem::absolutePath(path))) {
    if (handle_ == nullptr) refuse(::GetLastError(), path);
}

Library::~Library() {
    ::FreeLibrary(static_cast<HMODULE>(handle_));
}

void* Library::find(const std::string& name) const noexcept {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name.c_str()));
}

}  // namespace kestrel::dynamic
