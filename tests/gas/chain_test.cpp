#include "gas/chain.h"

#include <gtest/gtest.h>

#include <chrono>

#include "gas/load.h"
#include "services/histories.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Files = std::vector<std::wstring>;
using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

// The box for a file without any block.
Lines loadFailed(const std::wstring& file) {
    return {"ask: Error loading gas file!\\r\\n\\r\\n" + test::shown(file) +
            "\\r\\nFile loading error: Either no data found or unsupported file type. | Kestrel | "
            "exclamation | ok"};
}

// A template with a parent, a doc or neither ("" for none).
std::string source(const std::string& name, const std::string& parent,
                   const std::string& doc = "") {
    std::string text = "[t:template,n:" + name + "]\r\n{\r\n";
    if (!doc.empty()) text += "doc = \"" + doc + "\";\r\n";
    if (!parent.empty()) text += "specializes = \"" + parent + "\";\r\n";
    return text + "}\r\n";
}

class Chain : public testing::Test {
  protected:
    Chain() : before_(std::filesystem::current_path()) {
        gProgram().folder = programs.path();
        gProgram().version.fileDescription = L"Kestrel";
        std::filesystem::current_path(current.native());
    }
    ~Chain() override { std::filesystem::current_path(before_); }

    std::wstring put(std::wstring_view name, const std::string& text) {
        return folder.put(name, text);
    }
    // As of long ago: a file that nobody is writing.
    std::wstring putOld(std::wstring_view name, const std::string& text) {
        const std::wstring path = put(name, text);
        std::filesystem::last_write_time(folder.native(name), kLongAgo);
        return path;
    }
    void listFiles(const Files& files) {
        std::string text;
        for (const std::wstring& file : files) text.append("\r\n").append(test::shown(file));
        current.put(L"spec.his", text.substr(std::min<std::size_t>(text.size(), 2)));
    }
    Lines filePrompt() const {
        return {"open: Select the node's source file | All files (*.*)|*.* | " +
                test::shown(folder.path())};
    }
    // "key text (file name) < key of the node above"; the tag without its folder.
    std::wstring drawn() const {
        std::wstring text;
        for (const ChainNode& node : chain.nodes()) {
            const std::size_t name = node.tag.find_last_of(L"/\\") + 1;
            text += node.key + L" " + node.text + L" (" + node.tag.substr(name) + L")";
            if (node.parent != ChainNode::kNoParent) {
                text += L" < " + chain.nodes()[node.parent].key;
            }
            text += L"\n";
        }
        return text;
    }
    void clickLast() { chain.click(chain.nodes().size() - 1); }

    test::RecordingHost host;
    test::TempFolder folder;
    test::TempFolder programs;
    test::TempFolder current;
    SpecializesChain chain;

  private:
    static inline const auto kLongAgo = std::filesystem::file_time_type::clock::now() - 1h;
    std::filesystem::path before_;
};

TEST_F(Chain, TheTreeIsTheChainOfTheFirstFile) {
    const struct {
        std::string file;
        const wchar_t* name;
        const wchar_t* tree;
        bool asks;
    } cases[] = {
        {source("a", "b", "A") + source("b", "c", "B") + source("c", "", "C"), L"a",
         L"root A (f.gas)\nK1 B (f.gas) < root\nK2 C (f.gas) < K1\n", false},
        {source("a", "x"), L"a", L"root a (f.gas)\nK1 x (f.gas) < root\n", false},
        {source("a", "b", "A") + source("b", ""), L"A", L"root A (f.gas)\nK1 b (f.gas) < root\n",
         false},
        // A label that holds the separator: the empty piece uses up its number.
        {source("a", "", "A||C") + source("A", ""), L"a", L"root A (f.gas)\nK2 C (f.gas) < root\n",
         false},
        {source("a", "a"), L"a", L"root a (f.gas)\n", false},
        {source("a", "axe", "axe"), L"a", L"root axe (f.gas)\n", false},
        {source("a", "B") + source("b", "", "B"), L"a", L"root a (f.gas)\nK1 B (f.gas) < root\n",
         false},
        {source("a", "b") + source("b", "a"), L"b", L"root b (f.gas)\nK1 a (f.gas) < root\n",
         false},
        {source("a", ""), L"z", L"root z ()\n", true},
    };
    for (const auto& c : cases) {
        host.log.clear();
        chain = {};
        chain.open(c.name, put(L"f.gas", c.file));
        EXPECT_EQ(drawn(), c.tree);
        EXPECT_EQ(host.log, c.asks ? filePrompt() : Lines{});
        EXPECT_EQ(chain.text() == L"Source not available.", c.asks);
    }
}

// A walk over the file for each step would take minutes.
TEST_F(Chain, ALongChainTakesNoWalkOverTheFileForEachStep) {
    std::string text;
    const int count = 100000;
    for (int i = 0; i < count; ++i)
        text += source("t" + std::to_string(i), "t" + std::to_string(i + 1));
    ChainDocument document;
    ASSERT_TRUE(document.load(put(L"f.gas", text)));
    const std::wstring history = gstrGetTemplateHistory(document.templates(), L"t0");
    EXPECT_TRUE(history.starts_with(L"t0|t1|t2|"));
    EXPECT_TRUE(history.ends_with(L"|t99999|t100000"));
    for (int i = 0; i < count; ++i) ASSERT_NE(document.find(L"t" + std::to_wstring(i)), nullptr);
}

TEST_F(Chain, AFirstFileThatCannotBeLoadedLeavesAnEmptyTree) {
    const std::wstring missing = folder.path(L"none.gas");
    chain.open(L"a", missing);
    EXPECT_EQ(host.log, loadFailed(missing));
    EXPECT_TRUE(chain.nodes().empty());
    EXPECT_EQ(chain.text(), L"");
    EXPECT_EQ(chain.currentFile(), L"");
    EXPECT_EQ(chain.files(), Files{missing});
}

TEST_F(Chain, TheListIsReadWholeFromTheCurrentFolder) {
    const std::wstring file = put(L"open.gas", source("a", ""));
    Files many(40, L"z");
    many.push_back(file);
    const struct {
        Files kept;
        Files list;
    } cases[] = {
        {{}, {file}},
        {{L"x", L"", L"X", L"x", L" ", L""}, {L"x", L"", L"X", L"x", L" ", L"", file}},
        {{folder.path(L"OPEN.gas"), L"y"}, {folder.path(L"OPEN.gas"), L"y"}},
        {Files(40, L"z"), many},
    };
    programs.put(L"spec.his", "from the program's folder");
    for (const auto& c : cases) {
        if (!c.kept.empty()) listFiles(c.kept);
        chain = {};
        chain.open(L"a", file);
        EXPECT_EQ(chain.files(), c.list);
    }
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Chain, GrowsOneLevelAClickOverTheListedFiles) {
    const std::wstring a = put(L"a.gas", source("a", "b", "A"));
    const std::wstring b = put(L"b.gas", source("b", "c"));
    const std::wstring c = put(L"c.gas", source("c", "", "C"));
    listFiles({L"", c, L"", b});
    chain.open(L"a", a);
    EXPECT_EQ(chain.text(),
              L"[t:template,n:a]\r\n{\r\ndoc = \"A\";\r\nspecializes = \"b\";\r\n}\r\n");
    EXPECT_EQ(chain.currentFile(), a);
    chain.click(1);
    EXPECT_EQ(drawn(), L"root A (a.gas)\nK1 b (b.gas) < root\nK3 c (b.gas) < K1\n");
    EXPECT_EQ(chain.currentFile(), b);
    chain.click(2);
    chain.click(2);
    EXPECT_EQ(drawn(), L"root A (a.gas)\nK1 b (b.gas) < root\nK3 c (c.gas) < K1\n");
    EXPECT_EQ(chain.text(), L"[t:template,n:c]\r\n{\r\ndoc = \"C\";\r\n}\r\n");
    // The way back: each node knows its file.
    chain.click(0);
    EXPECT_EQ(chain.currentFile(), a);
    EXPECT_EQ(chain.files(), (Files{L"", c, L"", b, a}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Chain, AFileThatTheUserShowsJoinsTheListOnlyWhenItHelps) {
    const std::wstring a = put(L"a.gas", source("a", "b"));
    const std::wstring b = put(L"b.gas", source("b", ""));
    const std::wstring other = put(L"other.gas", source("other", ""));
    host.files = {std::nullopt, other, folder.path(L"none.gas"), b};
    chain.open(L"a", a);
    const Lines messages[] = {{}, {}, loadFailed(folder.path(L"none.gas")), {}};
    for (const Lines& after : messages) {
        EXPECT_EQ(chain.files(), Files{a});
        host.log.clear();
        chain.click(1);
        Lines log = filePrompt();
        log.insert(log.end(), after.begin(), after.end());
        EXPECT_EQ(host.log, log);
        const bool found = host.files.empty();
        EXPECT_EQ(chain.nodes()[1].tag, found ? b : L"");
        EXPECT_EQ(chain.text() == L"Source not available.", !found);
    }
    EXPECT_EQ(chain.files(), (Files{a, b}));

    // A source that has come into the current file leaves the node without one.
    host.files = {};
    chain = {};
    chain.open(L"a", a);
    chain.click(1);
    put(L"a.gas", source("b", "c"));
    chain.click(1);
    EXPECT_EQ(drawn(), L"root a (a.gas)\nK1 b () < root\nK3 c (a.gas) < K1\n");
}

TEST_F(Chain, TheWalkGoesOnAfterAFailure) {
    const std::wstring a = put(L"a.gas", source("a", "b"));
    const std::wstring b = put(L"b.gas", source("b", ""));
    const std::wstring empty = put(L"empty.gas", "");
    listFiles({empty, a, a, empty, b});
    chain.open(L"a", a);
    // The current file is neither loaded by its node nor by the walk.
    std::filesystem::remove(folder.native(L"a.gas"));
    chain.click(1);
    EXPECT_EQ(host.log, loadFailed(empty));
    EXPECT_EQ(chain.nodes()[1].tag, b);
    // One that failed is tried again once it is another.
    listFiles({empty});
    chain = {};
    chain.open(L"a", put(L"a.gas", source("a", "b")));
    for (const auto& [text, boxes] : {std::pair("", 1U), {nullptr, 0U}, {"x", 1U}, {nullptr, 0U}}) {
        if (text != nullptr) put(L"empty.gas", text);
        host.log.clear();
        chain.click(1);
        EXPECT_EQ(host.logged("ask").size(), boxes);
    }
    put(L"empty.gas", source("b", ""));
    chain.click(1);
    EXPECT_EQ(chain.nodes()[1].tag, empty);
}

TEST_F(Chain, TheWalkSkipsTheFileThatIsCurrentByThen) {
    const std::wstring a = put(L"a.gas", source("a", "b"));
    const std::wstring c = put(L"c.gas", source("c", ""));
    const std::wstring sameWithoutCase = put(L"A.gas", source("a", "b"));
    const struct {
        Files list;
        std::wstring last;
    } cases[] = {{{}, a}, {{c, a}, a}, {{a, c}, c}, {{c, a, a, c}, c}, {{sameWithoutCase}, {}}};
    for (const auto& one : cases) {
        listFiles(one.list);
        chain = {};
        chain.open(L"a", a);
        chain.click(1);
        EXPECT_EQ(chain.currentFile(), one.last.empty() ? sameWithoutCase : one.last);
    }
}

TEST_F(Chain, LooksInTheCurrentFileFirstAndForDocBeforeName) {
    const std::wstring a = put(L"a.gas", source("a", "b") + source("both", ""));
    const std::wstring b = put(L"b.gas", source("c", "", "named c") + source("b", "both") +
                                             source("d", "", "c") + source("both", "c"));
    listFiles({b});
    chain.open(L"a", a);
    chain.click(1);
    clickLast();
    EXPECT_EQ(chain.text(), L"[t:template,n:both]\r\n{\r\nspecializes = \"c\";\r\n}\r\n");
    clickLast();
    EXPECT_EQ(chain.text(), L"[t:template,n:d]\r\n{\r\ndoc = \"c\";\r\n}\r\n");
    EXPECT_EQ(drawn(),
              L"root a (a.gas)\nK1 b (b.gas) < root\nK3 both (b.gas) < K1\nK4 c (b.gas) < K3\n");
}

TEST_F(Chain, ACycleEndsAtTheFirstTemplateThatComesAgain) {
    const struct {
        std::string first, second;
        const wchar_t* tree;
    } cases[] = {
        {source("a", "b") + source("b", "a"), "", L"root a (f.gas)\nK1 b (f.gas) < root\n"},
        {source("a", "b") + source("b", "A") + source("c", "", "A"), "",
         L"root a (f.gas)\nK1 b (f.gas) < root\nK2 A (f.gas) < K1\n"},
        // What a file of its own holds is known once it has been looked into.
        {source("a", "b"), source("b", "a"),
         L"root a (f.gas)\nK1 b (g.gas) < root\nK3 a (g.gas) < K1\n"},
    };
    for (const auto& c : cases) {
        listFiles({put(L"g.gas", c.second + source("z", ""))});
        chain = {};
        chain.open(L"a", put(L"f.gas", c.first));
        for (int i = 0; i < 5; ++i) {
            clickLast();
            chain.click(0);
        }
        EXPECT_EQ(drawn(), c.tree);
    }
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Chain, ResetLeavesTheNameInThePlaceOfAFile) {
    const std::wstring a = put(L"a.gas", source("a", "b"));
    const std::wstring b = put(L"b.gas", source("b", ""));
    listFiles({b});
    chain.open(L"a", a);
    host.answers = {Answer::no};
    chain.resetFiles();
    EXPECT_EQ(chain.files(), (Files{b, a}));
    EXPECT_EQ(host.log, Lines{"ask: Really reset the list of files that are searched for source? "
                              "| Kestrel | question | noYes"});
    host.answers = {Answer::yes};
    chain.resetFiles();
    EXPECT_EQ(chain.files(), Files{L"a"});
    host.log.clear();
    chain.click(1);
    Lines log = loadFailed(L"a");
    log.push_back(filePrompt()[0]);
    EXPECT_EQ(host.log, log);
    // Its second click asks at once.
    host.log.clear();
    chain.click(1);
    EXPECT_EQ(host.log, filePrompt());
    // Unless there is such a file.
    current.put(L"a", source("b", ""));
    chain.click(1);
    EXPECT_EQ(chain.nodes()[1].tag, L"a");
    // A node knows its own file without the list.
    host.log.clear();
    chain.click(0);
    EXPECT_EQ(chain.currentFile(), a);
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Chain, SavesTheListIntoTheProgramsFolder) {
    programs.put(L"spec.his", "before");
    const std::wstring a = put(L"a.gas", source("a", ""));
    listFiles({L"x.gas", L""});
    chain.open(L"a", a);
    chain.saveFiles();
    EXPECT_EQ(programs.bytes(L"spec.his"), "before\r\nx.gas\r\n\r\n" + test::shown(a));
    EXPECT_EQ(programs.bytes(L"spec.his.bak"), "before");
    EXPECT_EQ(current.bytes(L"spec.his"), "x.gas\r\n");
}

TEST_F(Chain, AChangedFileIsLoadedAgain) {
    const std::wstring a = putOld(L"a.gas", source("a", "b"));
    const std::wstring b = putOld(L"b.gas", source("x", "", "1"));
    listFiles({b});
    chain.open(L"a", a);
    const auto search = [&] {
        host.log.clear();
        chain.click(0);
        chain.click(1);
        return host.log.empty();
    };
    // What looks as before is not loaded: this is what makes a long list fast.
    const struct {
        const char* name;
        const char* doc;
        bool old;
        bool found;
    } changes[] = {{"x", "1", true, false}, {"b", "1", false, true}, {"x", "1", false, false},
                   {"b", "1", false, true}, {"x", "1", true, false}, {"b", "1", true, false},
                   {"b", "10", false, true}};
    for (const auto& change : changes) {
        const std::string text = source(change.name, "", change.doc);
        put(L"b.gas", text);
        if (change.old) putOld(L"b.gas", text);
        EXPECT_EQ(search(), change.found) << change.name << change.doc << change.old;
    }
    // Unless it was written so lately that it may still change in the same moment.
    const auto now = std::filesystem::file_time_type::clock::now();
    for (const char* name : {"x", "b"}) {
        put(L"b.gas", source(name, "", "100"));
        std::filesystem::last_write_time(folder.native(L"b.gas"), now);
        EXPECT_EQ(search(), *name == 'b');
    }
    // The current file too; one that is gone stays as it was loaded.
    put(L"b.gas", source("b", "", "200"));
    chain.click(1);
    EXPECT_NE(chain.text().find(L"200"), std::wstring::npos);
    std::filesystem::remove(folder.native(L"b.gas"));
    chain.click(1);
    EXPECT_NE(chain.text().find(L"200"), std::wstring::npos);
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Chain, AFileThatWasOnlyRememberedIsLoadedWhenItIsNeeded) {
    const std::wstring a = putOld(L"a.gas", source("a", "p") + source("p", "q"));
    const std::wstring b = putOld(L"b.gas", source("b", "c") + source("p", "z"));
    listFiles({a, b});
    chain.open(L"a", a);
    for (const std::size_t node : {2U, 0U, 2U}) chain.click(node);
    EXPECT_EQ(chain.currentFile(), b);
    chain.click(1);
    EXPECT_NE(chain.text().find(L"\"z\""), std::wstring::npos);
    EXPECT_EQ(host.logged("ask"), Lines{});
}

TEST_F(Chain, AsksByTheNameThatFindsTheTemplate) {
    std::vector<GasTemplate> templates;
    ASSERT_TRUE(loadGasText(L"[info]\r\n{\r\nspecializes = x;\r\n}\r\n", templates));
    EXPECT_EQ(chainName(templates[0]), L"Info0");
    ASSERT_TRUE(loadGasText(L"[t:template,n:a]\r\n{\r\n}\r\n", templates));
    EXPECT_EQ(chainName(templates[0]), L"a");
}

}  // namespace
}  // namespace kestrel
