#include "gas/fields.h"

#include <array>
#include <cstdint>

#include "gas/sourcetext.h"
#include "gas/words.h"

namespace kestrel::loading {
namespace {

// What cleaning removes everywhere, and what it removes from the ends alone.
enum Junk : std::uint8_t { kRemoved = 1, kBlank = 2 };

constexpr auto kJunkOfByte = [] {
    std::array<std::uint8_t, 256> junk{};
    for (const char c : {'"', '[', ']', '{', '}'}) junk[static_cast<unsigned char>(c)] = kRemoved;
    junk[' '] = junk['\t'] = kBlank;
    return junk;
}();

unsigned junkOf(char c) {
    return kJunkOfByte[static_cast<unsigned char>(c)];
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimJunk(std::string_view text) {
    const char* start = text.data();
    const char* end = start + text.size();
    // Mostly a blank and perhaps a quote come first, perhaps a quote comes last:
    // two steps and one without a branch.
    if (text.size() > 2) {
        start += junkOf(*start) != 0 ? 1 : 0;
        start += junkOf(*start) != 0 ? 1 : 0;
        end -= junkOf(end[-1]) != 0 ? 1 : 0;
    }
    while (start < end && junkOf(*start) != 0) ++start;
    while (start < end && junkOf(end[-1]) != 0) --end;
    return {start, end};
}

constexpr std::uint64_t eightTimes(unsigned char c) {
    return c * std::uint64_t{0x0101010101010101U};
}

// Not zero when some byte of `word` is zero.
constexpr std::uint64_t anyZero(std::uint64_t word) {
    return (word - eightTimes(0x01)) & ~word & eightTimes(0x80);
}

// Not zero when one of the eight bytes of `word` is a quote, a bracket or a tab.
constexpr std::uint64_t anySpecial(std::uint64_t word) {
    const std::uint64_t folded = word | eightTimes(0x20);  // "[" and "{" become one
    return anyZero(word ^ eightTimes('"')) | anyZero(word ^ eightTimes('\t')) |
           anyZero(folded ^ eightTimes('{')) | anyZero(folded ^ eightTimes('}'));
}

struct Look {
    bool clean;  // cleaning leaves the text as it is, blanks at its ends aside
    bool ascii;
};

Look lookAt(std::string_view text) {
    std::uint64_t special = 0;
    std::uint64_t all = 0;
    const auto take = [&](std::uint64_t word) {
        special |= anySpecial(word);
        all |= word;
    };
    if (text.size() < kWordSize) {
        take(wordOfShort(text));
    } else {
        take(wordAt(text.data() + text.size() - kWordSize));
        for (; text.size() > kWordSize; text.remove_prefix(kWordSize)) take(wordAt(text.data()));
    }
    return {special == 0, (all & eightTimes(0x80)) == 0};
}

}  // namespace

std::string_view trimStart(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

std::string_view trimBlanks(std::string_view text) {
    text = trimStart(text);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view cleaned(std::string_view text, std::string& buffer) {
    text = trimJunk(text);
    if (lookAt(text).clean) return text;
    buffer.clear();
    for (const char c : text) {
        if (c == '\t') {
            buffer.append(4, ' ');
        } else if (junkOf(c) != kRemoved) {
            buffer += c;
        }
    }
    return buffer;
}

void FieldMaker::append(std::wstring& text, std::string_view bytes) const {
    if (bytes.find('\t') != bytes.npos) {
        page_.appendWide(text, normalised(bytes));
    } else {
        page_.appendWide(text, bytes);
    }
}

std::wstring FieldMaker::value(std::string_view bytes) const {
    bytes = trimJunk(bytes);
    const Look look = lookAt(bytes);
    if (look.clean && look.ascii) return {bytes.begin(), bytes.end()};
    if (look.clean) return page_.wide(bytes);
    std::string buffer;
    return page_.wide(cleaned(bytes, buffer));
}

SharedText FieldMaker::name(std::string_view bytes) {
    return names_.share(trimJunk(bytes), [this](std::string_view key) { return value(key); });
}

}  // namespace kestrel::loading
