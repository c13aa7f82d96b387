#include "gas/lexer.h"

#include <algorithm>

#include "base/text.h"

namespace kestrel {
namespace {

constexpr std::string_view kLineEnds = "\r\n";

// Finds the tokens of one line.
class LineLexer {
  public:
    LineLexer(std::string_view line, char* tokens) : line_(line), tokens_(tokens) {}

    void run() {
        while (at_ < line_.size()) step();
    }

  private:
    void step() {
        const char c = line_[at_];
        if (kBlanks.find(c) != kBlanks.npos) return take(GasToken::plain, at_ + 1);
        if (line_.substr(at_).starts_with("//")) return take(GasToken::comment, line_.size());
        if (c == '{' || c == '}') return endStatement(GasToken::brace);
        if (c == ';') return endStatement(GasToken::plain);
        if (inValue_) return take(GasToken::value, valueEnd());
        if (c == '=') {
            inValue_ = true;
            return take(GasToken::plain, at_ + 1);
        }
        if (c == '[') return take(GasToken::header, behind(']'));
        take(GasToken::name, end(line_.find_first_of("={};[", at_ + 1)));
    }

    void endStatement(GasToken token) {
        inValue_ = false;
        take(token, at_ + 1);
    }

    std::size_t end(std::size_t found) const { return std::min(found, line_.size()); }

    // Behind the next `c`.
    std::size_t behind(char c) const {
        const std::size_t found = line_.find(c, at_ + 1);
        return found == line_.npos ? line_.size() : found + 1;
    }

    std::size_t valueEnd() const {
        return line_[at_] == '"' ? behind('"') : end(line_.find_first_of(";{}\" \t", at_ + 1));
    }

    void take(GasToken token, std::size_t end) {
        std::fill(tokens_ + at_, tokens_ + end, static_cast<char>(token));
        at_ = end;
    }

    std::string_view line_;
    char* tokens_;
    std::size_t at_ = 0;
    bool inValue_ = false;
};

// Whether a brace of `token` counts: those in comments and values do not.
bool isBrace(char token) noexcept {
    return token == static_cast<char>(GasToken::brace) ||
           token == static_cast<char>(GasToken::header);
}

}  // namespace

std::string gasTokens(std::string_view lines) {
    std::string tokens(lines.size(), static_cast<char>(GasToken::plain));
    for (std::size_t start = 0; start < lines.size();) {
        const std::size_t end = std::min(lines.find_first_of(kLineEnds, start), lines.size());
        LineLexer(lines.substr(start, end - start), tokens.data() + start).run();
        start = end + 1;
    }
    return tokens;
}

bool looksLikeGas(std::string_view text) noexcept {
    while (true) {
        const std::size_t start = text.find_first_not_of(" \t\r\n");
        if (start == text.npos) return false;
        text.remove_prefix(start);
        if (!text.starts_with("//")) break;
        text.remove_prefix(std::min(text.find_first_of(kLineEnds), text.size()));
    }
    const std::string_view line = text.substr(0, text.find_first_of(kLineEnds));
    return line.front() == '[' && line.find(']') != line.npos;
}

std::optional<std::size_t> matchingBrace(std::string_view lines, std::size_t at) {
    constexpr std::string_view kBraces = "{[}]";
    const std::size_t kind = at < lines.size() ? kBraces.find(lines[at]) : kBraces.npos;
    if (kind == kBraces.npos) return std::nullopt;
    const std::string tokens = gasTokens(lines);
    if (!isBrace(tokens[at])) return std::nullopt;
    const char same = kBraces[kind];
    const char other = kBraces[(kind + 2) % kBraces.size()];
    const bool forward = kind < 2;
    std::size_t open = 0;
    // Going back ends below 0, which is no place in the text either.
    for (std::size_t i = at; i < lines.size(); i += forward ? 1 : static_cast<std::size_t>(-1)) {
        if (!isBrace(tokens[i])) continue;
        if (lines[i] == same) ++open;
        if (lines[i] == other && --open == 0) return i;
    }
    return std::nullopt;
}

}  // namespace kestrel
