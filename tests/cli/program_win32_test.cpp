// The executable itself, run by the system's command processor.
#include <gtest/gtest.h>
#include <windows.h>

#include <io.h>

#include "support/tempfolder.h"

namespace kestrel::test {
namespace {

class WindowsProgram : public testing::Test {
  protected:
    WindowsProgram() { fs::current_path(folder.native()); }

    static constexpr const char* kDump = " dump a.gas 2>err";

    const TempFolder folder;
    const std::string program = fs::absolute(KESTREL_CLI).make_preferred().string();
};

TEST_F(WindowsProgram, AReaderThatGoesEndsItQuietly) {
    std::string big = "[info]\n";
    for (int i = 0; i < 100000; ++i) big += "a = 1;\n";
    folder.put(L"a.gas", big);
    std::FILE* out = ::_popen((program + kDump).c_str(), "rb");
    ASSERT_NE(out, nullptr);
    std::string text(10, '\0');
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), out), text.size());
    EXPECT_EQ(text, "{\"Name\":\"I");
    EXPECT_EQ(::_pclose(out), 0);
    EXPECT_EQ(folder.bytes(L"err"), "");
}

TEST_F(WindowsProgram, AConsoleShowsEveryLetterAndKeepsItsCodePage) {
    folder.put(L"a.gas", "[info]\n{\na = \"\xE9\x80\";\n}\n");
    ::FreeConsole();
    ASSERT_TRUE(::AllocConsole());
    const UINT page = ::GetConsoleOutputCP();
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE screen = ::CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE,
                                                      FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                      &inherited, CONSOLE_TEXTMODE_BUFFER, nullptr);
    ASSERT_NE(screen, INVALID_HANDLE_VALUE);
    const int before = ::_dup(1);
    ::_dup2(::_open_osfhandle(reinterpret_cast<std::intptr_t>(screen), 0), 1);
    const int code = std::system((program + kDump).c_str());
    ::_dup2(before, 1);
    EXPECT_EQ(code, 0);
    wchar_t shown[200] = {};
    DWORD count = 0;
    EXPECT_TRUE(::ReadConsoleOutputCharacterW(screen, shown, 200, {0, 0}, &count));
    EXPECT_NE(std::wstring(shown, count).find(L"\u00e9\u20ac"), std::wstring::npos);
    EXPECT_EQ(::GetConsoleOutputCP(), page);
}

}  // namespace
}  // namespace kestrel::test
