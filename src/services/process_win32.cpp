#include "services/process_win32.h"

#include "services/file_win32.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/process.h"

namespace kestrel {

namespace {

// Where bare names are looked for; between two ";" stands one folder or nothing.
std::wstring searchFolders() {
    const auto add = [](std::wstring& folders, const std::wstring& more) {
        folders.append(more).append(L";");
    };
    std::wstring folders;
    add(folders,
        win32::textOf([](wchar_t* text, DWORD size) { return ::GetSystemDirectoryW(text, size); }));
    add(folders, win32::textOf(
                     [](wchar_t* text, DWORD size) { return ::GetWindowsDirectoryW(text, size); }));
    add(folders, filesystem::executableFolder());
    add(folders, win32::textOf([](wchar_t* text, DWORD size) {
            return ::GetEnvironmentVariableW(L"PATH", text, size);
        }));
    return folders;
}

// The path of `program`, or where the search finds a bare name; empty for one that
// is nowhere.
std::wstring programFile(const std::wstring& program) {
    if (program.find_first_of(L"\\/:") != program.npos) return program;
    const std::wstring file = program.find(L'.') == program.npos ? program + L".exe" : program;
    std::wstring rest = searchFolders();
    for (std::size_t end; (end = rest.find(L';')) != rest.npos; rest.erase(0, end + 1)) {
        std::wstring candidate = joinPath(rest.substr(0, end), file);
        if (end != 0 && filesystem::isFile(candidate)) return candidate;
    }
    return {};
}

}  // namespace

HANDLE win32::createProcess(const std::wstring& program, std::wstring line, STARTUPINFOW startup,
                            bool inherits, DWORD flags) {
    constexpr std::wstring_view kStart = L"Cannot start";
    const std::wstring file = programFile(program);
    if (file.empty()) raise(ERROR_FILE_NOT_FOUND, kStart, program);
    if (filesystem::isFolder(file)) raise(ERROR_ACCESS_DENIED, kStart, program);
    PROCESS_INFORMATION process{};
    startup.cb = sizeof startup;
    if (!CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, inherits ? TRUE : FALSE, flags,
                        nullptr, nullptr, &startup, &process)) {
        raise(GetLastError(), kStart, program);
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

void settleProcess() {
    // Libraries come from the program's folder or the system's, never from the
    // current one, whatever asks for them by a bare name.
    if (!SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 |
                                  LOAD_LIBRARY_SEARCH_APPLICATION_DIR)) {
        SetDllDirectoryW(L"");
    }
    // A failed read of an empty drive is an error of the call, not a box.
    SetErrorMode(SEM_FAILCRITICALERRORS);
}

void startProgram(std::wstring_view commandLine, std::wstring_view configured) {
    const CommandParts parts = splitCommandLine(commandLine, configured, filesystem::isFile);
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    CloseHandle(win32::createProcess(parts.program, std::wstring(commandLine), startup, false, 0));
}

bool isProgram(std::wstring_view name) {
    return filesystem::isFile(programFile(std::wstring(name)));
}

}  // namespace kestrel
