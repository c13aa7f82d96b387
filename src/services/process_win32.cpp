#include <windows.h>

#include <string>

#include "services/errors.h"
#include "services/filesystem.h"
#include "services/process.h"

namespace kestrel {

void startProgram(std::wstring_view commandLine, std::wstring_view configured) {
    const CommandParts parts = splitCommandLine(commandLine, configured, filesystem::isFile);
    std::wstring line(commandLine);  // the call may write into it
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION process{};
    // Named beside the line, so that the unquoted line cannot run a file planted
    // at a shorter part of the path. A bare name is looked for by the system.
    const bool named = filesystem::isFile(parts.program);
    if (!CreateProcessW(named ? parts.program.c_str() : nullptr, line.data(), nullptr, nullptr,
                        FALSE, 0, nullptr, nullptr, &startup, &process)) {
        throwSystemError(static_cast<int>(GetLastError()), L"Cannot start", parts.program);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

bool isProgram(std::wstring_view name) {
    const std::wstring text(name);
    return SearchPathW(nullptr, text.c_str(), L".exe", 0, nullptr, nullptr) != 0;
}

}  // namespace kestrel
