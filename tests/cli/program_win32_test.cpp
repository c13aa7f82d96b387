#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

class WindowsProgram : public testing::Test {
  protected:
    // Starts the program with the words and that output; its errors are those of the file "err".
    void start(const std::wstring& words, HANDLE output) {
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = file(L"err");
        PROCESS_INFORMATION process{};
        const std::filesystem::path program = std::filesystem::absolute(KESTREL_CLI);
        std::wstring line = L"kestrel-cli " + words;
        ASSERT_TRUE(::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                                     nullptr, folder.path().c_str(), &startup, &process));
        ::CloseHandle(startup.hStdError);
        ::CloseHandle(process.hThread);
        process_ = process.hProcess;
    }
    void expectGoodEnd() const {
        DWORD code = 0;
        EXPECT_EQ(::WaitForSingleObject(process_, 60'000), WAIT_OBJECT_0);
        ::GetExitCodeProcess(process_, &code);
        EXPECT_EQ(code, 0U);
        ::CloseHandle(process_);
        EXPECT_EQ(folder.bytes(L"err"), "");
    }
    HANDLE file(const wchar_t* name) {
        return ::CreateFileW(folder.path(name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &security_,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    }

    const test::TempFolder folder;
    SECURITY_ATTRIBUTES security_{sizeof security_, nullptr, TRUE};

  private:
    HANDLE process_ = nullptr;
};

TEST_F(WindowsProgram, AReaderThatGoesEndsItQuietly) {
    std::string big = "[info]\n";
    for (int i = 0; i < 100000; ++i) big += "a = 1;\n";
    folder.put(L"big.gas", big);
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_TRUE(::CreatePipe(&reader, &writer, &security_, 0));
    ::SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    start(L"dump big.gas", writer);
    ::CloseHandle(writer);
    char text[10] = {};
    DWORD count = 0;
    EXPECT_TRUE(::ReadFile(reader, text, sizeof text, &count, nullptr));
    EXPECT_EQ(std::string(text, count), "{\"Name\":\"I");
    ::CloseHandle(reader);
    expectGoodEnd();
}

TEST_F(WindowsProgram, NamesWithAsterisksAreThoseOfTheFiles) {
    for (const wchar_t* name : {L"b.gas", L"a.gas", L"c.txt"})
        folder.put(name, "[info]\n{\na = 1;\n}\n");
    const HANDLE out = file(L"out");
    start(L"check *.ga?", out);
    ::CloseHandle(out);
    expectGoodEnd();
    EXPECT_EQ(folder.bytes(L"out"), "");
}

TEST_F(WindowsProgram, AConsoleShowsEveryLetterAndKeepsItsCodePage) {
    ::FreeConsole();
    ASSERT_TRUE(::AllocConsole());
    const UINT page = ::GetConsoleOutputCP();
    const HANDLE screen = ::CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE,
                                                      FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                      &security_, CONSOLE_TEXTMODE_BUFFER, nullptr);
    ASSERT_NE(screen, INVALID_HANDLE_VALUE);
    folder.put(L"a.gas", "[info]\n{\na = \"\xE9\x80\";\n}\n");
    start(L"dump a.gas", screen);
    expectGoodEnd();
    wchar_t shown[200] = {};
    DWORD count = 0;
    EXPECT_TRUE(::ReadConsoleOutputCharacterW(screen, shown, 200, {0, 0}, &count));
    EXPECT_NE(std::wstring(shown, count).find(L"\u00e9\u20ac"), std::wstring::npos);
    EXPECT_EQ(::GetConsoleOutputCP(), page);
}

}  // namespace
}  // namespace kestrel::cli
