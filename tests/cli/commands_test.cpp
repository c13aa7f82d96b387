// The commands, from their words to exit code, output and messages.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "cli/run.h"
#include "services/bytes.h"
#include "services/files.h"
#include "services/program.h"
#include "support/tempfolder.h"

namespace kestrel::cli {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::wstring>;

const std::wstring kSamples = fromUtf8(KESTREL_SAMPLES);
const std::string kUsage = "; \"kestrel-cli --help\" shows the usage\n";
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

struct CommandCase {
    const char* name;
    Words words;
    Outcome expected;
};

void PrintTo(const CommandCase& c, std::ostream* out) {
    *out << c.name;
}

class Commands : public testing::TestWithParam<CommandCase> {};

TEST_P(Commands, GiveCodeOutputAndMessages) {
    EXPECT_EQ(outcome(GetParam().words), GetParam().expected);
}

const CommandCase kUsageCases[] = {
    {"nothing", {}, {2, "", "kestrel-cli: name a command" + kUsage}},
    {"unknown", {L"lst", L"f"}, {2, "", "kestrel-cli: there is no command \"lst\"" + kUsage}},
    {"too_few", {L"show", L"f"}, {2, "", "kestrel-cli: write \"show FILE NAME\"" + kUsage}},
    {"too_many", {L"list", L"f", L"g"}, {2, "", "kestrel-cli: write \"list FILE\"" + kUsage}},
    {"no_files", {L"check"}, {2, "", "kestrel-cli: write \"check FILE...\"" + kUsage}},
    {"option_of_another",
     {L"list", L"f", L"--in", L"g"},
     {2, "", "kestrel-cli: \"list\" has no option \"--in\"" + kUsage}},
    {"unknown_option",
     {L"list", L"-f.gas"},
     {2, "",
      "kestrel-cli: there is no option \"-f.gas\"; put \"--\" before names that begin with \"-\"" +
          kUsage}},
    {"version", {L"--version"}, {0, "kestrel-cli 1.0.0\n", ""}},
};
INSTANTIATE_TEST_SUITE_P(Usage, Commands, testing::ValuesIn(kUsageCases));

const CommandCase kListAndShow[] = {
    {"list", {L"list", L"@/one-line.gas"}, {0, "Fog bell\tTemplate\nTemplate1\tTemplate\n", ""}},
    {"list_in_utf8",
     {L"list", L"@/high-bytes.gas"},
     {0, "Caf\xC3\xA9 du Quai\tTemplate\nCrate with marks\tTemplate\n", ""}},
    {"list_unknown_kind",
     {L"list", L"@/tides.gas"},
     {0, "tide_table0\ttide_table\ntide_table1\ttide_table\n", ""}},
    {"list_missing",
     {L"list", L"@/none.gas"},
     {1, "", "kestrel-cli: @/none.gas: there is no such file\n"}},
    {"list_folder",
     {L"list", L"@"},
     {1, "", "kestrel-cli: @: this is a folder; name a .gas file in it\n"}},
    {"list_unloadable",
     {L"list", L"@/folder/ledger.gas"},
     {1, "", "kestrel-cli: @/folder/ledger.gas: " + kNoData}},
    {"show_listed_by_doc",
     {L"show", L"@/chain-c.gas", L"Oar", L"--listed"},
     {0,
      "[t:template,n:oar_single]\r\n{\r\n    doc = \"Oar\";\r\n    [look]\r\n    {\r\n"
      "        model = \"m_oar\";\r\n    }\r\n}\r\n",
      ""}},
    {"show_listed_by_name",
     {L"--listed", L"show", L"@/folder/boats.gas", L"skiff_ferry"},
     {0,
      "[t:template,n:skiff_ferry]\r\n{\r\n    doc = \"Ferry skiff\";\r\n"
      "    specializes = \"skiff_plain\";\r\n    fare = 3;\r\n    [seats] { count = 6; }\r\n}\r\n",
      ""}},
    {"show_by_shown_name",
     {L"show", L"@/one-line.gas", L"Template1", L"--listed"},
     {0,
      "[t:template,n:bell_watch]\r\n{\r\n    [hours]\r\n    {\r\n"
      "        first = \"00:00\"; second = \"04:00\"; }\r\n    third = \"08:00\";\r\n}\r\n}\r\n",
      ""}},
    {"show_nothing",
     {L"show", L"@/single.gas", L"weather"},
     {1, "",
      "kestrel-cli: @/single.gas: there is no template \"weather\"; \"kestrel-cli list\" shows "
      "those of a file\n"}},
    {"dump",
     {L"dump", L"@/chain-c.gas"},
     {0,
      R"({"Name":"Oar","Kind":"Template","Text":"[t:template,n:oar_single]\r\n{\r\n    doc = )"
      R"(\"Oar\";\r\n    [look]\r\n    {\r\n        model = \"m_oar\";\r\n    }\r\n}\r\n",)"
      R"("Comments":"","Properties":[["name","oar_single","",false,0],["doc","Oar","",false,0],)"
      R"(["look","","look",true,1],["model","m_oar","look",false,1]]})"
      "\n"
      R"({"Name":"Plain dinghy","Kind":"Template","Text":"[t:template,n:dinghy_plain]\r\n{\r\n)"
      R"(    doc = \"Plain dinghy\";\r\n    screen_name = \"Dinghy\";\r\n    [look]\r\n    {\r\n)"
      R"(        model = \"m_dinghy\";\r\n        texture = \"b_pine_oiled\";\r\n    }\r\n)"
      R"(    [body]\r\n    {\r\n        weight = 85.0;\r\n        floats = true;\r\n    }\r\n}\r\n",)"
      R"("Comments":"","Properties":[["name","dinghy_plain","",false,0],)"
      R"(["doc","Plain dinghy","",false,0],["screen_name","Dinghy","",false,0],)"
      R"(["look","","look",true,1],["model","m_dinghy","look",false,1],)"
      R"(["texture","b_pine_oiled","look",false,1],["body","","body",true,2],)"
      R"(["weight","85.0","body",false,2],["floats","true","body",false,2]]})"
      "\n",
      ""}},
};
INSTANTIATE_TEST_SUITE_P(ListAndShow, Commands, testing::ValuesIn(kListAndShow));

const std::string kLedger = "kestrel-cli: @/folder/ledger.gas: " + kNoData +
                            "kestrel-cli: @/folder/ledger.gas: Error loading gas file!\n";

const CommandCase kChains[] = {
    {"over_three_files",
     {L"chain", L"@/folder/boats.gas", L"Racing skiff", L"--in", L"@/folder"},
     {0,
      "skiff_racing\t@/folder/boats.gas\nskiff_plain\t@/folder/HULLS.GAS\n"
      "boat_wooden\t@/folder/timber.gas\n",
      kLedger}},
    {"without_a_folder",
     {L"chain", L"@/folder/boats.gas", L"skiff_racing"},
     {1, "skiff_racing\t@/folder/boats.gas\nskiff_plain\t\n",
      "kestrel-cli: no file has the template \"skiff_plain\"; name the folder of its file with "
      "--in\n"}},
    {"missing_parent",
     {L"chain", L"@/folder/strays.gas", L"buoy_red", L"--in", L"@/folder"},
     {1, "buoy_red\t@/folder/strays.gas\nbuoy_sunken\t\n",
      kLedger + "kestrel-cli: no file has the template \"buoy_sunken\"; name the folder of its "
                "file with --in\n"}},
    {"cycle_of_two",
     {L"chain", L"@/folder/knots.gas", L"knot_bowline"},
     {1,
      "knot_bowline\t@/folder/knots.gas\nknot_sheet\t@/folder/knots.gas\n"
      "knot_bowline\t@/folder/knots.gas\n",
      "kestrel-cli: the chain comes back to \"knot_bowline\", so it has no end\n"}},
    {"its_own_parent",
     {L"chain", L"@/folder/knots.gas", L"Granny knot"},
     {1, "knot_granny\t@/folder/knots.gas\nknot_granny\t@/folder/knots.gas\n",
      "kestrel-cli: the chain comes back to \"knot_granny\", so it has no end\n"}},
    {"no_parent",
     {L"chain", L"@/chain-c.gas", L"oar_single"},
     {0, "oar_single\t@/chain-c.gas\n", ""}},
    {"no_start",
     {L"chain", L"@/chain-c.gas", L"dinghy_tender"},
     {1, "",
      "kestrel-cli: @/chain-c.gas: there is no template \"dinghy_tender\"; \"kestrel-cli list\" "
      "shows those of a file\n"}},
    {"no_folder",
     {L"chain", L"@/chain-c.gas", L"oar_single", L"--in", L"@/none"},
     {1, "", "kestrel-cli: @/none: there is no such folder\n"}},
};
INSTANTIATE_TEST_SUITE_P(Chains, Commands, testing::ValuesIn(kChains));

const CommandCase kChecks[] = {
    {"fine", {L"check", L"@/harbour.gas", L"@/high-bytes.gas"}, {0, "", ""}},
    {"found",
     {L"check", L"@/comments-first.gas", L"@/single.gas", L"@/mixed-ends.gas"},
     {1,
      "@/comments-first.gas:2: cut (a \";\" ends a comment: the rest of the line is none): "
      "// (hung on hooks\n"
      "@/comments-first.gas:2: ignored (this is no property, header, brace or comment): "
      "see the quay lamps for posts)\n"
      "@/comments-first.gas:10: cut (what stands before \"//\" becomes a part of the comment): "
      "hook // = \"iron\"\n"
      "@/mixed-ends.gas:4: cut (what stands behind the second \"=\" is left out): "
      "scale = 5000\\n    depth = 12\n",
      ""}},
    {"goes_on_behind_a_bad_file",
     {L"check", L"@/none.gas", L"@/folder/ledger.gas", L"@/mixed-ends.gas"},
     {1,
      "@/mixed-ends.gas:4: cut (what stands behind the second \"=\" is left out): "
      "scale = 5000\\n    depth = 12\n",
      "kestrel-cli: @/none.gas: there is no such file\nkestrel-cli: @/folder/ledger.gas: " +
          kNoData}},
};
INSTANTIATE_TEST_SUITE_P(Checks, Commands, testing::ValuesIn(kChecks));

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

    const test::TempFolder files;
};

TEST_F(InFolder, ConvertWritesTabFiles) {
    files.put(L"a b.gas", bytesOf(KESTREL_SAMPLES "/single.gas"));
    files.put(L"bad.GAS", "no block");
    EXPECT_EQ(outcomeHere({L"convert", L"#"}),
              (Outcome{0, "Files processed: 2\nFiles converted: 1\nOutput folder: #/\n", ""}));
    EXPECT_EQ(files.bytes(L"a b.tab").substr(0, 10), "Filename: ");
    EXPECT_EQ(files.bytes(L"bad.tab"), "(missing)");
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--build", L"7"}).code, 0);
    const std::string head = "Title: \r\nAuthor: \r\nBuild: 7\r\nCopyright: \r\nFilename: ";
    EXPECT_EQ(files.bytes(L"a b.tab").substr(0, head.size()), head);
}

TEST_F(InFolder, ConvertWritesASingleFile) {
    files.put(L"a.gas", bytesOf(KESTREL_SAMPLES "/single.gas"));
    const std::string counts = "Files processed: 1\nFiles converted: 1\nOutput filename: #/";
    const Words words{L"convert", L"#",        L"--title",     L"T", L"--author",
                      L"A",       L"--build=", L"--copyright", L"C", L"--single"};
    Words toOne = words;
    toOne.push_back(L"#/one.tab");
    EXPECT_EQ(outcomeHere(toOne), (Outcome{0, counts + "one.tab\n", ""}));
    const std::string head =
        "Title: T\r\nAuthor: A\r\nBuild: \r\nCopyright: C\r\n"
        "Files processed: 1\r\nFiles converted: 1\r\n+++++";
    EXPECT_EQ(files.bytes(L"one.tab").substr(0, head.size()), head);
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--single="}),
              (Outcome{0, counts + "Converted.tab\n", ""}));
    EXPECT_EQ(files.names(), (std::vector<std::string>{"Converted.tab", "a.gas", "one.tab"}));
}

TEST_F(InFolder, ConvertTellsWhatFails) {
    const std::string none = "kestrel-cli: #: there is no .gas file in this folder\n";
    EXPECT_EQ(outcomeHere({L"convert", L"#"}), (Outcome{1, "", none}));
    EXPECT_EQ(outcomeHere({L"convert", L"#/none"}),
              (Outcome{1, "", "kestrel-cli: #/none: there is no such folder\n"}));
    EXPECT_EQ(outcomeHere({L"convert", L""}),
              (Outcome{1, "", "kestrel-cli: there is no such folder\n"}));
    const std::string source = bytesOf(KESTREL_SAMPLES "/single.gas");
    files.put(L"a.GAS", source);
    EXPECT_EQ(outcomeHere({L"convert", L"#", L"--single", L"#/a.GAS"}),
              (Outcome{1, "",
                       "kestrel-cli: #/a.GAS: this is a .gas file; name another output with "
                       "--single\n"}));
    EXPECT_EQ(files.bytes(L"a.GAS"), source);
    fs::create_directory(files.native(L"a.tab"));
    const Outcome refused = outcomeHere({L"convert", L"#"});
    EXPECT_EQ(refused.code, 1) << "a write failed";
    EXPECT_EQ(refused.err.substr(0, 20), "kestrel-cli: Error (");
}

TEST_F(InFolder, ChainSearchesFilesByTheirNames) {
    for (const wchar_t* name : {L"z.gas", L"m.gas", L"a.gas", L"q.gas"}) {
        files.put(name, "[t:template,n:p]\n{\n}\n");
    }
    const std::wstring start =
        files.put(L"start.gas", "[t:template,n:c]\n{\nspecializes = \"p\";\n}\n");
    EXPECT_EQ(outcomeHere({L"chain", start, L"c", L"--in", L"#"}),
              (Outcome{0, "c\t#/start.gas\np\t#/a.gas\n", ""}));
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
                       "#/a.gas:2:" + why + std::string(120, 'x') + "...\n" + "#/a.gas:3:" + why +
                           "\\x1B[2J\\ny\n",
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
