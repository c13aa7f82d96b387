// The loader looks at many bytes at a time and shares what is equal: what it
// gives must not depend on where in the file a text stands, on its length, or on
// what was loaded before it.
#include <gtest/gtest.h>

#include "dump.h"
#include "gas/load.h"
#include "services/program.h"
#include "services/text.h"

namespace kestrel {
namespace {

class LoadFields : public testing::Test {
  protected:
    const GasTemplate& load(std::wstring_view body) {
        loadGasText(std::wstring(L"[info]\r\n").append(body), templates_);
        return templates_[0];
    }

    ProgramScope program_;
    std::vector<GasTemplate> templates_;
};

TEST_F(LoadFields, MarksAreFoundWhereverTheyStand) {
    const std::wstring lines =
        L"\r\n// a\r\n[t:b,n:c] {\r\nd = 1; e = 2=3; f//g;\r\n}\r\nh]n:i\r\n\r\r\nj = 4 }";
    const std::wstring entries =
        L"type=b @c#1 | name=c @c#1 | d=1 @c#1 | e=2 @c#1 | hn=i @#1 | j=4 @#1";
    for (std::size_t shift = 0; shift < 140; ++shift) {
        const GasTemplate& record = load(std::wstring(shift, L'x') + lines);
        ASSERT_EQ(dump(record), entries) << shift;
        const int first = shift == 0 ? 1 : 2;
        ASSERT_EQ(record.Comments, L"Line " + std::to_wstring(first) + L":\t a\r\nLine " +
                                       std::to_wstring(first + 4) + L":\tfg;\r\n")
            << shift;
    }
}

TEST_F(LoadFields, EveryPlaceOfANameAndAValueIsCleaned) {
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const wchar_t junk : {L'"', L'{', L']', L'\t', L'\u00E9', L'\u20AC'}) {
                std::wstring text(length, L'y');
                text[place] = junk;
                std::wstring expected = text;
                if (junk < 0x80) expected.replace(place, 1, junk == L'\t' ? L"    " : L"");
                expected = trim(expected);
                const GasProperty& entry = load(text + L"=" + text).Properties[0];
                ASSERT_EQ(entry.Name, expected) << length << " " << place;
                ASSERT_EQ(entry.Value, expected) << length << " " << place;
            }
        }
    }
}

TEST_F(LoadFields, NamesThatShareTheirEndsStayApart) {
    std::wstring body;
    std::vector<std::wstring> names;
    for (wchar_t c = L'a'; c <= L'z'; ++c) {
        names.push_back(std::wstring(L"the_same_") + c + L"_and_the_same");
        names.push_back(std::wstring(3, c));
        names.push_back(std::wstring(1, c) + L"1" + std::wstring(1, c));
    }
    for (int round = 0; round < 2; ++round) {
        for (const std::wstring& name : names) body += name + L" = 1;\r\n";
    }
    const GasTemplate& record = load(body);
    ASSERT_EQ(record.Properties.size(), 2 * names.size());
    for (std::size_t i = 0; i < record.Properties.size(); ++i) {
        EXPECT_EQ(record.Properties[i].Name, names[i % names.size()]);
    }
}

TEST_F(LoadFields, BlanksOfAGroupStayWhenItsLastPartIsDropped) {
    EXPECT_EQ(dump(load(L"[a\t\\b]\r\n{\r\n}\r\nx = 1;")),
              L"[a    \\b] @a    \\b#1 | x=1 @a    #1");
}

TEST_F(LoadFields, HeadersWrittenInSeveralWaysAreOne) {
    const struct {
        const wchar_t* text;
        std::vector<std::wstring> texts;
    } cases[] = {
        {L"[a\tb]\r\n}\r\n[a    b]\r\n", {L"[a    b]\r\n}\r\n", L"[a    b]\r\n}"}},
        {L"[a    b]\r\n}\r\n[a\tb]\r\n", {L"[a    b]\r\n}\r\n", L"[a    b]\r\n}"}},
        {L"[a\r\nb]\r\n}\r\n[a\r\n\r\nb]\r\n", {L"[a\r\nb]\r\n}\r\n", L"[a\r\nb]\r\n}"}},
        // Blank lines at the ends of blocks and of the file.
        {L"\r\n\r\n[a]\r\n\r\n}\r\n\r\n[a]\r\n\r\n", {L"[a]\r\n}\r\n", L"[a]\r\n}"}},
        {L"[a]\r\n}\r\n\r\n[a]\r\n\r\n}", {L"[a]\r\n}\r\n", L"[a]\r\n}\r\n"}},
    };
    for (const auto& c : cases) {
        loadGasText(c.text, templates_);
        std::vector<std::wstring> texts(templates_.size());
        for (std::size_t i = 0; i < texts.size(); ++i) texts[i] = templates_[i].Text;
        EXPECT_EQ(texts, c.texts);
    }
}

TEST_F(LoadFields, RecordsOutliveTheArrayTheyWereCopiedFrom) {
    GasTemplate copy = load(L"[a]\r\n{\r\nx = 1;\r\n}\r\n");
    load(L"y = 2;");
    templates_.clear();
    EXPECT_EQ(dump(copy), L"[a] @a#1 | x=1 @a#1");
    EXPECT_EQ(copy.Text, L"[info]\r\n[a]\r\n{\r\nx = 1;\r\n}\r\n");
}

}  // namespace
}  // namespace kestrel
