#include "base/bytes.h"

#include <cstdint>
#include <cstdio>

namespace kestrel {

namespace {

std::uint32_t codeOf(wchar_t c) noexcept {
    return static_cast<std::uint32_t>(c) & (sizeof(wchar_t) == 2 ? 0xFFFFU : 0xFFFFFFFFU);
}

bool isLead(std::uint32_t code) noexcept {
    return code >= 0xD800 && code < 0xDC00;
}
bool isTrail(std::uint32_t code) noexcept {
    return code >= 0xDC00 && code < 0xE000;
}

// Takes one character off `text` at `index`; a surrogate pair is one where wide
// characters have 16 bits.
std::uint32_t takeCharacter(std::wstring_view text, std::size_t& index) noexcept {
    const std::uint32_t first = codeOf(text[index++]);
    if (sizeof(wchar_t) != 2 || !isLead(first) || index == text.size()) return first;
    const std::uint32_t second = codeOf(text[index]);
    if (!isTrail(second)) return first;
    ++index;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void appendCharacter(std::wstring& text, std::uint32_t code) {
    if (sizeof(wchar_t) == 2 && code >= 0x10000) {
        text += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
        code = 0xDC00 + (code & 0x3FF);
    }
    text += static_cast<wchar_t>(code);
}

std::uint32_t at(std::string_view bytes, std::size_t index) noexcept {
    return index < bytes.size() ? static_cast<std::uint8_t>(bytes[index]) : 0U;
}

// The number of bytes of the UTF-8 sequence that `lead` begins; 0 for none.
std::size_t sequenceLength(std::uint32_t lead) noexcept {
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

bool isEscape(std::uint32_t code) noexcept {
    return code >= 0xDC80 && code <= 0xDCFF;
}

// Takes one character off UTF-8 `bytes`; a byte that begins none is escaped.
std::uint32_t takeUtf8(std::string_view bytes, std::size_t& index) noexcept {
    const std::uint32_t lead = at(bytes, index);
    const std::size_t length = sequenceLength(lead);
    const std::uint32_t escape = lead < 0x80 ? lead : 0xDC00 + lead;
    std::uint32_t code = length == 0 ? 0 : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint32_t next = at(bytes, index + i);
        if ((next & 0xC0) != 0x80) return ++index, escape;
        code = (code << 6) | (next & 0x3F);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    if (length == 0 || overlong || code > 0x10FFFF || isEscape(code)) return ++index, escape;
    index += length;
    return code;
}

void appendUtf8(std::string& bytes, std::uint32_t code) {
    const auto put = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
    const auto tail = [&](unsigned shift) { put(0x80 | ((code >> shift) & 0x3F)); };
    if (code > 0x10FFFF) code = 0xFFFD;
    if (code < 0x80 || isEscape(code)) return put(code & 0xFF);
    if (code < 0x800) return put(0xC0 | (code >> 6)), tail(0);
    if (code < 0x10000) return put(0xE0 | (code >> 12)), tail(6), tail(0);
    put(0xF0 | (code >> 18)), tail(12), tail(6), tail(0);
}

}  // namespace

// The compiler turns this into vector code: no branch, no early end.
bool isAscii(std::string_view bytes) noexcept {
    std::uint8_t all = 0;
    for (const char byte : bytes) all |= static_cast<std::uint8_t>(byte);
    return all < 0x80;
}

std::wstring characterName(std::wstring_view text) {
    std::size_t length = 0;
    const std::uint32_t code = takeCharacter(text, length);
    char number[16];
    std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned>(code));
    std::wstring name(number, number + std::char_traits<char>::length(number));
    const bool shown = code >= 0xA0 && !isLead(code) && !isTrail(code) && code < 0x110000;
    return shown ? L"'" + std::wstring(text.substr(0, length)) + L"' (" + name + L")" : name;
}

std::string toUtf8(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) appendUtf8(bytes, takeCharacter(text, i));
    return bytes;
}

std::wstring fromUtf8(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) appendCharacter(text, takeUtf8(bytes, i));
    return text;
}

}  // namespace kestrel
