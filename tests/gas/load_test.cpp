#include "gas/load.h"

#include <gtest/gtest.h>

#include "dump.h"
#include "support/gasprinters.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using test::RecordingHost;
using test::TempFolder;

// Keeps the calls of the loader as text.
class ListLog final : public TemplateList {
  public:
    std::vector<std::wstring> log;
    void add(std::wstring_view key, std::wstring_view text) override {
        log.push_back(std::wstring(L"add ").append(key).append(L" ").append(text));
    }
    void setText(std::wstring_view key, std::wstring_view text) override {
        log.push_back(std::wstring(L"set ").append(key).append(L" ").append(text));
    }
    void clear() override { log.push_back(L"clear"); }
};

std::wstring repeat(std::wstring_view text, std::size_t count) {
    std::wstring result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

const std::string kNoBlock =
    "ask: File loading error: Either no data found or unsupported file type. | Kestrel Template "
    "Browser | exclamation | ok";

class Load : public testing::Test {
  protected:
    bool load(std::wstring_view text) { return loadGasText(text, templates_, &list_); }

    RecordingHost host_;
    std::vector<GasTemplate> templates_;
    ListLog list_;
};

struct KindCase {
    const wchar_t* text;
    const wchar_t* kind;
    std::vector<std::wstring> texts;  // of the records
};

TEST_F(Load, FirstHeaderDecidesTheKindOfTheWholeFile) {
    const KindCase cases[] = {
        {L"[t:template,n:a]\r\n{\r\n}\r\n", L"Template", {L"[t:template,n:a]\r\n{\r\n}\r\n"}},
        {L"[info]\r\n{\r\n}\r\n", L"Info", {L"[info]\r\n{\r\n}\r\n"}},
        {L"[t:siege_nodes,n:a]", L"Seige Nodes", {L"[t:siege_nodes,n:a]\r\n}"}},
        {L"[credits_movie_2]", L"Credits Movie", {L"[credits_movie_2]\r\n}"}},
        {L"[XXXXX]", L"Unknown", {L"[XXXXX]\r\n}"}},
        {L"[INFO]\r\n{\r\n}", L"INFO", {L"[INFO]\r\n{\r\n}\r\n"}},
        {L"[t:template]", L"t:template", {L"[t:template]\r\n}"}},
        // Headers of other kinds stay inside the block before them.
        {L"[t:template,n:a]\r\n[t:component,n:b]\r\n",
         L"Template",
         {L"[t:template,n:a]\r\n[t:component,n:b]\r\n}"}},
        {L"[t:component,n:b]\r\n[t:template,n:a]\r\n",
         L"Component",
         {L"[t:component,n:b]\r\n[t:template,n:a]\r\n}"}},
        // What precedes a known header is a block; before an unknown one it is lost.
        {L"// x\r\n[info]\r\n}", L"Info", {L"[info]// x\r\n}", L"[info]\r\n}\r\n"}},
        {L"// x\r\n[lamp]\r\n}", L"lamp", {L"[lamp]\r\n}\r\n"}},
        {L"[lamp]\r\na = 1;\r\n[lamp][lamp]b",
         L"lamp",
         {L"[lamp]\r\na = 1;\r\n}", L"[lamp]b\r\n}"}},
        {L"[lamp][lam][lamp]", L"lamp", {L"[lamp][lam]}", L"[lamp]\r\n}"}},
        {L"[[a][a][[a]]", L"[a", {L"[[a][a]}", L"[[a]]\r\n}"}},
        {L"[]\r\n", L"Unknown", {L"[]\r\n}"}},
        {L"lamp] [x]", L"lamp", {L"lamp] [x]\r\n}"}},
        {L" lamp]\r\n\tlamp]\r\n}", L" lamp", {L" lamp]\r\n   }", L" lamp]\r\n}\r\n"}},
    };
    for (const KindCase& c : cases) {
        SCOPED_TRACE(test::shown(c.text));
        ASSERT_TRUE(load(c.text));
        std::vector<std::wstring> texts;
        for (std::size_t i = 0; i < templates_.size(); ++i) {
            EXPECT_EQ(templates_[i].Kind, c.kind);
            EXPECT_EQ(templates_[i].Name, c.kind + std::to_wstring(i));
            texts.push_back(templates_[i].Text);
        }
        EXPECT_EQ(texts, c.texts);
    }
}

TEST_F(Load, NormalisesTheText) {
    const struct {
        const wchar_t* text;
        const wchar_t* normalised;  // behind the header "[info]"
    } cases[] = {
        {L"[info]\n{\n}\n", L"\r\n{\r\n}\r\n"},                // LF alone
        {L"[info]\n{\r\na\nb\r\n}", L"\n{\r\na\nb\r\n}\r\n"},  // mixed: lone LF stays
        {L"[info]\r\n\r\n\r\n\r\na\r\n\r\n}", L"\r\na\r\n}\r\n"},
        {L"\r\n\r\n[info]\r\n}", L"\r\n}\r\n"},
        {L"[info]\n\n\n}\n\n", L"\r\n}\r\n"},
        {L"[info]\r\n \r\n\t\r\n}", L"\r\n \r\n    \r\n}\r\n"},  // blanks are no blank line
        {L"[info]\ta\tb", L"    a    b\r\n}"},
        {L"[info]\ra", L"\ra\r\n}"},
        {L"[info]\r\r\n\r\n}", L"\r\r\n}\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(test::shown(c.text));
        ASSERT_TRUE(load(c.text));
        ASSERT_EQ(templates_.size(), 1u);
        EXPECT_EQ(templates_[0].Text, std::wstring(L"[info]") + c.normalised);
    }
}

TEST_F(Load, JoinsTheFirstTwoPartySectionsAsAnExtraBlock) {
    ASSERT_TRUE(
        load(L"// lost\r\n[party]\r\na = 1;\r\n[party]\r\nb = 2;\r\n[party]\r\nc = 3;\r\n"));
    ASSERT_EQ(templates_.size(), 4u);
    EXPECT_EQ(templates_[0].Text, L"[party]\r\na = 1;\r\n[party]\r\n\r\nb = 2;\r\n}");
    EXPECT_EQ(dump(templates_[0]), L"a=1 @#0 | [party] @party#1 | b=2 @party#1");
    EXPECT_EQ(dump(templates_[1]), L"a=1 @#0");
    EXPECT_EQ(dump(templates_[3]), L"c=3 @#0");
    ASSERT_TRUE(load(L"[party]\r\na = 1;\r\n"));
    EXPECT_EQ(names(templates_), (std::vector<std::wstring>{L"Party0"}));
    // A kind that only looks like it is as any other.
    ASSERT_TRUE(load(L"[Party]\r\na = 1;\r\n}\r\n[Party]\r\n}\r\n[Party]\r\n}\r\n"));
    ASSERT_EQ(templates_.size(), 3u);
    EXPECT_EQ(templates_[0].Text, L"[Party]\r\na = 1;\r\n}\r\n");
}

TEST_F(Load, DocNamesTemplateBlocksAlone) {
    ASSERT_TRUE(
        load(L"[t:template,n:a]\r\nDOC = \"First\";\r\ndoc = Last;\r\ndoc = ;\r\n"
             L"[t:template,n:b]\r\nscreen_name = \"B\";\r\n"));
    EXPECT_EQ(names(templates_), (std::vector<std::wstring>{L"Last", L"Template1"}));
    EXPECT_EQ(list_.log, (std::vector<std::wstring>{L"add K0 Template0", L"set K0 Last",
                                                    L"add K1 Template1"}));
    ASSERT_TRUE(load(L"[info]\r\ndoc = Last;\r\n"));
    EXPECT_EQ(names(templates_), (std::vector<std::wstring>{L"Info0"}));
}

TEST_F(Load, BlocksBehindEachOther) {
    // The first block leaves one brace open, so its mark is what the second
    // block's closing braces are held against.
    ASSERT_TRUE(load(L"[info]\r\n{\r\n{\r\n}\r\n[info]\r\n{\r\n[a]\r\n{\r\n}\r\nx = 1;\r\n}\r\n"));
    ASSERT_EQ(templates_.size(), 2u);
    EXPECT_EQ(dump(templates_[1]), L"[a] @a#1 | x=1 @#1");
    // One without properties keeps an empty entry for each statement.
    ASSERT_TRUE(load(L"[info]\r\n{\r\n// a\r\n}\r\n[info]\r\nx = 1;\r\n"));
    EXPECT_EQ(templates_[0].Properties, std::vector<GasProperty>(5));
    EXPECT_EQ(templates_[1].Properties.size(), 1u);
}

TEST_F(Load, TextWithoutABlockFails) {
    for (const wchar_t* text : {L"", L"\r\n\r\n", L"no brackets", L"[[[[", L"[t:template", L"\0"}) {
        SCOPED_TRACE(test::shown(text));
        host_.log.clear();
        list_.log.clear();
        templates_.assign(3, {});
        templates_[0].Name = L"kept";
        EXPECT_FALSE(load(text));
        ASSERT_EQ(templates_.size(), 1u);
        EXPECT_EQ(templates_[0].Name, L"kept");
        EXPECT_EQ(list_.log, (std::vector<std::wstring>{L"clear"}));
        EXPECT_EQ(host_.log, std::vector<std::string>{kNoBlock});
    }
    std::vector<GasTemplate> fresh;
    EXPECT_FALSE(loadGasText(L"", fresh));
    EXPECT_EQ(fresh, std::vector<GasTemplate>(1));
}

TEST_F(Load, FileWithoutAHeaderEmptiesThePath) {
    const TempFolder folder;
    for (const char* bytes : {"", "plain text", "[party", "[info]\n}", "\xEF\xBB\xBF[\xD0\x96]}"}) {
        std::wstring path = folder.put(L"x.gas", bytes);
        const bool good = std::string_view(bytes).ends_with('}');
        EXPECT_EQ(gblnLoadGas(path, templates_, nullptr), good) << bytes;
        EXPECT_EQ(path.empty(), !good) << bytes;
    }
    EXPECT_EQ(templates_[0].Kind, L"\u0416");
    std::wstring missing = folder.path(L"missing.gas");
    EXPECT_FALSE(gblnLoadGas(missing, templates_, nullptr));
    EXPECT_TRUE(missing.empty());
    // A file that Linux does not let be read (none elsewhere): one failure, one report.
    host_.log.clear();
    std::wstring unreadable = L"/proc/self/mem";
    EXPECT_FALSE(gblnLoadGas(unreadable, templates_, nullptr));
    EXPECT_EQ(host_.log.size(), 1U);
}

TEST_F(Load, TextBeyondTheCodePageLoadsFromMemory) {
    ASSERT_TRUE(load(L"[\u0416]\r\n[a\u4E2D]\r\nv = \"\U0001F426 \u00E9\"; // \u0416\r\n"));
    EXPECT_EQ(templates_[0].Kind, L"\u0416");
    EXPECT_EQ(dump(templates_[0]), L"[a\u4E2D] @a\u4E2D#1 | v=\U0001F426 \u00E9 @a\u4E2D#1");
    EXPECT_EQ(templates_[0].Comments, L"Line 3:\t \u0416;\r\n");
    EXPECT_EQ(templates_[0].Text,
              L"[\u0416]\r\n[a\u4E2D]\r\nv = \"\U0001F426 \u00E9\"; // \u0416\r\n}");
}

TEST_F(Load, LevelsStayWhereTheyCountNoMore) {
    const std::wstring most =
        L"[info]\r\n" + repeat(L"[n:ignored]\r\n", 32768) + repeat(L"[a]\r\n{\r\n}\r\n", 32766);
    ASSERT_TRUE(load(most + L"[b]\r\n[c]\r\n[t:part,n:d]\r\n"));
    const std::vector<GasProperty>& all = templates_[0].Properties;
    ASSERT_EQ(all.size(), 32770U);
    EXPECT_EQ(dump(all[32765]), L"[a] @a#32766");
    EXPECT_EQ(dump(all[32767]), L"[c] @b\\c#32767");
    EXPECT_EQ(dump(all.back()), L"name=d @b\\c\\d#32767");
    EXPECT_EQ(host_.log, std::vector<std::string>{});
}

// Shapes that make a careless parser quadratic: at these sizes such a one would
// run for minutes, and the time limit of the run ends it.
TEST_F(Load, StaysLinearOnNastyShapes) {
    const std::size_t million = 1000000;
    const struct {
        const char* name;
        std::wstring text;
        bool loads;
    } cases[] = {
        {"only line ends", repeat(L"\r\n", 4 * million), false},
        {"only brackets", repeat(L"[", 8 * million), false},
        {"only semicolons", L"[info]" + repeat(L";", 2 * million), true},
        {"a million comments", L"[info]\r\n" + repeat(L"//c\r\n", million), true},
        {"empty blocks", repeat(L"[info]\r\n{\r\n}\r\n", 100000), true},
        {"braces", L"[info]\r\n" + repeat(L"{\r\n", million) + repeat(L"}\r\n", million), true},
        {"deep nesting", L"[info]\r\n" + repeat(L"[a]\r\n{\r\n", 100000), true},
        {"sub-blocks that never close", L"[info]\r\n" + repeat(L"[a]\r\n", 1000000), true},
        {"names of sub-blocks",
         L"[info]\r\n[" + repeat(L"\\", 100000) + L"]\r\n" + repeat(L"}\r\n[b]\r\n", 100000), true},
        {"one line", L"[info]\r\nv = " + repeat(L"x", 8 * million), true},
        {"long unknown header",
         L"[" + repeat(L"[", 2 * million) + L"x]" + repeat(L"[", 4 * million), true},
        {"repeated unknown header", repeat(L"[a]", 500000), true},
        {"comment marks", L"[info]\r\n" + repeat(L"/", 8 * million), true},
    };
    for (const auto& c : cases) EXPECT_EQ(load(c.text), c.loads) << c.name;
}

}  // namespace
}  // namespace kestrel
