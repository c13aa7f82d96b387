#include "services/bytes.h"

#include <gtest/gtest.h>

#include "services/errors.h"

namespace kestrel {
namespace {

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    return bytes;
}

TEST(Bytes, AllBytesRoundTripAtEveryOffset) {
    for (std::size_t offset : {0U, 1U, 7U, 4000U, 4096U}) {
        const std::string bytes = std::string(offset, 'x') + allBytes() + std::string(70, 'y');
        const std::wstring text = widen(bytes);
        ASSERT_EQ(text.size(), bytes.size());
        EXPECT_EQ(narrow(text), bytes);
        EXPECT_TRUE(isNarrow(text));
        std::wstring appended = L"before ";
        appendWide(appended, bytes);
        EXPECT_EQ(appended, L"before " + text);
    }
}

TEST(Bytes, CodePage) {
    const struct {
        unsigned char byte;
        wchar_t character;
    } cases[] = {{0x00, 0},    {0x41, L'A'},  {0x80, 0x20AC}, {0x81, 0x81},   {0x8A, 0x160},
                 {0x8D, 0x8D}, {0x8F, 0x8F},  {0x90, 0x90},   {0x93, 0x201C}, {0x99, 0x2122},
                 {0x9D, 0x9D}, {0x9F, 0x178}, {0xA0, 0xA0},   {0xE9, 0xE9},   {0xFF, 0xFF}};
    for (const auto& c : cases) {
        const char byte = static_cast<char>(c.byte);
        EXPECT_EQ(widen({&byte, 1}), std::wstring(1, c.character)) << int{c.byte};
    }
}

TEST(Bytes, NarrowNamesTheFirstCharacterThatHasNoByteAndItsLine) {
    const std::wstring far = fromUtf8("\xF0\x9F\x98\x80");  // beyond 16 bits
    const struct {
        std::wstring text;
        std::wstring description;
    } cases[] = {
        {L"\u0416", L"The character '\u0416' (U+0416) in line 1 cannot be stored in 8-bit text"},
        {L"a\r\nb\r\n\u0416\u0417",
         L"The character '\u0416' (U+0416) in line 3 cannot be stored in 8-bit text"},
        {L"a\nb\rc\u2500",
         L"The character '\u2500' (U+2500) in line 3 cannot be stored in 8-bit text"},
        {L"a\x80", L"The character U+0080 in line 1 cannot be stored in 8-bit text"},
        {L"a\r\n" + far,
         L"The character '" + far + L"' (U+1F600) in line 2 cannot be stored in 8-bit text"},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(isNarrow(c.text));
        try {
            narrow(c.text);
            ADD_FAILURE() << "not refused: " << toUtf8(c.text);
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.number(), kInvalidCall);
            EXPECT_EQ(error.description(), c.description);
        }
    }
}

TEST(Bytes, Utf8) {
    const struct {
        const char* bytes;
        std::wstring text;
    } cases[] = {
        {"caf\xC3\xA9", L"caf\u00E9"},
        {"\xE2\x82\xAC", L"\u20AC"},
        {"\x80", {0xDC80}},              // a tail without its lead
        {"\xC3", {0xDCC3}},              // cut short
        {"\xC0\xAF", {0xDCC0, 0xDCAF}},  // longer than needed
        {"\xE0\x80\xAF", {0xDCE0, 0xDC80, 0xDCAF}},
        {"\xED\xB2\x80", {0xDCED, 0xDCB2, 0xDC80}},              // an escape that is no escape
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}},  // beyond the last character
        {"a\xFFz", {L'a', 0xDCFF, L'z'}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fromUtf8(c.bytes), c.text) << c.bytes;
        EXPECT_EQ(toUtf8(c.text), c.bytes);
    }
}

TEST(Bytes, AnythingSurvivesUtf8) {
    const std::string all = allBytes();
    std::string bytes = "\xF0\x9F\x98\x80";
    for (char first : all) {
        for (char second : all) bytes.append({first, second});
    }
    for (char lead : {'\xE0', '\xEF', '\xF0', '\xF4'}) {
        for (char second : all) bytes.append({lead, second, '\x80', '\xBF'});
    }
    for (char second : all) bytes.append({'\xED', second, '\x80', '-'});
    EXPECT_EQ(toUtf8(fromUtf8(bytes)), bytes);
    std::wstring text;
    for (wchar_t c = 0; c < 0xFFFF; ++c) {
        if (c < 0xDC80 || c >= 0xDD00) text.append({c, L'-'});
    }
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
}

}  // namespace
}  // namespace kestrel
