#include "gas/chain.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <unordered_map>

#include "gastest.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

// Templates are written as NAME>PARENT(DOC) here; these are their blocks.
std::string blockOf(const std::string& written) {
    const std::string start = written.substr(0, written.find('('));
    const std::string name = start.substr(0, start.find('>'));
    std::string block = "[t:template,n:" + name + "]\r\n{\r\n";
    if (start != written) block += "doc = \"" + written.substr(start.size() + 1) + "\";\r\n";
    if (start != name) block += "specializes = \"" + start.substr(name.size() + 1) + "\";\r\n";
    return replaced(block + "}\r\n", ")\"", "\"");
}

// Tells stories: texts of commands, a line each, with what they changed behind "->".
//
//   write FILE TEMPLATE..., FILE...  old, soon: the same with another time; remove FILE
//   list FILE|FILE                   the list of files to search, in the current folder
//   open NAME FILE, click NODE..., reset, save
//   pick FILE, say yes|no            the answer to the next question; of files, none cancels
//
// Changes are told in this order: the tree ("KEY TEXT FILE"), each node below the one before
// it; the current file and the place of the block in it; the source as it was written; the
// list of files; what the user was asked and told.
class Teller {
  public:
    Teller() : before_(std::filesystem::current_path()) {
        gProgram().folder = programs_.path();
        gProgram().version.fileDescription = L"Kestrel";
        programs_.put(L"spec.his", "kept");
        std::filesystem::current_path(folder_.native());
    }
    ~Teller() { std::filesystem::current_path(before_); }

    std::string tell(const std::string& story) {
        std::istringstream commands(story);
        std::string told;
        for (std::string line; std::getline(commands, line);) {
            const std::string command = line.substr(0, line.find(" ->"));
            const std::string verb = command.substr(0, command.find(' '));
            host_.log.clear();
            std::string result =
                run(verb, command.substr(std::min(verb.size() + 1, command.size())));
            result += changes();
            told += (told.empty() ? "" : "\n") + command + (result.empty() ? "" : " ->") + result;
        }
        return told;
    }

  private:
    using Clock = std::filesystem::file_time_type::clock;
    using States = std::array<std::string, 4>;

    std::string run(const std::string& verb, const std::string& what) {
        std::istringstream words(what);
        if (verb == "write" || verb == "old" || verb == "soon") {
            for (std::string file; std::getline(words >> std::ws, file, ',');) write(verb, file);
        }
        if (verb == "remove") std::filesystem::remove(folder_.native(fromUtf8(what)));
        if (verb == "list") folder_.put(L"spec.his", lines(what));
        if (verb == "open") {
            const std::size_t blank = what.find(' ');
            chain_ = {};
            known_ = kNothing;
            chain_.open(fromUtf8(what.substr(0, blank)), fromUtf8(what.substr(blank + 1)));
        }
        for (std::size_t node; verb == "click" && words >> node;) chain_.click(node);
        if (verb == "pick") host_.files.emplace_back(fromUtf8(what));
        if (verb == "say") host_.answers.push_back(what == "yes" ? Answer::yes : Answer::no);
        if (verb == "reset") chain_.resetFiles();
        if (verb != "save") return "";
        chain_.saveFiles();
        return " " + flat(programs_.bytes(L"spec.his")) + " replaces " +
               flat(programs_.bytes(L"spec.his.bak")) + ";";
    }

    void write(const std::string& verb, const std::string& file) {
        std::istringstream words(file);
        std::string name, text;
        words >> name;
        for (std::string word; words >> word;) {
            text += blockOf(word);
            written_[blockOf(word)] = word;
        }
        folder_.put(fromUtf8(name), text);
        const std::filesystem::path path = folder_.native(fromUtf8(name));
        // Of a file that nobody is writing, and of one that may still change in the same moment.
        if (verb == "old") std::filesystem::last_write_time(path, start_ - std::chrono::hours(1));
        if (verb == "soon") std::filesystem::last_write_time(path, start_ + kSoon);
    }

    std::string changes() {
        States now = kNothing;
        for (std::size_t i = 0; i < chain_.nodes().size(); ++i) {
            const ChainNode& node = chain_.nodes()[i];
            const std::wstring tag = node.tag.empty() ? L"none" : node.tag;
            now[0] += (i == 0 ? "" : ", ") + toUtf8(node.key + L" " + node.text + L" " + tag);
            if (node.parent + 1 != i) now[0] += " below " + std::to_string(node.parent);
        }
        now[1] += toUtf8(chain_.currentFile());
        if (chain_.block()) now[1] += "#" + std::to_string(chain_.block()->index);
        const std::string text = toUtf8(chain_.text());
        now[2] += written_.contains(text) ? written_.at(text) : text;
        for (const std::wstring& file : chain_.files()) now[3] += toUtf8(file) + "|";
        std::string told;
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (now[i] != known_[i]) told += " " + now[i] + ";";
        }
        known_ = now;
        const std::string messages = inWords(host_.log, kWords);
        return told + (messages.empty() ? "" : " " + messages + ";");
    }

    static inline const States kNothing{"", "in ", "shows ", "files "};
    static constexpr std::chrono::milliseconds kSoon{1900};
    static inline const Words kWords{
        {"open: Select the node's source file | All files (*.*)|*.* | .", "file?"},
        {"ask: Really reset the list of files that are searched for source? | Kestrel | question | "
         "noYes",
         "reset?"},
        {"ask: Error loading gas file!\\r\\n\\r\\n", "fails "},
        {"\\r\\nFile loading error: Either no data found or unsupported file type.", ""},
        {" | Kestrel | exclamation | ok", ""}};
    const std::filesystem::path before_;
    const Clock::time_point start_ = Clock::now();
    test::RecordingHost host_;
    test::TempFolder folder_;
    test::TempFolder programs_;
    SpecializesChain chain_;
    States known_ = kNothing;
    std::unordered_map<std::string, std::string> written_;
};

constexpr const char* kStories =
    R"(# The tree is the chain of the first file.
write f a>b(A) b>c(B) c(C)
open a ./f -> root A ./f, K1 B ./f, K2 C ./f; in ./f#0; shows a>b(A); files ./f|;
# A label that holds the separator: the empty piece uses up its number.
write f a(A||C) A
open a ./f -> root A ./f, K2 C ./f; in ./f#1; shows A; files ./f|;
write f a>B b(B)
open z ./f -> root z none; in ./f; shows Source not available.; files ./f|; file?;

# A first file that cannot be loaded leaves an empty tree.
open a ./none -> files ./none|; fails ./none;

# The list is read whole from the current folder, and saved into the program's.
write f a
list x||X|x| |
open a ./f -> root a ./f; in ./f#0; shows a; files x||X|x| ||./f|;
list ./F|y
open a ./f -> root a ./f; in ./f#0; shows a; files ./F|y|;
list 1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|
open a ./f -> root a ./f; in ./f#0; shows a; files 1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17||./f|;
save -> kept|1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17||./f replaces kept;

# Each click adds a level, over the listed files; each node knows its file.
write f a>b(A), g b>c, h x c(C)
list |./h||./g
open a ./f -> root A ./f, K1 b ./f; in ./f#0; shows a>b(A); files |./h||./g|./f|;
click 1 -> root A ./f, K1 b ./g, K3 c ./g; in ./g#0; shows b>c;
click 2 -> root A ./f, K1 b ./g, K3 c ./h; in ./h#1; shows c(C);
click 2
click 0 -> in ./f#0; shows a>b(A);

# A file that the user shows joins the list only when it helps.
write f a>b, g b, h other
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./f|;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
pick ./h
click 1 -> in ./h; file?;
pick ./none
click 1 -> in ./f; file?, fails ./none;
pick ./g
click 1 -> root a ./f, K1 b ./g; in ./g#0; shows b; files ./f|./g|; file?;

# A source that has come into the current file leaves the node without one.
write f a>b
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./f|;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
write f a>b b>c
click 1 -> root a ./f, K1 b none, K3 c ./f; in ./f#1; shows b>c;

# The walk goes on after a failure, and does not load the current file.
write f a>b, g b, empty
list ./empty|./f|./f|./empty|./g
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./empty|./f|./f|./empty|./g|;
remove f
click 1 -> root a ./f, K1 b ./g; in ./g#0; shows b; fails ./empty;

# A file that failed is tried again once it is another.
write f a>b, empty
list ./empty
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./empty|./f|;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; fails ./empty, file?;
click 1 -> file?;
soon empty
click 1 -> fails ./empty, file?;
click 1 -> file?;
write empty b
click 1 -> root a ./f, K1 b ./empty; in ./empty#0; shows b;

# The walk skips the file that is current by then, which it knows as it is written.
write f a>b, h c
list ./h|./f|./f|./h
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./h|./f|./f|./h|;
click 1 -> root a ./f, K1 b none; in ./h; shows Source not available.; file?;
list ./h|./f
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./h|./f|;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
write F a>b
list ./F
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./F|;
click 1 -> root a ./f, K1 b none; in ./F; shows Source not available.; file?;

# The current file comes first, and doc before name.
write f a>b both, g c(named_c) b>both d(c) both>c
list ./g
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./g|./f|;
click 1 -> root a ./f, K1 b ./g, K3 both ./g; in ./g#1; shows b>both;
click 2 -> root a ./f, K1 b ./g, K3 both ./g, K4 c ./g; in ./g#3; shows both>c;
click 3 -> in ./g#2; shows d(c);

# A cycle ends at the first template that comes again; a file is known once it was looked into.
write f a>b b>a
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./f|;
click 1 0 1 0
write f a>b b>A c(A)
open a ./f -> root a ./f, K1 b ./f, K2 A ./f; in ./f#0; shows a>b; files ./f|;
click 2 0 2 0
write f a>b, g b>a z
list ./g
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./g|./f|;
click 1 0 2 0 2 0 2 -> root a ./f, K1 b ./g, K3 a ./g;

# After a reset the name stands in the place of a file, unless there is such a file.
write f a>b, g b
list ./g
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./g|./f|;
say no
reset -> reset?;
reset -> files a|; reset?;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; fails a, file?;
click 1 -> file?;
write a b
click 1 -> root a ./f, K1 b a; in a#0; shows b;
click 0 -> in ./f#0; shows a>b; files a|./f|;

# A file is loaded again when it has changed or may have. What looks as before is not: this is
# what makes a long list fast.
old f a>b, g x(1)
list ./g
open a ./f -> root a ./f, K1 b ./f; in ./f#0; shows a>b; files ./g|./f|;
click 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
write g b(1)
click 0 1 -> root a ./f, K1 b ./g; in ./g#0; shows b(1);
old g x(1)
click 0 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
old g b(1)
click 0 1 -> file?;
old g b(10)
click 0 1 -> root a ./f, K1 b ./g; in ./g#0; shows b(10);
soon g x(100)
click 0 1 -> root a ./f, K1 b none; in ./f; shows Source not available.; file?;
soon g b(100)
click 0 1 -> root a ./f, K1 b ./g; in ./g#0; shows b(100);
# The current file too; one that is gone stays as it was loaded.
write g b(2)
click 1 -> shows b(2);
remove g
click 1

# A file that was only remembered is loaded when it is needed.
old f a>p p>q, g b>c p>z
list ./f|./g
open a ./f -> root a ./f, K1 p ./f, K2 q ./f; in ./f#0; shows a>p; files ./f|./g|;
click 2 0 2 -> root a ./f, K1 p ./f, K2 q none; in ./g; shows Source not available.; file?, file?;
click 1 -> in ./g#1; shows p>z;)";

TEST(Chain, TellsItsStories) {
    const std::string all = kStories;
    for (std::size_t begin = 0, end = 0; end != all.npos; begin = end + 2) {
        end = all.find("\n\n", begin);
        const std::string story = all.substr(begin, end - begin);
        EXPECT_EQ(Teller().tell(story), story);
    }
}

// A walk over the file for each step would take minutes.
TEST(Chain, ALongChainTakesNoWalkOverTheFileForEachStep) {
    const test::RecordingHost host;
    const test::TempFolder folder;
    const int count = 100000;
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += blockOf("t" + std::to_string(i) + ">t" + std::to_string(i + 1));
    }
    ChainDocument document;
    ASSERT_TRUE(document.load(folder.put(L"f", text)));
    const std::wstring history = gstrGetTemplateHistory(document.templates(), L"t0");
    EXPECT_TRUE(history.starts_with(L"t0|t1|t2|"));
    EXPECT_TRUE(history.ends_with(L"|t99999|t100000"));
    for (int i = 0; i < count; ++i) ASSERT_NE(document.find(L"t" + std::to_wstring(i)), nullptr);
}

}  // namespace
}  // namespace kestrel
