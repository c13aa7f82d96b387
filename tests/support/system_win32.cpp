#include "support/system.h"

#include <windows.h>

namespace kestrel::test {

namespace {

void setVariable(const wchar_t* name, const std::filesystem::path& value) {
    ::SetEnvironmentVariableW(name, value.empty() ? nullptr : value.c_str());
}

HANDLE newFile(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES security{sizeof security, nullptr, TRUE};
    return ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &security, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

void setSettingsFolder(const std::filesystem::path& folder) {
    for (const wchar_t* name : {L"APPDATA", L"LOCALAPPDATA"}) setVariable(name, folder);
}

void setTemporaryFolder(const std::filesystem::path& folder) {
    static const std::filesystem::path before = std::filesystem::temp_directory_path();
    setVariable(L"TMP", folder.empty() ? before : folder);
}

int runProgram(const std::filesystem::path& program, const std::vector<std::wstring>& words,
               const std::filesystem::path& out, const std::filesystem::path& err) {
    // No word of a test ends in a backslash or holds a quote.
    std::wstring line = L'"' + program.wstring() + L'"';
    for (const std::wstring& word : words) line.append(L" \"").append(word).append(L"\"");
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = newFile(out);
    startup.hStdError = newFile(err);
    PROCESS_INFORMATION process{};
    DWORD code = static_cast<DWORD>(-1);
    if (::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                         &startup, &process) != 0) {
        ::WaitForSingleObject(process.hProcess, INFINITE);
        ::GetExitCodeProcess(process.hProcess, &code);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    ::CloseHandle(startup.hStdOutput);
    ::CloseHandle(startup.hStdError);
    return static_cast<int>(code);
}

}  // namespace kestrel::test
