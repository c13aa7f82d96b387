#include "tank/launcher.h"

#include <windows.h>

#include <algorithm>

#include "system/codepage_win32.h"
#include "system/filesystem.h"
#include "system/process_win32.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kStart = L"Cannot start";
constexpr DWORD kAnyShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void raise(DWORD code, std::wstring_view path) {
    throwSystemError(static_cast<int>(code), kStart, path);
}

using win32::Handle;

// A file that is there; `inherited` for one that the started program gets.
Handle open(const std::wstring& name, DWORD access, DWORD flags, bool inherited) {
    SECURITY_ATTRIBUTES security{};
    security.nLength = sizeof security;
    security.bInheritHandle = inherited ? TRUE : FALSE;
    Handle handle(
        CreateFileW(name.c_str(), access, kAnyShare, &security, OPEN_EXISTING, flags, nullptr));
    if (!handle.isOpen()) raise(GetLastError(), name);
    return handle;
}

class WindowsChild final : public Child {
  public:
    WindowsChild(const std::wstring& program, std::wstring_view commandLine) {
        const std::wstring name = filesystem::makeTemporary(L"kst");
        // The file goes with the last one who has it open.
        output_ = open(name, GENERIC_READ | DELETE,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, false);
        const Handle input = open(L"NUL", GENERIC_READ, FILE_ATTRIBUTE_NORMAL, true);
        const Handle output =
            open(name, FILE_APPEND_DATA | SYNCHRONIZE, FILE_ATTRIBUTE_NORMAL, true);
        STARTUPINFOW startup{};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input.get();
        startup.hStdOutput = output.get();
        startup.hStdError = output.get();
        process_ = Handle(win32::createProcess(program, std::wstring(commandLine), startup, true,
                                               CREATE_NO_WINDOW));
    }

    std::optional<int> exitCode() override {
        if (WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT) return std::nullopt;
        DWORD code = 0;
        return GetExitCodeProcess(process_.get(), &code) ? static_cast<int>(code) : -1;
    }

    std::string read(std::size_t most) override {
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(output_.get(), &size) || size.QuadPart <= read_) return {};
        const auto waiting = static_cast<std::size_t>(size.QuadPart - read_);
        std::string bytes(std::min(most, waiting), '\0');
        DWORD count = 0;
        if (!ReadFile(output_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                      nullptr)) {
            raise(GetLastError(), L"");
        }
        bytes.resize(count);
        read_ += count;
        return bytes;
    }

  private:
    Handle output_;
    Handle process_;
    LONGLONG read_ = 0;
};

}  // namespace

std::wstring consoleText(std::string_view bytes) {
    return textInPage(::GetOEMCP(), bytes);
}

std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view commandLine,
                                  const std::vector<std::wstring>& /*words*/) {
    return std::make_unique<WindowsChild>(program, commandLine);
}

}  // namespace kestrel
