#include "system/process_win32.h"

#include <shellapi.h>

#include <algorithm>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "system/file_win32.h"
#include "system/filesystem.h"
#include "system/letters.h"
#include "system/process.h"

namespace kestrel {

namespace {

// The headers lack its name.
constexpr DWORD kElevationRequired = 740;

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

bool isPath(std::wstring_view program) {
    return program.find_first_of(L"\\/:") != program.npos;
}

// Not one that is another one in each folder.
bool isWhole(std::wstring_view path) {
    const std::size_t root = path.size() > 1 && path[1] == L':' ? 2 : 0;
    return path.size() > root && isSeparator(path[root]);
}

// A program's name without an extension is that of an ".exe".
std::wstring withExtension(std::wstring_view program) {
    const bool has = fileName(program).find(L'.') != std::wstring_view::npos;
    return std::wstring(program) + (has ? L"" : L".exe");
}

// The path of `program`, or where the search finds a bare name; empty for one that
// is nowhere.
std::wstring programFile(const std::wstring& program) {
    const std::wstring file = withExtension(program);
    if (isPath(program)) {
        if (!isWhole(program)) return {};
        return filesystem::isFile(program) || !filesystem::isFile(file) ? program : file;
    }
    std::wstring rest = searchFolders();
    for (std::size_t end; (end = rest.find(L';')) != rest.npos; rest.erase(0, end + 1)) {
        std::wstring candidate = joinPath(rest.substr(0, end), file);
        if (end != 0 && isWhole(candidate) && filesystem::isFile(candidate)) return candidate;
    }
    return {};
}

bool isBatchFile(const std::wstring& file) {
    return endsWithoutCase(file, L".bat") || endsWithoutCase(file, L".cmd");
}

// What stands behind the program on its line.
std::wstring behind(std::wstring_view line, std::wstring_view program) {
    return std::wstring(trim(line.substr(std::min(program.size(), line.size()))));
}

// Whether the command processor hands the words to a batch file as they are.
bool isTakenAsItIs(std::wstring_view words) {
    bool quoted = false;
    for (const wchar_t c : words) {
        if (c == L'"') quoted = !quoted;
        if (c == L'%' || (!quoted && std::wstring_view(L"&|<>^").find(c) != words.npos))
            return false;
    }
    return !quoted;
}

// The command processor's line for a batch file, whose path it would cut at a blank. What
// is no list of quoted words is the name of one file.
std::wstring batchLine(const std::wstring& processor, const std::wstring& file,
                       std::wstring words) {
    if (!words.empty() && words.find(L'"') == words.npos) words = L'"' + words + L'"';
    if (!isTakenAsItIs(words)) {
        throw RunTimeError(kInvalidCall, L"A batch file cannot be given these words: " + words);
    }
    return L"\"" + processor + L"\" /d /s /c \"\"" + file + L"\" " + words + L"\"";
}

// Only the shell asks for the rights of an administrator.
void openElevated(const std::wstring& file, const std::wstring& arguments) {
    SHELLEXECUTEINFOW request{};
    request.cbSize = sizeof request;
    request.fMask = SEE_MASK_FLAG_NO_UI;
    request.lpVerb = L"open";
    request.lpFile = file.c_str();
    request.lpParameters = arguments.c_str();
    request.nShow = SW_SHOWNORMAL;
    const bool refused = !ShellExecuteExW(&request) && GetLastError() != ERROR_CANCELLED;
    if (refused) win32::raise(GetLastError(), L"Cannot start", file);
}

}  // namespace

HANDLE win32::createProcess(const std::wstring& program, std::wstring line, STARTUPINFOW startup,
                            bool inherits, DWORD flags, HANDLE job) {
    constexpr std::wstring_view kStart = L"Cannot start";
    const std::wstring file = programFile(program);
    if (file.empty()) raise(ERROR_FILE_NOT_FOUND, kStart, program);
    if (filesystem::isFolder(file)) raise(ERROR_ACCESS_DENIED, kStart, program);
    PROCESS_INFORMATION process{};
    flags |= job == nullptr ? 0 : CREATE_SUSPENDED;
    startup.cb = sizeof startup;
    std::wstring image = file;
    if (isBatchFile(file)) {
        image = joinPath(win32::textOf([](wchar_t* text, DWORD size) {
                             return ::GetSystemDirectoryW(text, size);
                         }),
                         L"cmd.exe");
        line = batchLine(image, file, behind(line, program));
    }
    // What it lacks the system tells its user, though our own calls are silent.
    if (!CreateProcessW(image.c_str(), line.data(), nullptr, nullptr, inherits ? TRUE : FALSE,
                        flags | CREATE_DEFAULT_ERROR_MODE, nullptr, nullptr, &startup, &process)) {
        const DWORD code = GetLastError();
        if (code != kElevationRequired || inherits) raise(code, kStart, program);
        openElevated(file, behind(line, program));
        return nullptr;
    }
    if (job != nullptr) AssignProcessToJobObject(job, process.hProcess);
    if (job != nullptr) ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    return process.hProcess;
}

void settleProcess() {
    // Libraries come from the program's folder or the system's, never from the
    // current one, whatever asks for them by a bare name. An old system lacks the call.
    using SetDirectories = BOOL(WINAPI*)(DWORD);
    const auto set = reinterpret_cast<SetDirectories>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")));
    if (set == nullptr ||
        !set(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_APPLICATION_DIR)) {
        SetDllDirectoryW(L"");
    }
    // A failed read of an empty drive is an error of the call, not a box.
    SetErrorMode(SEM_FAILCRITICALERRORS);
}

void startProgram(std::wstring_view commandLine, std::wstring_view configured) {
    const CommandParts parts = splitCommandLine(commandLine, configured);
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    const HANDLE process =
        win32::createProcess(parts.program, std::wstring(commandLine), startup, false, 0);
    if (process != nullptr) CloseHandle(process);
}

bool isProgram(std::wstring_view name) {
    return filesystem::isFile(programFile(std::wstring(name)));
}

}  // namespace kestrel
