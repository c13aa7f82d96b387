// The commands, from their words to exit code, output and messages.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "cli/run.h"
#include "services/bytes.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/program.h"
#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::wstring>;

const std::wstring kSamples = fromUtf8(KESTREL_SAMPLES);
// Between a folder that was given and the files that were found in it.
const std::string kSeparator(1, static_cast<char>(filesystem::separator()));
const std::string kUsage = "; \"kestrel-cli --help\" shows the usage\n";
const std::string kListHint = "; \"kestrel-cli list\" shows those of a file\n";
const std::string kInHint = "; name the folder of its file with --in\n";
const std::string kNoData = "File loading error: Either no data found or unsupported file type.\n";

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string replaced(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    for (std::size_t at; (at = text.find(from)) != text.npos;
         text.remove_prefix(at + from.size())) {
        result.append(text.substr(0, at)).append(to);
    }
    return result.append(text);
}

struct Outcome {
    int code;
    std::string out;
    std::string err;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << "exit " << outcome.code << "\nout: " << outcome.out << "\nerr: " << outcome.err;
}

// In words and in the outcome "@" stands for the folder of the samples.
Outcome outcome(Words words) {
    const ProgramScope program;
    for (std::wstring& word : words) {
        if (word.starts_with(L'@')) word.replace(0, 1, kSamples);
    }
    std::ostringstream out;
    std::ostringstream err;
    const int code = run(words, out, err, false);
    return {code, replaced(out.str(), KESTREL_SAMPLES, "@"),
            replaced(err.str(), KESTREL_SAMPLES, "@")};
}

using Cases = std::vector<std::pair<Words, Outcome>>;

void expectAll(const Cases& cases) {
    for (const auto& [words, expected] : cases) {
        EXPECT_EQ(outcome(words), expected) << testing::PrintToString(words);
    }
}

TEST(Commands, Usage) {
    expectAll(
        {{{}, {2, "", "kestrel-cli: name a command" + kUsage}},
         {{L"lst", L"f"}, {2, "", "kestrel-cli: there is no command \"lst\"" + kUsage}},
         {{L"show", L"f"}, {2, "", "kestrel-cli: write \"show FILE NAME\"" + kUsage}},
         {{L"list", L"f", L"g"}, {2, "", "kestrel-cli: write \"list FILE\"" + kUsage}},
         {{L"check"}, {2, "", "kestrel-cli: write \"check FILE...\"" + kUsage}},
         {{L"list", L"f", L"--in", L"g"},
          {2, "", "kestrel-cli: \"list\" has no option \"--in\"" + kUsage}},
         {{L"list", L"f", L"--codepage", L"932"},
          {2, "",
           "kestrel-cli: There is no code page \"932\"; there are 874, 1250, 1251, 1252, 1253, "
           "1254, 1255, 1256, 1257, 1258" +
               kUsage}},
         {{L"--version"}, {0, "kestrel-cli 1.0.0\n", ""}}});
}

void setPage(const char* number) {
#ifdef _WIN32
    ::_putenv_s("KESTREL_CODEPAGE", number);
#else
    ::setenv("KESTREL_CODEPAGE", number, 1);
#endif
}

TEST(Commands, CodePages) {
    const test::TempFolder folder;
    const std::wstring file =
        folder.put(L"a.gas", "[t:template,n:a]\r\n{\r\n\tdoc = \"\xC4\xE0\";\r\n}\r\n");
    const auto listed = [&file](Words more) {
        more.insert(more.begin(), {L"list", file});
        return outcome(std::move(more)).out;
    };
    EXPECT_EQ(listed({}), "\u00C4\u00E0\tTemplate\n");
    EXPECT_EQ(listed({L"--codepage", L"1251"}), "\u0414\u0430\tTemplate\n");
    setPage("1253");
    EXPECT_EQ(listed({}), "\u0394\u03B0\tTemplate\n");
    EXPECT_EQ(listed({L"--codepage=1250"}), "\u00C4\u0155\tTemplate\n");
    setPage("x");
    EXPECT_EQ(listed({}), "");
    setPage("");
}

TEST(Commands, ListAndShow) {
    expectAll(
        {{{L"list", L"@/one-line.gas"}, {0, "Fog bell\tTemplate\nTemplate1\tTemplate\n", ""}},
         {{L"list", L"@/none.gas"}, {1, "", "kestrel-cli: @/none.gas: there is no such file\n"}},
         {{L"list", L"@"}, {1, "", "kestrel-cli: @: this is a folder; name a .gas file in it\n"}},
         {{L"list", L"@/folder/ledger.gas"},
          {1, "", "kestrel-cli: @/folder/ledger.gas: " + kNoData}},
         {{L"show", L"@/chain-c.gas", L"Oar", L"--listed"},
          {0,
           "[t:template,n:oar_single]\r\n{\r\n    doc = \"Oar\";\r\n    [look]\r\n    {\r\n"
           "        model = \"m_oar\";\r\n    }\r\n}\r\n",
           ""}},
         {{L"show", L"@/single.gas", L"weather"},
          {1, "", "kestrel-cli: @/single.gas: there is no template \"weather\"" + kListHint}}});
}

const std::string kFound = "@/folder" + kSeparator;
const std::string kLedger = "kestrel-cli: " + kFound + "ledger.gas: " + kNoData;

TEST(Commands, Chain) {
    expectAll(
        {{{L"chain", L"@/folder/boats.gas", L"Racing skiff", L"--in", L"@/folder"},
          {0,
           "skiff_racing\t@/folder/boats.gas\nskiff_plain\t" + kFound + "HULLS.GAS\n" +
               "boat_wooden\t" + kFound + "timber.gas\n",
           kLedger}},
         {{L"chain", L"@/folder/boats.gas", L"skiff_racing"},
          {1, "skiff_racing\t@/folder/boats.gas\nskiff_plain\t\n",
           "kestrel-cli: no file has the template \"skiff_plain\"" + kInHint}},
         {{L"chain", L"@/folder/strays.gas", L"buoy_red", L"--in", L"@/folder"},
          {1, "buoy_red\t@/folder/strays.gas\nbuoy_sunken\t\n",
           kLedger + "kestrel-cli: no file has the template \"buoy_sunken\"" + kInHint}},
         {{L"chain", L"@/folder/knots.gas", L"knot_bowline"},
          {1,
           "knot_bowline\t@/folder/knots.gas\nknot_sheet\t@/folder/knots.gas\n"
           "knot_bowline\t@/folder/knots.gas\n",
           "kestrel-cli: the chain comes back to \"knot_bowline\", so it has no end\n"}},
         {{L"chain", L"@/chain-c.gas", L"oar_single"}, {0, "oar_single\t@/chain-c.gas\n", ""}},
         {{L"chain", L"@/chain-c.gas", L"oar_single", L"--in", L"@/none"},
          {1, "", "kestrel-cli: @/none: there is no such folder\n"}}});
}

TEST(Commands, Check) {
    expectAll(
        {{{L"check", L"@/harbour.gas", L"@/high-bytes.gas"}, {0, "", ""}},
         {{L"check", L"@/comments-first.gas", L"@/single.gas", L"@/mixed-ends.gas"},
          {1,
           "@/comments-first.gas:2: cut (a \";\" ends a comment: the rest of the line is none): "
           "// (hung on hooks\n"
           "@/comments-first.gas:2: ignored (this is no property, header, brace or comment): "
           "see the quay lamps for posts)\n"
           "@/comments-first.gas:10: cut (what stands before \"//\" becomes a part of "
           "the comment): hook // = \"iron\"\n"
           "@/mixed-ends.gas:4: cut (what stands behind the second \"=\" is left out): "
           "scale = 5000\\n    depth = 12\n",
           ""}},
         {{L"check", L"@/none.gas", L"@/folder/ledger.gas", L"@/mixed-ends.gas"},
          {1,
           "@/mixed-ends.gas:4: cut (what stands behind the second \"=\" is left out): "
           "scale = 5000\\n    depth = 12\n",
           "kestrel-cli: @/none.gas: there is no such file\nkestrel-cli: @/folder/ledger.gas: " +
               kNoData}}});
}

TEST(Show, GivesTheTextOfTheGoldenFile) {
    for (const auto& [sample, name] :
         {std::pair(L"single", L"weathervane"), std::pair(L"info", L"Info0")}) {
        const std::wstring path = kSamples + L"/" + sample + L".gas";
        const std::string golden = bytesOf(fs::path(KESTREL_GOLDEN) / (toUtf8(sample) + ".tab"));
        EXPECT_EQ(outcome({L"show", path, name}),
                  (Outcome{0, golden.substr(golden.find("DS Template for: ")), ""}));
    }
}

class InFolder : public testing::Test {
  protected:
    // As above; "#" stands for the folder.
    Outcome outcomeHere(Words words) const {
        for (std::wstring& word : words) {
            if (word.starts_with(L'#')) word.replace(0, 1, files.path());
        }
        Outcome result = outcome(std::move(words));
        result.out = replaced(result.out, toUtf8(files.path()), "#");
        result.err = replaced(result.err, toUtf8(files.path()), "#");
        return result;
    }

    const std::string here = "#" + kSeparator;
    const test::TempFolder files;
};

TEST_F(InFolder, DumpWritesAnObjectALine) {
    files.put(L"a.gas", "[info]\n{\n[b]\n{\nc = \"\xE9\";\n}\n}\n[info]\n{\na = 1;\n}\n");
    EXPECT_EQ(outcomeHere({L"dump", L"#/a.gas"}),
              (Outcome{0,
                       R"({"Name":"Info0","Kind":"Info","Text":"[info]\r\n{\r\n[b]\r\n{\r\n)"
                       "c = \\\"\xC3\xA9\\\";"
                       R"(\r\n}\r\n}\r\n","Comments":"","Properties":[["b","","b",true,1],)"
                       "[\"c\",\"\xC3\xA9\",\"b\",false,1]]}\n"
                       R"({"Name":"Info1","Kind":"Info","Text":"[info]\r\n{\r\na = 1;\r\n}\r\n",)"
                       R"("Comments":"","Properties":[["a","1","",false,0]]})"
                       "\n",
                       ""}));
}

TEST_F(InFolder, ConvertWritesTabFiles) {
    files.put(L"a b.gas", bytesOf(KESTREL_SAMPLES "/single.gas"));
    files.put(L"bad.GAS", "no block");
    EXPECT_EQ(outcomeHere({L"convert", L"#"}),
              (Outcome{1, "Files processed: 2\nFiles converted: 1\nOutput folder: " + here + "\n",
                       "kestrel-cli: bad.GAS: it holds no .gas data\n"}));
    EXPECT_EQ(files.bytes(L"a b.tab").substr(0, 10), "Filename: ");
    EXPECT_EQ(files.bytes(L"bad.tab"), "(missing)");
    fs::remove(files.native(L"bad.GAS"));
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--build", L"7"}).code, 0);
    const std::string head = "Title: \r\nAuthor: \r\nBuild: 7\r\nCopyright: \r\nFilename: ";
    EXPECT_EQ(files.bytes(L"a b.tab").substr(0, head.size()), head);
}

TEST_F(InFolder, ConvertWritesASingleFile) {
    files.put(L"a.gas", bytesOf(KESTREL_SAMPLES "/single.gas"));
    const std::string counts = "Files processed: 1\nFiles converted: 1\nOutput filename: #";
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--title", L"T", L"--author", L"A", L"--build=",
                           L"--copyright", L"C", L"--single", L"#/one.tab"}),
              (Outcome{0, counts + "/one.tab\n", ""}));
    const std::string head =
        "Title: T\r\nAuthor: A\r\nBuild: \r\nCopyright: C\r\n"
        "Files processed: 1\r\nFiles converted: 1\r\n+++++";
    EXPECT_EQ(files.bytes(L"one.tab").substr(0, head.size()), head);
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--single="}),
              (Outcome{0, counts + kSeparator + "Converted.tab\n", ""}));
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--single", L"#/one"}).code, 0) << "one.tab";
    EXPECT_EQ(files.names(),
              (std::vector<std::string>{"Converted.tab", "a.gas", "one.tab", "one.tab.bak"}));
}

TEST_F(InFolder, ConvertTellsWhatFails) {
    const std::string none = "kestrel-cli: #: there is no .gas file in this folder\n";
    EXPECT_EQ(outcomeHere({L"convert", L"#"}), (Outcome{1, "", none}));
    EXPECT_EQ(outcomeHere({L"convert", L"#/none"}),
              (Outcome{1, "", "kestrel-cli: #/none: there is no such folder\n"}));
    EXPECT_EQ(outcomeHere({L"convert", L""}),
              (Outcome{1, "", "kestrel-cli: there is no such folder\n"}));
    files.put(L"a.GAS", bytesOf(KESTREL_SAMPLES "/single.gas"));
    fs::create_directory(files.native(L"a.tab"));
    const Outcome refused = outcomeHere({L"convert", L"#"});
    EXPECT_EQ(refused.code, 1) << "a write failed";
    EXPECT_EQ(refused.err.substr(0, 41), "kestrel-cli: a.GAS: Cannot write 'a.tab':");
}

TEST_F(InFolder, ChainSearchesFilesByTheirNames) {
    for (const wchar_t* name : {L"z.gas", L"m.gas", L"a.gas", L"q.gas"}) {
        files.put(name, "[t:template,n:p]\n{\n}\n");
    }
    const std::wstring start =
        files.put(L"start.gas", "[t:template,n:c]\n{\nspecializes = \"p\";\n}\n");
    EXPECT_EQ(outcomeHere({L"chain", start, L"c", L"--in", L"#"}),
              (Outcome{0, "c\t" + here + "start.gas\np\t" + here + "a.gas\n", ""}));
}

TEST_F(InFolder, NamesMayBeginWithADash) {
    const fs::path before = fs::current_path();
    files.put(L"-a.gas", "[info]\n{\nodd\n}\n");
    fs::current_path(files.native());
    EXPECT_EQ(outcome({L"list", L"--", L"-a.gas"}), (Outcome{0, "Info0\tInfo\n", ""}));
    EXPECT_EQ(outcome({L"check", L"--", L"-a.gas"}).out.substr(0, 10), "-a.gas:3: ");
    fs::current_path(before);
}

TEST_F(InFolder, LongAndOddTextsStayOnALine) {
    const std::wstring path =
        files.put(L"a.gas", "[info]\r\n" + std::string(200, 'x') + "\r\n\x1B[2J\ny\r\n");
    const std::string why = " ignored (this is no property, header, brace or comment): ";
    EXPECT_EQ(outcomeHere({L"check", path}),
              (Outcome{1,
                       here + "a.gas:2:" + why + std::string(120, 'x') + "...\n" + here +
                           "a.gas:3:" + why + "\x1B[2J\\ny\n",
                       ""}));
}

// A stream whose writes fail.
class FullBuffer final : public std::streambuf {};

TEST(Run, AFailedWriteFails) {
    const ProgramScope program;
    FullBuffer full;
    std::ostream out(&full);
    std::ostringstream err;
    EXPECT_EQ(run({L"--version"}, out, err, false), 1);
    EXPECT_EQ(err.str(), "kestrel-cli: the output could not be written whole; is the disk full?\n");
}

TEST(Run, HelpNamesEveryCommandAndOption) {
    const std::string help = outcome({L"--help", L"anything"}).out;
    for (const char* word :
         {"list", "show", "--listed", "chain", "--in", "convert", "--single", "--title", "--author",
          "--build", "--copyright", "check", "dump", "--help", "--version"}) {
        EXPECT_NE(help.find(word), std::string::npos) << word;
    }
}

}  // namespace
}  // namespace kestrel::cli
