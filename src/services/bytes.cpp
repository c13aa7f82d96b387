#include "services/bytes.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "services/errors.h"

namespace kestrel {

namespace {

constexpr std::uint8_t kFirstOdd = 0x80;  // from here to 9F byte and character differ
constexpr std::size_t kOddCount = 32;

constexpr wchar_t kOddCharacters[kOddCount] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::array<wchar_t, 256> wideOfByte() {
    std::array<wchar_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const std::size_t odd = byte - kFirstOdd;
        table[byte] = odd < kOddCount ? kOddCharacters[odd] : static_cast<wchar_t>(byte);
    }
    return table;
}

bool isOdd(std::uint8_t byte) noexcept {
    return static_cast<std::uint8_t>(byte - kFirstOdd) < kOddCount;
}

const std::uint8_t* bytesOf(std::string_view bytes) noexcept {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

// The compiler turns this loop into vector code: no branch, no early end.
bool anyOdd(const std::uint8_t* bytes, std::size_t count) noexcept {
    std::uint8_t found = 0;
    for (std::size_t i = 0; i < count; ++i) found |= static_cast<std::uint8_t>(isOdd(bytes[i]));
    return found != 0;
}

// Corrects the characters of odd bytes in text that took each byte as it is.
void correctOdd(wchar_t* text, const std::uint8_t* bytes, std::size_t count) noexcept {
    constexpr std::size_t kBlock = 4096;
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t length = std::min(kBlock, count - start);
        if (!anyOdd(bytes + start, length)) continue;
        for (std::size_t i = start; i < start + length; ++i) text[i] = kWideOfByte[bytes[i]];
    }
}

std::uint32_t codeOf(wchar_t c) noexcept {
    return static_cast<std::uint32_t>(c) & (sizeof(wchar_t) == 2 ? 0xFFFFU : 0xFFFFFFFFU);
}

// True for a character that is its own byte.
bool isOwnByte(wchar_t c) noexcept {
    const std::uint32_t code = codeOf(c);
    return code < 0x80 || (code >= 0xA0 && code <= 0xFF);
}

bool anyForeign(const wchar_t* text, std::size_t count) noexcept {
    unsigned found = 0;
    for (std::size_t i = 0; i < count; ++i) found |= static_cast<unsigned>(!isOwnByte(text[i]));
    return found != 0;
}

// The byte of a character that is not its own, or -1.
int byteOfForeign(wchar_t c) noexcept {
    const auto* end = std::end(kOddCharacters);
    const auto* at = std::find(std::begin(kOddCharacters), end, c);
    return at == end ? -1 : static_cast<int>(kFirstOdd + (at - std::begin(kOddCharacters)));
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

// The 1-based line of the character at `index`; CR LF, CR and LF each end one.
std::size_t lineOf(std::wstring_view text, std::size_t index) noexcept {
    std::size_t line = 1;
    for (std::size_t i = 0; i < index; ++i) {
        if (text[i] == L'\n' || (text[i] == L'\r' && text[i + 1] != L'\n')) ++line;
    }
    return line;
}

[[noreturn]] void refuse(std::wstring_view text, std::size_t index) {
    const std::size_t line = lineOf(text, index);
    const std::size_t start = index;
    const std::uint32_t code = takeCharacter(text, index);
    char number[16];
    std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned>(code));
    std::wstring name(number, number + std::char_traits<char>::length(number));
    const bool shown = code >= 0xA0 && !isLead(code) && !isTrail(code) && code < 0x110000;
    if (shown) name = L"'" + std::wstring(text.substr(start, index - start)) + L"' (" + name + L")";
    throw RunTimeError(kInvalidCall, L"The character " + name + L" in line " +
                                         std::to_wstring(line) +
                                         L" cannot be stored in 8-bit text");
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

constinit const std::array<wchar_t, 256> kWideOfByte = wideOfByte();

std::wstring widen(std::string_view bytes) {
    const std::uint8_t* first = bytesOf(bytes);
    // Built from the range of bytes: no zeros are written first, and the copy is
    // vector code.
    std::wstring text(first, first + bytes.size());
    correctOdd(text.data(), first, bytes.size());
    return text;
}

void appendWide(std::wstring& text, std::string_view bytes) {
    const std::size_t before = text.size();
    text.resize(before + bytes.size());
    const std::uint8_t* first = bytesOf(bytes);
    std::copy(first, first + bytes.size(), text.data() + before);
    correctOdd(text.data() + before, first, bytes.size());
}

std::string narrow(std::wstring_view text) {
    std::string bytes(text.begin(), text.end());  // the low byte of each character
    if (!anyForeign(text.data(), text.size())) return bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isOwnByte(text[i])) continue;
        const int byte = byteOfForeign(text[i]);
        if (byte < 0) refuse(text, i);
        bytes[i] = static_cast<char>(byte);
    }
    return bytes;
}

bool isNarrow(std::wstring_view text) noexcept {
    return std::all_of(text.begin(), text.end(),
                       [](wchar_t c) { return isOwnByte(c) || byteOfForeign(c) >= 0; });
}

std::string fileBytes(std::wstring_view text) {
    if (isNarrow(text)) {
        std::string bytes = narrow(text);
        if (!bytes.starts_with(kUtf8Mark)) return bytes;
    }
    return std::string(kUtf8Mark).append(toUtf8(text));
}

std::wstring fileText(std::string_view bytes) {
    if (!bytes.starts_with(kUtf8Mark)) return widen(bytes);
    return fromUtf8(bytes.substr(kUtf8Mark.size()));
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
