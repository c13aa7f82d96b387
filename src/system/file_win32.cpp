#include "system/file_win32.h"

#include "system/systemerror.h"

namespace kestrel::win32 {

namespace {

constexpr DWORD kAnyShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedServer = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";

// Longer paths than this are told to the system in the extended form. Below it
// there is room for a file in the folder and for its sibling.
constexpr std::size_t kPlainLength = 190;

}  // namespace

std::wstring fullName(std::wstring_view path) {
    if (path.starts_with(kDevice) || path.find(L'\0') != path.npos) return {};
    const std::wstring name(path);
    return textOf([&](wchar_t* text, DWORD size) {
        return ::GetFullPathNameW(name.c_str(), size, text, nullptr);
    });
}

std::wstring nameOf(std::wstring_view path) {
    const std::wstring full = fullName(path);
    // "NUL" and its like, in whatever folder the system knows them.
    if (full.starts_with(kDevice)) return {};
    if (full.size() < kPlainLength || path.starts_with(kExtended)) {
        return full.empty() ? full : std::wstring(path);
    }
    if (!full.starts_with(L"\\\\")) return std::wstring(kExtended) + full;
    return std::wstring(kExtendedServer) + full.substr(2);
}

std::wstring withoutPrefix(std::wstring name) {
    if (name.starts_with(kExtendedServer)) return name.replace(0, kExtendedServer.size(), L"\\\\");
    if (name.starts_with(kExtended)) name.erase(0, kExtended.size());
    return name;
}

DWORD attributesOf(std::wstring_view path) noexcept {
    return ::GetFileAttributesW(nameOf(path).c_str());
}

void raise(DWORD code, std::wstring_view action, std::wstring_view path) {
    throwSystemError(static_cast<int>(code), action, path);
}

File::File(const std::wstring& name, DWORD access, DWORD creation, DWORD flags)
    : handle_(::CreateFileW(name.c_str(), access, kAnyShare, nullptr, creation, flags, nullptr)) {}

File::~File() {
    close();
}

bool File::close() noexcept {
    const bool closed = !isOpen() || ::CloseHandle(handle_) != 0;
    handle_ = INVALID_HANDLE_VALUE;
    return closed;
}

}  // namespace kestrel::win32
