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

}  // namespace
}  // namespace kestrel::cli
