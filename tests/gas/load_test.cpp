#include "gas/load.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "gas/sources.h"
#include "gastest.h"
#include "services/files.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "text/render.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;
using Records = std::vector<GasTemplate>;

// Keeps the calls of the loader as text.
struct ListLog final : TemplateList {
    std::string log;
    void add(std::wstring_view key, std::wstring_view text) override {
        log += "add " + toUtf8(key) + " " + toUtf8(text) + "; ";
    }
    void setText(std::wstring_view key, std::wstring_view text) override {
        log += "set " + toUtf8(key) + " " + toUtf8(text) + "; ";
    }
    void clear() override { log += "clear; "; }
};

std::wstring repeat(std::wstring_view text, std::size_t count) {
    std::wstring result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

class Load : public testing::Test {
  protected:
    // The records of the flat `text`, which outlive the array that they were loaded into.
    Records load(std::string_view text) {
        Records templates;
        EXPECT_TRUE(loadGasText(fromUtf8(lines(text)), templates, &list_));
        const Records copies = templates;
        return copies;
    }
    GasTemplate info(const std::string& body) { return load("[info]|" + body).at(0); }

    test::RecordingHost host_;
    ListLog list_;
};

// The texts are flat, each behind its place among the headers of the file.
TEST_F(Load, FirstHeaderDecidesTheKindOfTheWholeFile) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"[t:template,n:a]|{|}|", "Template", "0 [t:template,n:a]|{|}|"},
        {"[info]|{|}|", "Info", "0 [info]|{|}|"},
        {"[t:tsd,n:a]", "TSD", "0 [t:tsd,n:a]|}"},
        {"[t:siege_nodes,n:a]", "Seige Nodes", "0 [t:siege_nodes,n:a]|}"},
        {"[t:sed,n:a]", "SED", "0 [t:sed,n:a]|}"},
        {"[credits_movie_2]", "Credits Movie", "0 [credits_movie_2]|}"},
        {"[outro]", "Outro", "0 [outro]|}"},
        {"[intro_movie]", "Intro Movie", "0 [intro_movie]|}"},
        {"[XXXXX]", "Unknown", "0 [XXXXX]|}"},
        {"[INFO]|{|}", "INFO", "0 [INFO]|{|}|"},
        {"[t:template]", "t:template", "0 [t:template]|}"},
        // Headers of other kinds stay inside the block before them.
        {"[t:template,n:a]|[t:component,n:b]|", "Template",
         "0 [t:template,n:a]|[t:component,n:b]|}"},
        {"[t:component,n:b]|[t:template,n:a]|", "Component",
         "0 [t:component,n:b]|[t:template,n:a]|}"},
        // What precedes a known header is a block; before an unknown one it is lost.
        {"// x|[info]|}", "Info", "- [info]// x|} + 0 [info]|}|"},
        {"// x|[lamp]|}", "lamp", "0 [lamp]|}|"},
        {"[lamp]|a = 1;|[lamp][lamp]b", "lamp", "0 [lamp]|a = 1;|} + 2 [lamp]b|}"},
        {"[lamp][lamp]b = 1;", "lamp", "1 [lamp]b = 1;|}"},
        {"[lamp][lam][lamp]", "lamp", "0 [lamp][lam]} + 1 [lamp]|}"},
        {"[[a][a][[a]]", "[a", "0 [[a][a]} + 1 [[a]]|}"},
        {"[]|", "Unknown", "0 []|}"},
        {"lamp] [x]", "lamp", "0 lamp] [x]|}"},
        {" lamp]|\tlamp]|}", " lamp", "0  lamp]|   } + 1  lamp]|}|"},
        // Only two sections of a party are joined, as one more block.
        {"// lost|[party]|a = 1;|[party]|b = 2;|[party]|", "Party",
         "- [party]|a = 1;|[party]||b = 2;|} + 0 [party]|a = 1;|} + 1 [party]|b = 2;|} "
         "+ 2 [party]|}"},
        {"x|[party]|a = 1;|", "Party", "- [party]x|} + 0 [party]|a = 1;|}"},
        {"[Party]|}|[Party]|}|[Party]|}|", "Party", "0 [Party]|}| + 1 [Party]|}| + 2 [Party]|}|"},
        // Line ends: of LF alone, and mixed, where a lone LF stays; lines without anything.
        {"[info]\n{\n}\n", "Info", "0 [info]|{|}|"},
        {"[info]\n{|a\nb|}", "Info", "0 [info]\n{|a\nb|}|"},
        {"[info]||||a||}", "Info", "0 [info]|a|}|"},
        {"[info]| |\t|}", "Info", "0 [info]| |    |}|"},
        {"[info]\ta\tb", "Info", "0 [info]    a    b|}"},
        {"[info]\ra", "Info", "0 [info]\ra|}"},
        {"[info]\r||}", "Info", "0 [info]\r|}|"},
        {"||[a]||}||[a]||", "a", "0 [a]|}| + 1 [a]|}"},
        {"[a]|}||[a]||}", "a", "0 [a]|}| + 1 [a]|}|"},
        // One header, written in several ways.
        {"[a\tb]|}|[a    b]|", "a    b", "0 [a    b]|}| + 1 [a    b]|}"},
        {"[a    b]|}|[a\tb]|", "a    b", "0 [a    b]|}| + 1 [a    b]|}"},
        {"[a|b]|}|[a||b]|", "a|b", "0 [a|b]|}| + 1 [a|b]|}"},
        {"[Ж]|v = \"🐦 é\"; // 中|", "Ж", "0 [Ж]|v = \"🐦 é\"; // 中|}"},
    };
    for (const auto& [file, kind, expected] : cases) {
        std::string texts;
        for (const GasTemplate& record : load(file)) {
            const bool isBlock = record.Place != GasTemplate::kNowhere;
            texts += (texts.empty() ? "" : " + ") + (isBlock ? std::to_string(record.Place) : "-");
            texts += " " + flat(record.Text.wide());
            EXPECT_EQ(flat(record.Kind), kind) << file;
        }
        EXPECT_EQ(texts, expected) << file;
    }
}

// The body of a block, its entries and its comments.
TEST_F(Load, StatementsGiveEntriesByTheirRules) {
    const struct {
        const char* body;
        const char* entries;
        const char* comments = "";
    } cases[] = {
        // Comments.
        {"x=1;|a //// b /// c", "x=1 @#0", "Line 3:\ta  b / c|"},
        {"a = 1; // why", "a=1 @#0", "Line 2:\t why;|"},
        {"  // why  ; b = 2", "b=2 @#0", "Line 1:\t why  ;|"},
        {"a = 1 // why|b = http://x;|x=1", "x=1 @#0", "Line 1:\ta = 1  why|Line 2:\tb = http:x;|"},
        {"||{||// \tb||x=1", "x=1 @#0", "Line 2:\t     b|"},
        {"// [a]|b = 1;", "b=1 @#0", "Line 1:\t [a]|"},
        {"[a中]|v = \"🐦 é\"; // Ж|", "[a中] @a中#1, v=🐦 é @a中#1", "Line 3:\t Ж;|"},
        // Properties.
        {"a = \"b=c=d\";", "a=b @#0"},
        {"\t \"a b\" = [ \"c;\t{d}\" ] ", "a b=c @#0"},
        {"a = one  two ; b = x\"y\"z;", "a=one  two @#0, b=xyz @#0"},
        {"Big_A = ;|= 5;", "Big_A= @#0, =5 @#0"},
        {"[a]|{|x = 1 }|y = 2;|}|z = 3;", "[a] @a#1, x=1 @a#1, y=2 @a#1, z=3 @#1"},
        {"[a] = 5;", "a=5 @#0"},
        {"a = 1\nb = 2;", "a=1\nb @#0"},
        {"plain words|;;|:|t:|/|x=1", "x=1 @#0"},
        {"// a|}", "= @#0, = @#0, = @#0, = @#0", "Line 1:\t a|"},
        // Sub-blocks.
        {"[a]|{|[b]|{|}|x = 1;|}", "[a] @a#1, [b] @a\\b#2, x=1 @a#2"},
        {"[a]|{|}|[b]|{|x = 1;|}", "[a] @a#1, [b] @b#2, x=1 @b#2"},
        {"[a] {|x = 1;|[b] {|y = 2;|}|z = 3;|}|w = 4;",
         "[a] @a#1, x=1 @a#1, [b] @a\\b#2, y=2 @a\\b#2, z=3 @a#2, w=4 @#2"},
        {"[a]|{|[b]|{|}|}|}|x = 1;", "[a] @a#1, [b] @a\\b#2, x=1 @#2"},
        {"[ \"a b\" ]", "[a b] @a b#1"},
        {"[a\t\\b]|{|}|x = 1;", "[a    \\b] @a    \\b#1, x=1 @a    #1"},
        {"[t:part,n:foo]|{|x = 1;|}|y = 2;",
         "type=part @foo#1, name=foo @foo#1, x=1 @foo#1, y=2 @#1"},
        {"[a]|{|[T:part, n:foo]|{|x = 1;|}|}",
         "[a] @a#1, type=part @a\\foo#2, name=foo @a\\foo#2, x=1 @a\\foo#2"},
        {"[t:part,n:foo,Side:left,loose]", "type=part @foo#1, name=foo @foo#1, Side=left @foo#1"},
        {"[n:foo]|x = 1;", "x=1 @#0"},
        {"n:bar] {|x:y:z]n:", "name=bar @#0, x=y @#0"},
        {"t:a,n:bar]|x=1", "x=1 @#0"},
        // Sub-blocks of one line.
        {"[a=b]{}|y = 2;", "[a=b] @a=b#1, y=2 @#1"},
        {"[a] { x = 1; z = 3; }|y = 2;", "[a] @a#1, x=1 @a#1, z=3 @a#1, y=2 @#1"},
        {"[a]|{|[b]{x=1}|y = 2;|}|z = 3;", "[a] @a#1, [b] @a\\b#2, x=1 @a\\b#2, y=2 @a#2, z=3 @#2"},
        {"[a]{x=1}[b]{y=2}", "[a] @a#1, x=1 @a#1"},
    };
    for (const auto& [body, entries, comments] : cases) {
        const GasTemplate record = info(body);
        EXPECT_EQ(dump(record), entries) << body;
        EXPECT_EQ(flat(record.Comments), comments) << body;
    }
}

TEST_F(Load, BlocksAreNamedByTheirNumberOrTheirDoc) {
    const std::pair<const char*, const char*> cases[] = {
        {"[t:template,n:a]|DOC = \"First\";|doc = Last;|doc = ;|[t:template,n:b]|dog = \"B\";|",
         "Last: name=a @#0, DOC=First @#0, doc=Last @#0, doc= @#0; Template1: name=b @#0, dog=B "
         "@#0; "},
        {"[info]|doc = Last;|", "Info0: doc=Last @#0; "},
        {"[party]|a = 1;|[party]|b = 2;|",
         "Party0: a=1 @#0, [party] @party#1, b=2 @party#1; Party1: a=1 @#0; Party2: b=2 @#0; "},
        // The first block leaves one brace open, so its mark is what the second block's
        // closing braces are held against.
        {"[info]|{|{|}|[info]|{|[a]|{|}|x = 1;|}|",
         "Info0: = @#0, = @#0, = @#0, = @#0, = @#0; Info1: [a] @a#1, x=1 @#1; "},
    };
    for (const auto& [file, expected] : cases) {
        std::string records;
        for (const GasTemplate& record : load(file)) {
            records += toUtf8(record.Name) + ": " + dump(record) + "; ";
        }
        EXPECT_EQ(records, expected) << file;
    }
    EXPECT_EQ(list_.log,
              "add K0 Template0; set K0 Last; add K1 Template1; add K0 Info0; add K0 Party0; "
              "add K1 Party1; add K2 Party2; add K0 Info0; add K1 Info1; ");
}

TEST_F(Load, FileWithoutAHeaderEmptiesThePath) {
    const test::TempFolder folder;
    const std::pair<const char*, bool> cases[] = {
        {nullptr, false},      {"", false},
        {"\r\n\r\n", false},   {"[[[[", false},
        {"plain text", false}, {"[t:template", false},
        {"[info]\n}", true},   {"\xEF\xBB\xBF[\xD0\x96]}", true},
        {"[a]", true}};
    Records templates;
    for (const auto& [bytes, hasHeader] : cases) {
        host_.log.clear();
        list_.log.clear();
        templates = Records(3);
        templates[0].Kind = L"kept";
        std::wstring path = folder.path(L"x.gas");
        if (bytes != nullptr) folder.put(L"x.gas", bytes);
        EXPECT_EQ(gblnLoadGas(path, templates, &list_), hasHeader) << bytes;
        EXPECT_EQ(path.empty(), !hasHeader) << bytes;
        EXPECT_EQ(templates.size(), 1U) << bytes;
        if (hasHeader) continue;
        EXPECT_EQ(templates[0].Kind, L"kept") << bytes;
        EXPECT_EQ(list_.log, "clear; ") << bytes;
        EXPECT_EQ(host_.log, Lines{"ask: File loading error: Either no data found or unsupported "
                                   "file type. | Kestrel Template Browser | exclamation | ok"});
    }
    EXPECT_EQ(templates[0].Kind, L"a") << "the file of the last row";
    // One that Linux does not let be read (none elsewhere): one failure, one report.
    host_.log.clear();
    list_.log.clear();
    std::wstring unreadable = L"/proc/self/mem";
    templates = Records(3);
    EXPECT_FALSE(gblnLoadGas(unreadable, templates, &list_));
    EXPECT_EQ(templates, Records(1));
    EXPECT_EQ(list_.log, "clear; ");
    EXPECT_EQ(host_.log.size(), 1U);
}

TEST_F(Load, LevelsStayWhereTheyCountNoMore) {
    const auto around = [](int i) { return "g" + std::to_string(i % 300); };
    std::string body;
    for (int i = 0; i < 32768; ++i) body += "[n:ignored]|";
    for (int i = 0; i < 16383; ++i) body += "[" + around(i) + "]|{|[x]|{|}|}|";
    const std::vector<GasProperty> all = info(body + "[b]|[c]|[t:part,n:d]").Properties;
    ASSERT_EQ(all.size(), 32770U);
    for (int i = 0; i < 16383; ++i) {
        const std::string level = "#" + std::to_string(2 * i + 2);
        ASSERT_EQ(dump(all[2U * static_cast<unsigned>(i) + 1]),
                  "[x] @" + around(i) + "\\x" + level);
    }
    EXPECT_EQ(dump(all[32767]), "[c] @b\\c#32767");
    EXPECT_EQ(dump(all.back()), "name=d @b\\c\\d#32767");
    EXPECT_EQ(host_.log, Lines{});
}

// Shapes that make a careless parser quadratic: at these sizes such a one would
// run for minutes, and the time limit of the run ends it.
TEST_F(Load, StaysLinearOnNastyShapes) {
    const std::size_t million = 1000000;
    const std::wstring info = L"[info]\r\n";
    for (const auto& [text, loads] : {
             std::pair(repeat(L"\r\n", 4 * million), false),
             {repeat(L"[", 8 * million), false},
             {L"[info]" + repeat(L";", 2 * million), true},
             {info + repeat(L"//c\r\n", million), true},
             {repeat(L"[info]\r\n{\r\n}\r\n", 100000), true},
             {info + repeat(L"{\r\n", million) + repeat(L"}\r\n", million), true},
             {info + repeat(L"[a]\r\n{\r\n", 100000), true},
             {info + repeat(L"[a]\r\n", million), true},
             {info + L"[" + repeat(L"\\", 100000) + L"]\r\n" + repeat(L"}\r\n[b]\r\n", 100000),
              true},
             {info + L"v = " + repeat(L"x", 8 * million), true},
             {repeat(L"[", 2 * million) + L"x]" + repeat(L"[", 4 * million), true},
             {repeat(L"[a]", 500000), true},
             {info + repeat(L"/", 8 * million), true},
         }) {
        Records templates;
        EXPECT_EQ(loadGasText(text, templates), loads) << test::shown(text.substr(0, 40));
    }
}

// The loader looks at many bytes at a time and shares what is equal: what it gives must
// not depend on where in the file a text stands, on its length, or on what came before it.
TEST_F(Load, MarksAreFoundWhereverTheyStand) {
    for (std::size_t shift = 0; shift < 140; ++shift) {
        const GasTemplate record =
            info(std::string(shift, 'x') +
                 "|// a|[t:b,n:c] {|d = 1; e = 2=3; f//g;|}|h]n:i||\r|j = 4 }");
        ASSERT_EQ(dump(record), "type=b @c#1, name=c @c#1, d=1 @c#1, e=2 @c#1, hn=i @#1, j=4 @#1")
            << shift;
        ASSERT_EQ(flat(record.Comments),
                  shift == 0 ? "Line 1:\t a|Line 5:\tfg;|" : "Line 2:\t a|Line 6:\tfg;|");
    }
}

TEST_F(Load, NamesAndValuesOfEveryLengthAreCleanedAndStayApart) {
    std::string body;
    Lines expected;
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const std::string piece : {"a", "b", "\"", "{", "]", "\t", "é", "€"}) {
                const bool isInside = place > 0 && place + 1 < length;
                const bool isRemoved = piece.find_first_of("\"{]\t") != piece.npos;
                const std::string before(place, 'y'), behind(length - place - 1, 'y');
                const std::string text = before + piece + behind;
                const std::string blanks = piece == "\t" && isInside ? "    " : "";
                const std::string clean = before + (isRemoved ? blanks : piece) + behind;
                body += text + "=" + text + ";|";
                expected.push_back(clean + "=" + clean + " @#0");
            }
        }
    }
    const GasTemplate record = info(body);
    ASSERT_EQ(record.Properties.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(dump(record.Properties[i]), expected[i]);
    }
}

// The samples, from their bytes to the bytes of their text.
namespace fs = std::filesystem;

TEST(Samples, GiveTheirGoldenTexts) {
    const test::RecordingHost host;  // its clock stands still
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(KESTREL_SAMPLES)) {
        if (entry.path().extension() != ".gas") continue;
        const std::string name = entry.path().stem().string();
        std::wstring path = fromUtf8(entry.path().string());
        std::vector<GasTemplate> templates;
        EXPECT_TRUE(gblnLoadGas(path, templates, nullptr)) << name;
        const std::wstring shown = L"C:\\mods\\" + fromUtf8(name) + L".gas";
        EXPECT_EQ(narrow(gstrMakeFileText(shown, templates, nullptr, 0, nullptr)),
                  readFileBytes((fs::path(KESTREL_GOLDEN) / (name + ".tab")).wstring()));
        ++count;
    }
    EXPECT_EQ(count, 13U);
}

// A checkout that turned line ends would leave the other test green.
TEST(Samples, KeepTheLineEndsThatTheyAreFor) {
    const std::pair<const char*, const char*> cases[] = {{"lf-only.gas", "]\n{\n"},
                                                         {"harbour.gas", "{\r\n"},
                                                         {"mixed-ends.gas", "{\r\n"},
                                                         {"mixed-ends.gas", "[legend]\n"}};
    for (const auto& [name, text] : cases) {
        const std::string bytes = readFileBytes((fs::path(KESTREL_SAMPLES) / name).wstring());
        EXPECT_NE(bytes.find(text), bytes.npos) << name;
    }
}

TEST(Sources, AreFilesWhoseNameEndsInGas) {
    const std::pair<const wchar_t*, bool> cases[] = {
        {L"a.gas", true}, {L".GAS", true}, {L"gas", false}, {L"agas", false}, {L"a.gas.c", false}};
    for (const auto& [name, isSource] : cases) EXPECT_EQ(isGasName(name), isSource) << name;
}

}  // namespace
}  // namespace kestrel
