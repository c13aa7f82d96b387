// The program itself plays the transcripts; the first lines of transcript.txt tell how.
#include <iomanip>
#include <optional>
#include <sstream>

#include "support/stories.h"
#include "support/system.h"

namespace kestrel::test {
namespace {

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

class Transcript : public testing::Test {
  protected:
    void play(const std::string& file) {
        playStories(sources_ / "tests/cli" / file, [this](const std::string& line) {
            if (line.starts_with("$ ")) return run(program_, wordsOf(line));
            if (line.starts_with("% "))
                return run("/bin/sh", {L"-c", path_ + fromUtf8(line.substr(2))});
            if (line.starts_with("== ")) {
                beginStory();
            } else if (line.starts_with("< ")) {
                given_ = line.substr(2);
            } else if (!line.empty()) {
                std::ofstream(folder_->native(fromUtf8(given_)), std::ios::app | std::ios::binary)
                    << line << '\n';
            }
            return std::string("\n");
        });
    }

  private:
    void beginStory() {
        folder_.emplace();
        fs::copy(sources_ / "samples", folder_->native(L"samples"), fs::copy_options::recursive);
        fs::current_path(folder_->native());
    }

    std::string run(const fs::path& program, const std::vector<std::wstring>& words) const {
        const int code =
            runProgram(program, words, streams_.native(L"out"), streams_.native(L"err"));
        std::string told = (code == 0 ? "" : " => " + std::to_string(code)) + "\n" +
                           pictured(streams_.bytes(L"out"));
        for (const char c : pictured(streams_.bytes(L"err"))) {
            if (told.ends_with('\n')) told += "! ";
            told += c;
        }
        return told;
    }

    const fs::path sources_ = fs::absolute(KESTREL_SOURCES);
    const fs::path program_ = fs::absolute(KESTREL_CLI);
    const std::wstring path_ = L"PATH='" + program_.parent_path().wstring() + L"':$PATH; ";
    const TempFolder streams_;
    std::optional<TempFolder> folder_;
    std::string given_;
};

TEST_F(Transcript, IsRepeated) {
    play("transcript.txt");
    play(kSeparator == L'/' ? "transcript_posix.txt" : "transcript_win32.txt");
}

}  // namespace
}  // namespace kestrel::test
