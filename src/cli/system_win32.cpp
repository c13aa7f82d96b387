#include "cli/system.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace kestrel::cli::system {

void prepareStreams() {
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    ::SetConsoleOutputCP(CP_UTF8);
}

// The words of main are in the 8-bit code page; the system keeps the wide ones.
std::vector<std::wstring> commandLine(int, char**) {
    std::vector<std::wstring> words;
    int count = 0;
    wchar_t** values = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i) words.emplace_back(values[i]);
    ::LocalFree(values);
    return words;
}

bool readerIsGone() noexcept {
    const unsigned long code = _doserrno;
    return errno == EPIPE || code == ERROR_BROKEN_PIPE || code == ERROR_NO_DATA ||
           code == ERROR_PIPE_NOT_CONNECTED;
}

bool errorIsTerminal() {
    return ::_isatty(::_fileno(stderr)) != 0;
}

}  // namespace kestrel::cli::system
