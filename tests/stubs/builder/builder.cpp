// A stand-in for the archive builder: takes its command line, and plays the part
// that the archive's title names.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

std::string valueOf(const Words& words, std::string_view option) {
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == option) return words[i + 1];
    }
    return {};
}

void say(std::string_view text, std::FILE* stream = stdout) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

// Makes the file OUT.done: all is written.
int done(const Words& words) {
    std::ofstream(valueOf(words, "-out") + ".done") << "done";
    return 0;
}

int tellWords(const Words& words) {
    for (const std::string& word : words) say("<" + word + ">\n");
    return 7;
}

// As many MB as the build says, else 50, in lines of 64 bytes.
int flood(const Words& words) {
    const std::string build = valueOf(words, "-build");
    const std::size_t lines = (build.empty() ? 50U : std::stoul(build)) * 1'000'000 / 64;
    const std::string line = std::string(62, 'x') + "\r\n";
    for (std::size_t i = 0; i < lines; ++i) std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
    return done(words);
}

// To both streams, and what the input has; then characters of UTF-8 and bytes of an 8-bit
// code page, NULs and all line ends, one byte at a time.
int dribble(const Words& words) {
    for (std::FILE* stream : {stdout, stderr, stdout})
        say(stream == stdout ? "out\n" : "err\n", stream);
    if (std::getchar() == EOF) say("input at its end\n");
    constexpr char kBytes[] =
        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80|\xE9t\xE9|\x80\xFF\xC3(|a\0b|\r\n\n\rend\xE2\x82";
    for (const char byte : std::string_view(kBytes, sizeof kBytes - 1)) {
        say({&byte, 1});
        std::this_thread::sleep_for(2ms);
    }
    return done(words);
}

// Waits for the file OUT.go and writes more.
int wait(const Words& words) {
    const std::string signal = valueOf(words, "-out") + ".go";
    say("waiting\n");
    for (int i = 0; i < 6000 && !std::filesystem::exists(signal); ++i) {
        std::this_thread::sleep_for(10ms);
    }
    for (int i = 0; i < 2000; ++i) say("late output, more than any pipe can hold of it\n");
    return done(words);
}

}  // namespace

int main(int count, char** arguments) {
    const Words words(arguments + 1, arguments + count);
    const std::string part = valueOf(words, "-title");
    if (part == "words") return tellWords(words);
    if (part == "flood") return flood(words);
    if (part == "dribble") return dribble(words);
    return part == "wait" ? wait(words) : 0;
}
