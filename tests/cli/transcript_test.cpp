// The program itself plays the transcripts; the first lines of transcript.txt tell how.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

namespace fs = std::filesystem;

std::string pictured(std::string_view bytes) {
    std::wstring text = fromUtf8(bytes);
    for (wchar_t& c : text) {
        if (c < L' ' && c != L'\n') c = static_cast<wchar_t>(c + L'\u2400');
    }
    return toUtf8(text);
}

// Those behind "$ kestrel-cli".
std::vector<std::wstring> wordsOf(const std::string& command) {
    std::vector<std::wstring> words;
    std::istringstream rest(command);
    for (std::string word; rest >> std::quoted(word);) words.push_back(fromUtf8(word));
    return {words.begin() + 2, words.end()};
}

// Windows writes other separators.
std::string plain(std::string text) {
    std::ranges::replace(text, static_cast<char>(filesystem::separator()), '/');
    return text;
}

class Transcript : public testing::Test {
  protected:
    ~Transcript() override { fs::current_path(before_); }

    void play(const std::string& file) {
        std::ifstream lines(sources_ / "tests/cli" / file);
        ASSERT_TRUE(lines.is_open());
        std::ofstream given;
        for (std::string line; std::getline(lines, line);) {
            if (line.empty() || line.starts_with("# ")) continue;
            const std::string mark = line.substr(0, line.find(' '));
            const bool isMark = mark == "==" || mark == "<" || mark == "$" || mark == "%";
            if (mark == "==") beginStory();
            written_ += line + "\n";
            if (isMark) given.close();
            if (mark == "<") {
                given.open(folder_->native(fromUtf8(line.substr(2))), std::ios::binary);
            }
            if (mark == "$" || mark == "%") {
                run(line.substr(0, line.find(" => ")));
            } else if (isMark || given.is_open()) {
                played_ += line + "\n";
                if (!isMark) given << line << '\n';
            }
        }
        beginStory();
    }

  private:
    // The one before is at its end.
    void beginStory() {
        EXPECT_EQ(plain(std::exchange(played_, {})), plain(std::exchange(written_, {})));
        fs::current_path(before_);
        folder_.emplace();
        fs::copy(sources_ / "samples", folder_->native(L"samples"), fs::copy_options::recursive);
        fs::current_path(folder_->native());
    }

    void run(const std::string& command) {
        fs::path program = program_;
        std::vector<std::wstring> words;
        if (command.starts_with('$')) {
            words = wordsOf(command);
        } else {
            program = "/bin/sh";
            words = {L"-c", L"PATH='" + program_.parent_path().wstring() + L"':$PATH; " +
                                fromUtf8(command.substr(2))};
        }
        const int code =
            test::runProgram(program, words, streams_.native(L"out"), streams_.native(L"err"));
        played_ += command + (code == 0 ? "" : " => " + std::to_string(code)) + "\n" +
                   pictured(streams_.bytes(L"out"));
        for (const char c : pictured(streams_.bytes(L"err"))) {
            if (played_.ends_with('\n')) played_ += "! ";
            played_ += c;
        }
    }

    const fs::path before_ = fs::current_path();
    const fs::path sources_ = fs::absolute(KESTREL_SOURCES);
    const fs::path program_ = fs::absolute(KESTREL_CLI);
    const test::TempFolder streams_;
    std::optional<test::TempFolder> folder_;
    std::string written_;
    std::string played_;
};

TEST_F(Transcript, IsRepeated) {
    play("transcript.txt");
    play("transcript_" KESTREL_SYSTEM ".txt");
}

}  // namespace
}  // namespace kestrel::cli
