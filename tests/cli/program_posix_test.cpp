// The executable itself, run by the system's shell.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

class PosixProgram : public testing::Test {
  protected:
    // Runs `script` in the folder, where "$cli" is the program; its exit code.
    int shell(const std::string& script) const {
        const std::string command =
            "cd '" + folder.native().string() + "' && cli='" KESTREL_CLI "' && " + script;
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const test::TempFolder folder;
};

TEST_F(PosixProgram, FindsFilesWhoseNamesAreNoUtf8) {
    folder.put(L"a.gas", "[info]\n{\nodd\n}\n");
    EXPECT_EQ(shell("mv a.gas \"$(printf 'x\\377')\" && \"$cli\" check x* >out 2>err"), 1);
    EXPECT_EQ(folder.bytes(L"out").substr(0, 6), "x\xFF:3: ");
}

TEST_F(PosixProgram, AFullDiskFails) {
    EXPECT_EQ(shell("\"$cli\" --help >/dev/full 2>err"), 1);
    EXPECT_EQ(folder.bytes(L"err"),
              "kestrel-cli: the output could not be written whole; is the disk full?\n");
}

TEST_F(PosixProgram, AClosedOutputEndsItQuietly) {
    std::string big = "[info]\n";
    for (int i = 0; i < 100000; ++i) big += "a = 1;\n";
    folder.put(L"big.gas", big);
    EXPECT_EQ(shell("\"$cli\" list big.gas >&- 2>err"), 0);
    EXPECT_EQ(folder.bytes(L"err"), "");
    // The reader goes while the program still writes: the signal ends it, even where
    // its parent ignores that one.
    EXPECT_EQ(shell("trap '' PIPE; { \"$cli\" dump big.gas 2>err; echo $? >code; } | true"), 0);
    EXPECT_EQ(folder.bytes(L"code"), "141\n");
    EXPECT_EQ(folder.bytes(L"err"), "");
}

// What the program writes into a terminal, in place of the bytes that it writes into a pipe.
TEST_F(PosixProgram, NoFileCommandsATerminal) {
    folder.put(L"a.gas", "[info]\r\n{\r\nx\x1B[2J = \x9B;\r\n" + std::string(100001, '\xE9') +
                             "\xE9\x1B]0;\r\n}\r\n");
    for (const std::string command :
         {"show a.gas Info0", "show a.gas Info0 --listed", "dump a.gas", "list a.gas",
          "check a.gas", "show a.gas $(printf '\\342\\200\\256')"}) {
        const std::string run = "\"$cli\" " + command;
        shell(run + " >raw 2>&1");
        shell("run='" + run +
              "' && export cli run && script -qec 'eval $run' /dev/null >shown </dev/null");
        const std::string shown = folder.bytes(L"shown");
        EXPECT_EQ(shown.find_first_of("\x1B\x9B"), std::string::npos) << command;
        EXPECT_EQ(shown.find("\xE2\x80\xAE"), std::string::npos) << command;
        EXPECT_FALSE(shown.empty()) << command;
        if (!command.starts_with("show a.gas Info0")) continue;
        EXPECT_NE(folder.bytes(L"raw").find('\x1B'), std::string::npos) << command;
        EXPECT_NE(shown.find("x\\x1B"), std::string::npos) << command;
        EXPECT_EQ(shown.find("\\uDC"), std::string::npos) << "a character was cut";
    }
}

}  // namespace
}  // namespace kestrel::cli
