#include <random>

#include "base/commandfile.h"
#include "base/text.h"
#include "services/fixture.h"
#include "services/pagetext.h"
#include "system/codepage.h"
#include "system/letters.h"
#include "system/plainpath.h"

namespace kestrel::test {
namespace {

TEST(Text, SplitFindsEverySeparator) {
    const std::pair<const wchar_t*, std::vector<std::wstring_view>> cases[] = {
        {L"", {}}, {L"--", {L"", L""}}, {L"a----b-", {L"a", L"", L"b-"}}, {L"---", {L"", L"-"}}};
    for (const auto& [text, pieces] : cases) EXPECT_EQ(split(text, L"--"), pieces);
}

TEST(Text, CaseOfLetters) {
    const std::wstring_view upper =
        L"AZ\u00C0\u00DE\u0160\u0152\u017D\u0178\u0141\u0424\u042F\u0401\u0391\u03A9\u0540";
    const std::wstring_view lower =
        L"az\u00E0\u00FE\u0161\u0153\u017E\u00FF\u0142\u0444\u044F\u0451\u03B1\u03C9\u0570";
    EXPECT_EQ(lowerCase(upper), lower);
    EXPECT_EQ(lowerCase(lower), lower);
    for (std::size_t i = 0; i < upper.size(); ++i) {
        EXPECT_EQ(otherCase(upper[i]), lower[i]);
        EXPECT_EQ(otherCase(lower[i]), upper[i]);
    }
    // The two cases of the last ones differ in their length.
    const std::wstring_view others = L"@[`{\u00D7\u00F7\u00DF\u20AC\u00B5\u0130\u0131\u023A\u212A";
    EXPECT_EQ(lowerCase(others), others);
    for (const wchar_t c : others) EXPECT_EQ(otherCase(c), c);
    EXPECT_EQ(compareWithoutCase(L"Stra\u00C9", L"sTRA\u00E9"), 0);
    EXPECT_LT(compareWithoutCase(L"a", L"B"), 0);
    EXPECT_LT(compareWithoutCase(L"ab", L"ABC"), 0);
    EXPECT_GT(compareWithoutCase(L"b", L"ABC"), 0);
    EXPECT_GT(compareWithoutCase(L"a", L""), 0);
}

TEST(Text, WhatCannotBeDrawn) {
    std::vector<int> ends;  // where runs of such characters, and of others, end
    for (wchar_t c = 0; c < 0xD7FF; ++c) {
        if (isDrawable(c) != isDrawable(c + 1)) ends.push_back(c);
    }
    EXPECT_EQ(ends, (std::vector<int>{0x1F, 0x7E, 0x9F, 0x61B, 0x61C, 0x200D, 0x200F, 0x2029,
                                      0x202E, 0x2065, 0x2069}));
    EXPECT_TRUE(isDrawable(L'a') && isDrawable(0xE000));
    EXPECT_EQ(isDrawable(0xD800) || isDrawable(0xDFFF), sizeof(wchar_t) == 2);
}

TEST(Bytes, CodePagesKeepEveryByteAtEveryOffset) {
    const std::tuple<unsigned, const char*, std::wstring> cases[] = {
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
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    const ProgramScope program;
    for (const auto& [number, some, text] : cases) {
        EXPECT_EQ(useCodePage(std::to_wstring(number)), L"");
        const CodePage& page = *gProgram().codePage;
        EXPECT_EQ(gProgram().sourcePage, &page);
        EXPECT_EQ(page.number(), number);
        EXPECT_EQ(page.wide(some), text) << number;
        for (const std::size_t offset : {0U, 1U, 7U, 4000U, 4096U}) {
            const std::string bytes = std::string(offset, 'x') + all + std::string(70, 'y');
            std::wstring wide = L"before ";
            page.appendWide(wide, bytes);
            EXPECT_EQ(page.bytes(wide), "before " + bytes) << number;
            EXPECT_TRUE(page.has(wide)) << number;
        }
    }
    EXPECT_EQ(useCodePage(L"1252 "),
              L"There is no code page \"1252 \"; there are 874, 1250, 1251, "
              L"1252, 1253, 1254, 1255, 1256, 1257, 1258");
    EXPECT_EQ(gProgram().codePage->number(), 874U);
}

TEST(Bytes, ARefusalNamesTheFirstCharacterWithoutByteAndItsLine) {
    const std::pair<std::wstring, const char*> cases[] = {
        {L"\u0416", "'\u0416' (U+0416) in line 1"},
        {L"a\r\nb\r\n\u0416\u0417", "'\u0416' (U+0416) in line 3"},
        {L"a\nb\rc\u2500", "'\u2500' (U+2500) in line 3"},
        {L"a\x80", "U+0080 in line 1"},
        {L"a\r\n\U0001F600", "'\U0001F600' (U+1F600) in line 2"},
        {{0xD800}, "U+D800 in line 1"},
        {{0xDFFF}, "U+DFFF in line 1"},
    };
    for (const auto& [text, what] : cases) {
        EXPECT_FALSE(CodePage::find(1252)->has(text));
        EXPECT_EQ(errorOf([&text = text] { narrow(text); }),
                  std::string("5: The character ") + what + " cannot be stored in code page 1252");
    }
}

TEST(Bytes, AnythingSurvivesUtf8) {
    // Between the blanks: four letters, a tail, a lead, two that are longer than needed, an
    // escape that is none, one beyond the last character, and a byte of none.
    EXPECT_EQ(fromUtf8("\xC3\xA9 \xE2\x82\xAC \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF \x80 \xC3 \xC0\xAF "
                       "\xE0\x80\xAF \xED\xB2\x80 \xF4\x90\x80\x80 \xFF"),
              L"\u00E9 \u20AC \U00010000 \U0010FFFF \xDC80 \xDCC3 \xDCC0\xDCAF "
              L"\xDCE0\xDC80\xDCAF \xDCED\xDCB2\xDC80 \xDCF4\xDC90\xDC80\xDC80 \xDCFF");
    std::minstd_rand random;
    const std::string_view some =
        "a\x7F\x80\x8F\x90\x9F\xA0\xB2\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEF\xF0\xF1\xF4\xF5\xFF";
    std::string bytes;
    while (bytes.size() < 1'000'000) bytes += some[random() % some.size()];
    for (int next = 0; next < 256; ++next) bytes += {'\xED', static_cast<char>(next), '\x80', '-'};
    EXPECT_EQ(toUtf8(fromUtf8(bytes)), bytes);
    std::wstring text;
    for (wchar_t c = 0; c < 0xFFFF; ++c) {
        if (c < 0xDC80 || c >= 0xDD00) text.append({c, L'-'});
    }
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
}

using File = std::optional<std::wstring>;

TEST(CommandFile, OfALineAndOfArguments) {
    const std::pair<std::wstring_view, File> lines[] = {
        {L"", {}},
        {L"   ", {}},
        {L"  C:\\mod files\\a.gas  ", L"C:\\mod files\\a.gas"},
        {L"\"C:\\mod files\\a.gas\" other words", L"C:\\mod files\\a.gas"},
        {L"first \" a.gas \" \"b.gas\"", L"a.gas"},
        {L"\"a.gas", L"a.gas"},
        {L"\"\" a.gas", {}},
        {L" \t\u00A0a\r\n ", L"\t\u00A0a\r\n"},
    };
    for (const auto& [line, file] : lines) EXPECT_EQ(gvarCommandFile(line), file);
    const std::pair<Texts, File> arguments[] = {
        {{}, {}},
        {{L"  "}, {}},
        {{L" two  blanks.gas"}, L" two  blanks.gas"},
        {{L"my", L"file.gas"}, L"my file.gas"},
        {{L"words", L"my file.gas", L"other file.gas"}, L"my file.gas"},
        {{L"a", L"", L"b"}, {}},
    };
    for (const auto& [words, file] : arguments) EXPECT_EQ(gvarCommandFile(words), file);
}

TEST(CommandFile, PathsAsFileManagersCopyThem) {
    const TempFolder folder;
    folder.put(L"'file'", "");
    filesystem::makeFolder(folder.path(L"'folder'"));
    fs::current_path(folder.native());
    const bool windows = kSeparator == L'\\';
    const std::wstring root = windows ? L"C:\\" : L"/";
    const std::wstring address = windows ? L"C:/" : L"";
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"  a b.gas ", L"a b.gas"},
        {L"\"a b.gas\"", L"a b.gas"},
        {L" 'a' ", L"a"},
        {L"'a.gas\"", L"'a.gas\""},
        {L"''", L"''"},
        {L" 'file' ", L"'file'"},
        {L"'folder'", L"'folder'"},
        {L"\"'file'\"", L"'file'"},
        {L"file:///" + address + L"a%20b%C5%82%zz%4.ga%73", root + L"a b\u0142%zz%4.gas"},
        {L"FILE://localhost/" + address + L"a.gas\r\nfile:///b.gas", root + L"a.gas"},
        {L"'file:/" + address + L"%FF.gas'", root + std::wstring{0xDCFF} + L".gas"},
        {L"file://server/maps/a.gas", windows ? L"\\\\server\\maps\\a.gas" : L"/maps/a.gas"},
        {L"file:a.gas", L"file:a.gas"},
    };
    for (const auto& [text, path] : cases) EXPECT_EQ(plainPath(text), path) << toUtf8(text);
}

}  // namespace
}  // namespace kestrel::test
