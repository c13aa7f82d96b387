#include "base/packed.h"

#include <algorithm>

#include "base/bytes.h"

namespace kestrel {

void PackedWriter::add(std::string_view bytes) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, bytes.size()).ptr;
    *end = ':';
    bytes_.append(digits, end + 1).append(bytes);
}

void PackedWriter::add(std::wstring_view text) {
    add(std::string_view(toUtf8(text)));
}

std::string_view PackedReader::nextBytes() {
    const std::size_t colon = rest_.find(':');
    if (colon == rest_.npos) return fail();
    const auto size = number<std::size_t>(rest_.substr(0, colon));
    if (!whole_) return {};
    rest_.remove_prefix(colon + 1);
    if (size > rest_.size()) return fail();
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return bytes;
}

std::wstring PackedReader::next() {
    return fromUtf8(nextBytes());
}

std::string_view PackedReader::fail() {
    whole_ = false;
    return rest_ = {};
}

std::optional<std::string> PackedStream::next() {
    constexpr std::size_t kMostDigits = 20;
    const std::size_t colon = bytes_.find(':');
    wrong_ = wrong_ || std::min(colon, bytes_.size()) > kMostDigits;
    if (colon == bytes_.npos || wrong_) return std::nullopt;
    std::size_t size = 0;
    const char* const end = bytes_.data() + colon;
    const auto [stop, error] = std::from_chars(bytes_.data(), end, size);
    wrong_ = wrong_ || error != std::errc() || stop != end || size > most_;
    if (wrong_ || bytes_.size() - colon - 1 < size) return std::nullopt;
    std::string text = bytes_.substr(colon + 1, size);
    bytes_.erase(0, colon + 1 + size);
    return text;
}

}  // namespace kestrel
