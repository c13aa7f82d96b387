// The executable itself.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "cli/run.h"
#include "services/bytes.h"
#include "services/program.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

namespace fs = std::filesystem;

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

std::wstring wide(const fs::path& path) {
    return fromUtf8(path.string());
}

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() { fs::current_path(folder.native()); }
    ~ProgramTest() override { fs::current_path(before_); }

    // Runs the program in the folder, its streams into the files "out" and "err"; its
    // exit code.
    int cli(const std::vector<std::wstring>& words) const {
        return test::runProgram(program_, words, folder.native(L"out"), folder.native(L"err"));
    }
    std::string out() const { return folder.bytes(L"out"); }
    std::string err() const { return folder.bytes(L"err"); }

    const fs::path samples = fs::absolute(KESTREL_SAMPLES);
    const fs::path golden = fs::absolute(KESTREL_GOLDEN);
    const test::TempFolder folder;

  private:
    const fs::path before_ = fs::current_path();
    const fs::path program_ = fs::absolute(KESTREL_CLI);
};

TEST_F(ProgramTest, ReadsAndWritesUtf8AndBytes) {
    const std::string item = "[t:template,n:a]\n{\ndoc = \"\xE9t\xE9\";\n}\n";
    for (const wchar_t* name : {L"caf\u00E9 1.gas", L"\u6a39\u6728.gas", L"\U0001F426.gas"}) {
        folder.put(name, item);
        EXPECT_EQ(cli({L"show", name, L"\u00E9t\u00E9", L"--listed"}), 0);
        EXPECT_EQ(out(), "[t:template,n:a]\r\n{\r\ndoc = \"\xC3\xA9t\xC3\xA9\";\r\n}\r\n");
        EXPECT_EQ(err(), "");
    }
}

TEST_F(ProgramTest, MessagesGoToTheErrorStream) {
    EXPECT_EQ(cli({L"list", L"none.gas"}), 1);
    EXPECT_EQ(out(), "");
    EXPECT_EQ(err(), "kestrel-cli: none.gas: there is no such file\n");
    EXPECT_EQ(cli({}), 2);
}

// The same bytes leave the program that the commands give in it, whatever the system
// makes of line ends and letters; the tests of the commands know those.
TEST_F(ProgramTest, AllSamplesLeaveItUnchanged) {
    for (const auto& entry : fs::directory_iterator(samples)) {
        if (entry.path().extension() != ".gas") continue;
        for (const wchar_t* command : {L"list", L"check", L"dump"}) {
            const std::vector<std::wstring> words{command, wide(entry.path())};
            const ProgramScope program;
            std::ostringstream texts;
            std::ostringstream messages;
            EXPECT_EQ(cli(words), run(words, texts, messages, false));
            EXPECT_EQ(out(), texts.str());
            EXPECT_EQ(err(), messages.str());
        }
    }
    EXPECT_EQ(cli({L"show", wide(samples / "single.gas"), L"weathervane"}), 0);
    const std::string text = bytesOf(golden / "single.tab");
    EXPECT_EQ(out(), text.substr(text.find("DS Template for: ")));
}

}  // namespace
}  // namespace kestrel::cli
