#include "tank/launcher.h"

#include <windows.h>

#include <algorithm>

#include "base/error.h"
#include "system/codepage_win32.h"
#include "system/process_win32.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

using win32::Handle;

[[noreturn]] void raise(std::wstring_view path) {
    throwSystemError(static_cast<int>(GetLastError()), L"Cannot start", path);
}

// What is there, for a started program to inherit.
Handle inherited(const wchar_t* name, DWORD access) {
    SECURITY_ATTRIBUTES security{sizeof security, nullptr, TRUE};
    Handle handle(CreateFileW(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &security,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle.isOpen()) raise(name);
    return handle;
}

STARTUPINFOW streams(HANDLE input, HANDLE output) {
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = output;
    startup.hStdError = output;
    return startup;
}

void inherit(HANDLE handle, bool does) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, does ? HANDLE_FLAG_INHERIT : 0);
}

class WindowsChild final : public Child {
  public:
    WindowsChild(const std::wstring& program, std::wstring_view commandLine)
        // What it starts on purpose goes on when it has ended, unless it is stopped.
        : job_(CreateJobObjectW(nullptr, nullptr)) {
        SECURITY_ATTRIBUTES security{sizeof security, nullptr, TRUE};
        HANDLE ends[2]{};
        if (!CreatePipe(&ends[0], &ends[1], &security, static_cast<DWORD>(kPipeSize))) {
            raise(program);
        }
        output_ = Handle(ends[0]);
        inherit(ends[0], false);
        const Handle output(ends[1]);
        const Handle input = inherited(L"NUL", GENERIC_READ);
        process_ = Handle(win32::createProcess(program, std::wstring(commandLine),
                                               streams(input.get(), output.get()), true,
                                               CREATE_NO_WINDOW, job_.get()));
    }

    // Who writes into a pipe that nobody reads is told of an error, and may end.
    ~WindowsChild() override {
        DWORD waiting = 0;
        const bool hasWriters =
            PeekNamedPipe(output_.get(), nullptr, 0, nullptr, &waiting, nullptr) != 0;
        if (hasWriters) drain();
    }
    WindowsChild(const WindowsChild&) = delete;
    WindowsChild& operator=(const WindowsChild&) = delete;

    std::optional<ProgramEnd> end() override {
        if (WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT) return std::nullopt;
        DWORD code = 0;
        if (!GetExitCodeProcess(process_.get(), &code)) return ProgramEnd{};
        return ProgramEnd{ProgramEnd::kCode, static_cast<int>(code)};
    }

    std::string read(std::size_t most) override {
        DWORD count = 0;
        if (!PeekNamedPipe(output_.get(), nullptr, 0, nullptr, &count, nullptr)) return {};
        std::string bytes(std::min<std::size_t>(most, count), '\0');
        if (bytes.empty() || !ReadFile(output_.get(), bytes.data(),
                                       static_cast<DWORD>(bytes.size()), &count, nullptr)) {
            return {};
        }
        bytes.resize(count);
        return bytes;
    }

    void stop() override {
        TerminateJobObject(job_.get(), 1);
        TerminateProcess(process_.get(), 1);
    }

  private:
    // A program of the system's reads the rest, and finds nothing in it.
    void drain() const noexcept {
        try {
            const Handle output = inherited(L"NUL", GENERIC_WRITE);
            inherit(output_.get(), true);
            const Handle process(win32::createProcess(L"findstr.exe", L"findstr.exe /v .",
                                                      streams(output_.get(), output.get()), true,
                                                      CREATE_NO_WINDOW));
        } catch (const RunTimeError&) {
            // Nobody is left to tell.
        }
    }

    Handle job_;
    Handle output_;
    Handle process_;
};

}  // namespace

std::wstring consoleText(std::string_view bytes) {
    return textInPage(::GetOEMCP(), bytes);
}

bool startsByLine() noexcept {
    return true;
}

std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view commandLine,
                                  const std::vector<std::wstring>& /*words*/) {
    return std::make_unique<WindowsChild>(program, commandLine);
}

}  // namespace kestrel
