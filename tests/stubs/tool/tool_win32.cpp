// A stand-in for a user's tool: writes its command line, as the system has it, to the
// output and into the file PROGRAM.out beside it. With "--linger" it leaves a child
// behind that keeps its streams open until the file PROGRAM.go is there.
#include <windows.h>

#include <process.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

void write(std::FILE* file, const std::wstring& line) {
    const std::u8string bytes = std::filesystem::path(line).u8string();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

}  // namespace

int main() {
    const std::wstring line = ::GetCommandLineW();
    std::wstring own(32768, L'\0');
    own.resize(::GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size())));
    if (line.ends_with(L"--wait")) {
        for (int i = 0; i < 2400 && !std::filesystem::exists(own + L".go"); ++i) ::Sleep(50);
        return 0;
    }
    if (line.ends_with(L"--linger")) {
        ::_wspawnl(_P_NOWAIT, own.c_str(), L"tool", L"--wait", nullptr);
    }
    write(stdout, line + L"\n");
    const std::wstring part = own + L".part";
    write(::_wfopen(part.c_str(), L"wb"), line + L"\n");
    return ::MoveFileW(part.c_str(), (own + L".out").c_str()) != 0 ? 0 : 1;
}
