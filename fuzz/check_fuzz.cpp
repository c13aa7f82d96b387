// The check of a file: every loss is told at the line where it stands.
#include <vector>

#include "fuzz/fuzz.h"
#include "gas/check.h"
#include "gas/load.h"

namespace kestrel::fuzz {
namespace {

// The lines of the file; CR LF, LF and CR each end one. Tabs are four spaces.
std::vector<std::string> linesOf(std::string_view bytes) {
    std::vector<std::string> lines(1);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
        if (c == '\r' || c == '\n') {
            lines.emplace_back();
        } else if (c == '\t') {
            lines.back() += "    ";
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    const std::string_view bytes = input.rest();
    const std::vector<Loss> losses = findLosses(bytes);
    require(host.told == 0);
    if (losses.empty()) return;
    const std::vector<std::string> lines = linesOf(bytes);
    std::size_t last = 1;
    for (const Loss& loss : losses) {
        require(!loss.why.empty() && !loss.text.empty());
        require(loss.line >= last && loss.line <= lines.size());
        last = loss.line;
        const std::string text = pageOf(bytes, *gProgram().sourcePage).bytes(loss.text);
        require(lines[loss.line - 1].find(text.substr(0, text.find_first_of("\r\n"))) !=
                std::string::npos);
    }
}

}  // namespace kestrel::fuzz
