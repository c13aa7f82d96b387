#include "cli/system.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iterator>

#include "base/bytes.h"

namespace kestrel::cli::system {

void prepareStreams() {
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
}

// The console's code page is its user's, and stays. Texts come whole: a character is
// never cut.
bool write(std::FILE* stream, std::string_view bytes) {
    const auto console = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    DWORD mode = 0;
    if (::GetConsoleMode(console, &mode) == 0) {
        return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    }
    constexpr std::size_t kMost = 8000;  // the least limit of any console
    const std::wstring text = fromUtf8(bytes);
    for (std::size_t at = 0; at < text.size(); at += kMost) {
        const auto count = static_cast<DWORD>(std::min(kMost, text.size() - at));
        DWORD written = 0;
        if (!::WriteConsoleW(console, text.data() + at, count, &written, nullptr)) return false;
    }
    return true;
}

namespace {

// The files that a name with "*" or "?" stands for; the name itself for none. The shells
// here leave that to the programs.
std::vector<std::wstring> filesOf(const std::wstring& name) {
    std::vector<std::wstring> files;
    if (name.find_first_of(L"*?") != name.npos) {
        const std::wstring folder = name.substr(0, name.find_last_of(L"\\/:") + 1);
        WIN32_FIND_DATAW found{};
        const HANDLE search = ::FindFirstFileW(name.c_str(), &found);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more;
             more = ::FindNextFileW(search, &found)) {
            const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (!isFolder) files.push_back(folder + found.cFileName);
        }
        if (search != INVALID_HANDLE_VALUE) ::FindClose(search);
        std::ranges::sort(files);
    }
    if (files.empty()) files.push_back(name);
    return files;
}

}  // namespace

// The words of main are in the 8-bit code page; the system keeps the wide ones.
std::vector<std::wstring> commandLine(int, char**) {
    std::vector<std::wstring> words;
    int count = 0;
    wchar_t** values = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i)
        std::ranges::move(filesOf(values[i]), std::back_inserter(words));
    ::LocalFree(values);
    return words;
}

bool readerIsGone() noexcept {
    const unsigned long code = _doserrno;
    return errno == EPIPE || code == ERROR_BROKEN_PIPE || code == ERROR_NO_DATA ||
           code == ERROR_PIPE_NOT_CONNECTED;
}

namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): handlers reach no other.
std::atomic<bool> interrupted = false;

// The system calls it on a thread of its own; the second time the default follows.
BOOL WINAPI note(DWORD) {
    return interrupted.exchange(true) ? FALSE : TRUE;
}

}  // namespace

void catchInterrupts() {
    ::SetConsoleCtrlHandler(note, TRUE);
}

bool isInterrupted() noexcept {
    return interrupted;
}

void passInterruptOn() noexcept {
    constexpr UINT kControlCExit = 0xC000013A;
    if (interrupted) ::ExitProcess(kControlCExit);
}

bool isTerminal(std::FILE* stream) {
    return ::_isatty(::_fileno(stream)) != 0;
}

}  // namespace kestrel::cli::system
