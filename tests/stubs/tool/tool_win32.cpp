// A stand-in for a user's tool: writes its command line, as the system has it, to the
// output and into the file PROGRAM.out beside it. With "--linger" it leaves a child
// behind that keeps its streams open for some seconds.
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>

namespace {

std::string utf8(const std::wstring& text) {
    std::string bytes(text.size() * 4, '\0');
    const int length =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                              static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

std::wstring ownFile() {
    std::wstring name(32768, L'\0');
    name.resize(::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

void startChild() {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    std::wstring line = L"tool --sleep";
    ::CreateProcessW(ownFile().c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                     &startup, &process);
}

}  // namespace

int main() {
    const std::wstring line = ::GetCommandLineW();
    if (line.ends_with(L"--sleep")) {
        ::Sleep(5000);
        return 0;
    }
    if (line.ends_with(L"--linger")) startChild();
    const std::string bytes = utf8(line) + "\n";
    ::_setmode(::_fileno(stdout), _O_BINARY);
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    const std::wstring name = ownFile() + L".out";
    std::FILE* file = ::_wfopen((name + L".part").c_str(), L"wb");
    if (file == nullptr) return 1;
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    return ::MoveFileW((name + L".part").c_str(), name.c_str()) != 0 ? 0 : 1;
}
