#include "services/bytes.h"

#include <gtest/gtest.h>

#include "services/errors.h"
#include "services/program.h"

namespace kestrel {
namespace {

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    return bytes;
}

TEST(Bytes, AllBytesRoundTripAtEveryOffset) {
    for (const unsigned number : CodePage::kNumbers) {
        const CodePage& page = *CodePage::find(number);
        for (const std::size_t offset : {0U, 1U, 7U, 4000U, 4096U}) {
            const std::string bytes = std::string(offset, 'x') + allBytes() + std::string(70, 'y');
            const std::wstring text = page.wide(bytes);
            ASSERT_EQ(text.size(), bytes.size()) << number;
            EXPECT_EQ(page.bytes(text), bytes) << number;
            EXPECT_TRUE(page.has(text)) << number;
            std::wstring appended = L"before ";
            page.appendWide(appended, bytes);
            EXPECT_EQ(appended, L"before " + text);
        }
    }
}

TEST(Bytes, CodePage) {
    const struct {
        unsigned page;
        const char* bytes;
        std::wstring text;
    } cases[] = {
        {1252, "A\x80\x81\x8A\x8D\x8F\x90\x93\x99\x9D\x9F\xA0\xE9\xFF",
         L"A\u20AC\x81\u0160\x8D\x8F\x90\u201C\u2122\x9D\u0178\u00A0\u00E9\u00FF"},
        {1250, "\xA3\xF3\x9F\x81", L"\u0141\u00F3\u017A\x81"},
        {1251, "\xD4\xFF\xA8\x98", L"\u0424\u044F\u0401\x98"},
        {1253, "\xC1\xFE\xAA\xFF", L"\u0391\u03CE\u00AA\u00FF"},
        {1254, "\xDD\xFD\xF0", L"\u0130\u0131\u011F"},
        {1255, "\xE0\xFA\xC4\xD9", L"\u05D0\u05EA\u05B4\u00D9"},
        {1256, "\xC7\xED\xE1", L"\u0627\u064A\u0644"},
        {1257, "\xC0\xFE\xA1", L"\u0104\u017E\u00A1"},
        {1258, "\xD0\xFE\xCC\xE2", L"\u0110\u20AB\u0300\u00E2"},
        {874, "\xA1\xD8\xDB", L"\u0E01\u0E38\u00DB"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CodePage::find(c.page)->wide(c.bytes), c.text) << c.page;
        EXPECT_EQ(CodePage::find(c.page)->bytes(c.text), c.bytes) << c.page;
    }
    EXPECT_EQ(CodePage::find(932), nullptr);
}

TEST(Bytes, UnknownCodePagesAreRefused) {
    const ProgramScope program;
    EXPECT_EQ(useCodePage(L"1251"), L"");
    EXPECT_EQ(gProgram().codePage->number(), 1251U);
    for (const wchar_t* name : {L"", L"932", L"65001", L"1252 ", L"cp1252"}) {
        EXPECT_EQ(useCodePage(name), L"There is no code page \"" + std::wstring(name) +
                                         L"\"; there are 874, 1250, 1251, 1252, 1253, 1254, 1255, "
                                         L"1256, 1257, 1258");
    }
    EXPECT_EQ(gProgram().sourcePage->number(), 1251U);
}

TEST(Bytes, NarrowNamesTheFirstCharacterThatHasNoByteAndItsLine) {
    const std::wstring far = fromUtf8("\xF0\x9F\x98\x80");  // beyond 16 bits
    const struct {
        std::wstring text;
        std::wstring description;
    } cases[] = {
        {L"\u0416",
         L"The character '\u0416' (U+0416) in line 1 cannot be stored in code page 1252"},
        {L"a\r\nb\r\n\u0416\u0417",
         L"The character '\u0416' (U+0416) in line 3 cannot be stored in code page 1252"},
        {L"a\nb\rc\u2500",
         L"The character '\u2500' (U+2500) in line 3 cannot be stored in code page 1252"},
        {L"a\x80", L"The character U+0080 in line 1 cannot be stored in code page 1252"},
        {L"a\r\n" + far,
         L"The character '" + far + L"' (U+1F600) in line 2 cannot be stored in code page 1252"},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(CodePage::find(1252)->has(c.text));
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
