#include "tank/launcher.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/filesystem.h"
#include "services/text.h"

namespace kestrel {
namespace {

// As much as a window can take in without the user noticing.
constexpr std::size_t kPiece = std::size_t{256} * 1024;

// The number of bytes at the end of `bytes` that may be the start of a UTF-8
// character.
std::size_t cutCharacter(std::string_view bytes) noexcept {
    constexpr std::size_t kMost = 3;
    for (std::size_t length = 1; length <= std::min(kMost, bytes.size()); ++length) {
        const auto byte = static_cast<std::uint8_t>(bytes[bytes.size() - length]);
        if ((byte & 0xC0) == 0x80) continue;
        const std::size_t whole = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 ? 2 : 1;
        return whole > length ? length : 0;
    }
    return 0;
}

bool isHighSurrogate(wchar_t c) noexcept {
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isEscapedByte(wchar_t c) noexcept {
    return c >= 0xDC80 && c <= 0xDCFF;
}

// Appends UTF-8, and what is none as 8-bit text.
void appendDecoded(std::wstring& text, std::string_view bytes) {
    const std::size_t before = text.size();
    text += fromUtf8(bytes);
    for (std::size_t i = before; i < text.size(); ++i) {
        // The second half of a pair is no escape.
        if (isHighSurrogate(text[i])) {
            ++i;
        } else if (isEscapedByte(text[i])) {
            text[i] = kWideOfByte[static_cast<std::size_t>(text[i]) & 0xFF];
        }
    }
}

// True where half a pair is written as if it were a character. Taken as one, it would
// join what stands behind it where wide characters have 16 bits.
bool isHalfPair(std::string_view bytes, std::size_t at) noexcept {
    return bytes[at] == '\xED' && at + 1 < bytes.size() && (bytes[at + 1] & 0xE0) == 0xA0;
}

std::wstring decodeWhole(std::string_view bytes) {
    const bool ascii =
        std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    if (ascii) return {bytes.begin(), bytes.end()};
    std::wstring text;
    std::size_t start = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        if (!isHalfPair(bytes, at)) continue;
        appendDecoded(text, bytes.substr(start, at - start));
        text += kWideOfByte[0xED];
        start = at + 1;
    }
    appendDecoded(text, bytes.substr(start));
    return text;
}

class ProcessLauncher final : public Launcher {
  public:
    Result start(std::wstring_view commandLine, std::wstring_view configured) override {
        if (child_ && !child_->exitCode()) return kStillRunning;
        child_.reset();
        decoder_ = {};
        try {
            child_ = startChild(splitCommandLine(commandLine, configured), commandLine);
        } catch (const RunTimeError& error) {
            errorText_ = error.description();
            return kRefused;
        }
        return kStarted;
    }

    std::wstring errorText() const override { return errorText_; }

    ProgramOutput poll() override {
        ProgramOutput output{L"", true, exitCode_};
        if (!child_) return output;
        // Asked before reading, so that nothing it wrote before its end is missed.
        const std::optional<int> exitCode = child_->exitCode();
        const std::string bytes = child_->read(kPiece);
        output.ended = bytes.empty() && exitCode.has_value();
        output.text = output.ended ? decoder_.rest() : decoder_.decode(bytes);
        if (output.ended) {
            output.exitCode = exitCode_ = *exitCode;
            child_.reset();
        }
        return output;
    }

  private:
    std::unique_ptr<Child> child_;
    OutputDecoder decoder_;
    std::wstring errorText_;
    int exitCode_ = 0;
};

// Where the value at the start of `text` ends: at the next option.
std::size_t valueEnd(std::wstring_view text) noexcept {
    return std::min(text.find(L" -"), text.size());
}

// Takes a quoted text, or a word with quoted parts, off `rest`.
std::wstring takeWord(std::wstring_view& rest) {
    std::wstring word;
    bool inQuotes = false;
    std::size_t end = 0;
    for (; end < rest.size() && (inQuotes || rest[end] != L' '); ++end) {
        if (rest[end] == L'"') {
            inQuotes = !inQuotes;
        } else {
            word += rest[end];
        }
    }
    rest.remove_prefix(end);
    return word;
}

}  // namespace

std::unique_ptr<Launcher> makeLauncher() {
    return std::make_unique<ProcessLauncher>();
}

std::wstring OutputDecoder::decode(std::string_view bytes) {
    std::string joined;
    if (!waiting_.empty()) {
        joined = std::exchange(waiting_, {}).append(bytes);
        bytes = joined;
    }
    const std::size_t cut = cutCharacter(bytes);
    std::wstring text = decodeWhole(bytes.substr(0, bytes.size() - cut));
    waiting_ = bytes.substr(bytes.size() - cut);
    return text;
}

std::wstring OutputDecoder::rest() {
    return decodeWhole(std::exchange(waiting_, {}));
}

std::wstring LogLines::add(std::wstring_view text) {
    std::wstring lines;
    lines.reserve(text.size());
    for (const wchar_t c : text) {
        const bool ends = c == L'\r' || c == L'\n';
        const bool inPair = !lines.empty() && isHighSurrogate(lines.back());
        if (length_ >= kLongest && !ends && !inPair) {
            lines += kLineEnd;
            length_ = 0;
        }
        length_ = ends ? 0 : length_ + 1;
        lines += c;
    }
    return lines;
}

std::vector<std::wstring> optionWords(std::wstring_view arguments) {
    std::vector<std::wstring> words;
    for (std::wstring_view rest = trim(arguments); !rest.empty(); rest = trim(rest)) {
        if (rest.front() == L'-' || rest.front() == L'"') {
            words.push_back(takeWord(rest));
        } else {
            const std::size_t end = valueEnd(rest);
            words.emplace_back(trim(rest.substr(0, end)));
            rest.remove_prefix(end);
        }
    }
    return words;
}

}  // namespace kestrel
