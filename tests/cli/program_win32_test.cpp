#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

TEST(WindowsProgram, AReaderThatGoesEndsItQuietly) {
    std::string big = "[info]\n";
    for (int i = 0; i < 100000; ++i) big += "a = 1;\n";
    const test::TempFolder folder;
    std::wstring line = L"kestrel-cli dump " + folder.put(L"big.gas", big);
    SECURITY_ATTRIBUTES security{sizeof security, nullptr, TRUE};
    HANDLE reader = nullptr;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    ASSERT_TRUE(::CreatePipe(&reader, &startup.hStdOutput, &security, 0));
    ::SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    startup.hStdError = ::CreateFileW(folder.path(L"err").c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                      &security, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    PROCESS_INFORMATION process{};
    const std::filesystem::path program = std::filesystem::absolute(KESTREL_CLI);
    ASSERT_TRUE(::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                 nullptr, &startup, &process));
    ::CloseHandle(startup.hStdOutput);
    ::CloseHandle(startup.hStdError);
    char start[10] = {};
    DWORD count = 0;
    EXPECT_TRUE(::ReadFile(reader, start, sizeof start, &count, nullptr));
    EXPECT_EQ(std::string(start, count), "{\"Name\":\"I");
    ::CloseHandle(reader);
    DWORD code = 0;
    EXPECT_EQ(::WaitForSingleObject(process.hProcess, 60'000), WAIT_OBJECT_0);
    ::GetExitCodeProcess(process.hProcess, &code);
    EXPECT_EQ(code, 0U);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    EXPECT_EQ(folder.bytes(L"err"), "");
}

}  // namespace
}  // namespace kestrel::cli
