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

TEST_F(PosixProgram, ASourceIsNeverWrittenOver) {
    const std::string source = "[t:template,n:a]\n{\nx = 1;\n}\n";
    const std::string refused = "kestrel-cli: a.gas: Cannot write 'a.tab': ";
    const struct {
        const char* before;
        std::string err;
    } cases[] = {
        {"ln -s a.gas a.tab", refused + "it is a .gas file\n"},
        {"mkdir sub && cp a.gas sub/c.gas && ln -s sub/c.gas a.tab",
         refused + "it is a .gas file\n"},
        {"mv b.gas b.tab && cp b.tab a.tab && ln -s a.tab b.gas", refused + "it is a .gas file\n"},
        {"echo old >o && ln -s o a.tab && ln -s o b.tab", "*more than one source gives it\n"},
        {"cp a.gas a.GAS", "*more than one source gives it\n"},
        {"echo old >a.tab && chmod 444 a.tab", refused + "it is write-protected\n"},
        {"ln -sf /proc/self/mem a.gas", "kestrel-cli: a.gas: Input/output error\n"},
        {"echo no >a.gas", "kestrel-cli: a.gas: it holds no .gas data\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shell("rm -rf *"), 0);
        for (const wchar_t* name : {L"a.gas", L"b.gas", L"d.gas"}) folder.put(name, source);
        EXPECT_EQ(shell(std::string(c.before) +
                        "; cat *.gas o sub/* >../$$.sum 2>/dev/null; "
                        "\"$cli\" convert . >out 2>err; code=$?; cat *.gas o sub/* 2>/dev/null | "
                        "cmp - ../$$.sum || code=9; rm ../$$.sum; exit $code"),
                  1)
            << c.before;
        const std::string err = folder.bytes(L"err");
        const bool fits = c.err.starts_with('*') ? err.ends_with(c.err.substr(1)) : err == c.err;
        EXPECT_TRUE(fits) << c.before << ": " << err;
        EXPECT_EQ(folder.bytes(L"d.tab").substr(0, 10), "Filename: ") << "the others go on";
    }
}

// Nor does one that was killed, once the next one has begun.
TEST_F(PosixProgram, AnInterruptedConversionLeavesNoTemporaryFiles) {
    std::string big;
    for (int i = 0; i < 2000; ++i) big += "[t:template,n:a]\n{\nx = 1;\n}\n";
    for (int i = 0; i < 150; ++i) folder.put(std::to_wstring(i) + L".gas", big);
    for (const char* name : {"KILL", "INT", "TERM", "HUP"}) {
        // Where the tests run in the background an interrupt would be ignored.
        const std::string run = "timeout --preserve-status -s " + std::string(name) +
                                " 0.1 env --default-signal \"$cli\" convert . >out 2>err";
        EXPECT_GT(shell(run), 128) << name;
        if (std::string_view(name) == "KILL") continue;
        EXPECT_EQ(folder.bytes(L"err"), "kestrel-cli: File conversion cancelled.\n") << name;
        EXPECT_EQ(shell("! ls -A | grep '[.]tmp$'"), 0) << name;
    }
}

}  // namespace
}  // namespace kestrel::cli
