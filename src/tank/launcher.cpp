#include "tank/launcher.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/bytes.h"
#include "base/error.h"
#include "base/text.h"
#include "system/filesystem.h"

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

bool isBeyondAscii(char c) noexcept {
    return (c & 0x80) != 0;
}

// True where half a pair is written as if it were a character.
bool isHalfPair(std::string_view bytes, std::size_t at) noexcept {
    return bytes[at] == '\xED' && at + 1 < bytes.size() && (bytes[at + 1] & 0xE0) == 0xA0;
}

bool isUtf8(std::string_view bytes, std::wstring_view text) noexcept {
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        if (isHalfPair(bytes, at)) return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        // The second half of a pair is no byte that is none.
        if (isHighSurrogate(text[i])) {
            ++i;
        } else if (text[i] >= 0xDC80 && text[i] <= 0xDCFF) {
            return false;
        }
    }
    return true;
}

std::wstring decoded(std::string_view bytes) {
    std::wstring text = fromUtf8(bytes);
    return isUtf8(bytes, text) ? text : consoleText(bytes);
}

class ProcessLauncher final : public Launcher {
  public:
    Result start(std::wstring_view commandLine, std::wstring_view configured,
                 const std::vector<std::wstring>& words) override {
        if (child_ && !child_->exitCode()) return kStillRunning;
        child_.reset();
        decoder_ = {};
        try {
            child_ =
                startChild(splitCommandLine(commandLine, configured).program, commandLine, words);
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

}  // namespace

std::unique_ptr<Launcher> makeLauncher() {
    return std::make_unique<ProcessLauncher>();
}

std::wstring OutputDecoder::decode(std::string_view bytes) {
    constexpr std::size_t kMostWaiting = 4096;
    const std::string joined = std::exchange(waiting_, {}).append(bytes);
    std::string_view left = joined;
    std::wstring text;
    for (;;) {
        const auto plain =
            static_cast<std::size_t>(std::ranges::find_if(left, isBeyondAscii) - left.begin());
        text.append(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(plain));
        left.remove_prefix(plain);
        std::size_t end = left.find_first_of("\r\n");
        if (end == left.npos && left.size() < kMostWaiting) break;
        if (end > kMostWaiting) {
            const std::string_view most = left.substr(0, kMostWaiting);
            end = most.size() - cutCharacter(most);
        }
        text += decoded(left.substr(0, end));
        left.remove_prefix(end);
    }
    waiting_ = left;
    return text;
}

std::wstring OutputDecoder::rest() {
    return decoded(std::exchange(waiting_, {}));
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

}  // namespace kestrel
