#include "tankhost/platform.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>

#include "base/bytes.h"
#include "base/error.h"
#include "system/filesystem.h"
#include "system/systemerror.h"

namespace kestrel::tankhost {
namespace {

constexpr int kCannotLoad = 48;

HANDLE handleOf(std::intptr_t stream) {
    return reinterpret_cast<HANDLE>(stream);
}

// The standard stream under a handle that nothing else here has.
std::intptr_t taken(DWORD stream) {
    HANDLE own = INVALID_HANDLE_VALUE;
    ::DuplicateHandle(::GetCurrentProcess(), ::GetStdHandle(stream), ::GetCurrentProcess(), &own, 0,
                      FALSE, DUPLICATE_SAME_ACCESS);
    ::SetStdHandle(stream, INVALID_HANDLE_VALUE);
    return reinterpret_cast<std::intptr_t>(own);
}

// `path` as Windows has it: under Wine a caller may name files as its own system does.
std::wstring ownPath(std::wstring_view path) {
    using DosName = wchar_t*(CDECL*)(const char*);
    const auto dosName = reinterpret_cast<DosName>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
    std::wstring own(path);
    if (dosName == nullptr || !path.starts_with(L'/')) return own;
    const std::string unixName = toUtf8(path);
    wchar_t* const name = dosName(unixName.c_str());
    if (name == nullptr) return own;
    own = name;
    ::HeapFree(::GetProcessHeap(), 0, name);
    return own;
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

// What the library writes through the runtime that it shares with this process is lost, too.
Streams::Streams() : input_(taken(STD_INPUT_HANDLE)), output_(taken(STD_OUTPUT_HANDLE)) {
    const int null = ::_open("NUL", _O_RDWR);
    ::_dup2(null, 0);
    ::_dup2(null, 1);
}

std::size_t Streams::read(char* bytes, std::size_t most) const {
    DWORD count = 0;
    const bool done =
        ::ReadFile(handleOf(input_), bytes, static_cast<DWORD>(most), &count, nullptr) != FALSE;
    return done ? count : 0;
}

bool Streams::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        DWORD count = 0;
        if (!::WriteFile(handleOf(output_), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                         nullptr)) {
            return false;
        }
        bytes.remove_prefix(count);
    }
    return true;
}

// Memory, further processes and its end with its client are limited by the client's job.
void restrictProcess() {
    // No box of the system's own: what ends this process its client tells.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

void leave(int code) {
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(code));
    std::abort();
}

int becomeProgram(char**) {
    return 127;
}

std::size_t readMemory(const char* from, char* to, std::size_t most) noexcept {
    constexpr std::size_t kPage = 4096;
    std::size_t done = 0;
    while (done < most) {
        // As far as the end of a page: memory is there or not by pages.
        const std::size_t left = kPage - (reinterpret_cast<std::uintptr_t>(from) + done) % kPage;
        const std::size_t size = left < most - done ? left : most - done;
        SIZE_T count = 0;
        if (!::ReadProcessMemory(::GetCurrentProcess(), from + done, to + done, size, &count))
            break;
        done += count;
    }
    return done;
}

std::string libraryText(std::wstring_view path) {
    const std::wstring name = ownPath(path);
    std::string text = inCodePage(name);
    if (text.empty()) text = inCodePage(shortPath(name));
    if (!text.empty() || path.empty()) return text;
    throw RunTimeError(kPathError,
                       L"The name of '" + name + L"' has letters that the library cannot be told");
}

// The system looks beside the library only for a path with backslashes alone; what the library
// needs comes from there or from the system.
Library::Library(const std::wstring& path)
    : handle_(::LoadLibraryExW(filesystem::absolutePath(ownPath(path)).c_str(), nullptr,
                               LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32)) {
    if (handle_ == nullptr) refuse(::GetLastError(), path);
}

void* Library::find(const std::string& name) const noexcept {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name.c_str()));
}

}  // namespace kestrel::tankhost
