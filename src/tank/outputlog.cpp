#include "tank/outputlog.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <utility>

#include "base/bytes.h"
#include "base/error.h"
#include "base/text.h"

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

// Windows's own codes of failures are known to people by their digits to the base 16.
std::wstring codeText(int code) {
    if (code >= 0) return std::to_wstring(code);
    std::array<wchar_t, 11> digits{};
    std::swprintf(digits.data(), digits.size(), L"0x%08X", static_cast<unsigned>(code));
    return digits.data();
}

}  // namespace

void OutputLog::add(std::string_view bytes) {
    if (broken_) return;
    const std::uint64_t room = most_ - file_.size();
    try {
        file_.append(
            bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(room, bytes.size()))));
    } catch (...) {
        broken_ = true;
        throw;
    }
    full_ = full_ || bytes.size() > room;
}

std::wstring OutputLog::stateText() const {
    std::wstring text = runText();
    if (broken_) text += L", the log is cut short";
    return text;
}

std::wstring OutputLog::runText() const {
    if (!end) return stopping ? L"stopping" : L"running";
    if (full_) return L"stopped, too much output";
    if (stopping) return L"stopped";
    switch (end->kind) {
        case ProgramEnd::kSignal:
            return L"ended by signal " + std::to_wstring(end->code);
        case ProgramEnd::kCode:
            return end->code == 0 ? L"finished" : L"failed with exit code " + codeText(end->code);
        default:
            return L"ended";
    }
}

LogReader::LogReader(std::shared_ptr<const OutputLog> log, std::uint64_t most)
    : log_(std::move(log)), most_(most) {}

LogReader::Piece LogReader::next() {
    Piece piece;
    const std::uint64_t size = log_->file().size();
    if (size - at_ > most_) {
        at_ = size - most_;
        decoder_ = {};
        lines_ = {};
        piece.anew = true;
    }
    std::string bytes = log_->file().read(at_, kPiece);
    at_ += bytes.size();
    // What the start of a text was cut out of is no line.
    if (piece.anew) bytes.erase(0, std::min(bytes.find('\n') + 1, bytes.size()));
    const bool atEnd = at_ == log_->file().size() && log_->end;
    piece.text = lines_.add(decoder_.decode(bytes) += atEnd ? decoder_.rest() : std::wstring());
    return piece;
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
