#include "tank/reports.h"

#include "tank/archives.h"

namespace kestrel {
namespace {

using test::Lines;
using test::shown;

const char* const kWhen = "Time: 10:20:30\\r\\nDate: Friday, 1 March 2002\\r\\n\\r\\n";

// An archive with each kind of entry.
const char* const kArt =
    "tank|log\n"
    "file|name=a.gas|size=10|comp=8|crc=-5|format=1|data=[t:a]\\0xy\n"
    "dir|name=art|path=\n"
    ".file|name=x.RAW|path=\\art|size=3|comp=3|flags=-1|format=7|data=\x01\x02\\0\n"
    ".dir|name=maps|path=\\art\n"
    "..file|name=deep.gas|path=\\art\\maps|size=2|comp=2|format=2|data=ab\n"
    ".file|name=last.txt|path=\\art\n"
    "file|name=z.gas\n";

class Reports : public test::Archives {
  protected:
    bool list(std::int16_t type = kNameList) { return gblnListTank(path, report, &host, type); }
    bool find(std::wstring_view text) { return gblnFindChild(path, text, 5, report, &host); }

    // The report without its heading, line ends and tabs visible.
    std::string body() const {
        const std::string text = shown(report);
        return text.substr(text.find(kWhen) + std::string(kWhen).size());
    }

    // The names in a listing, in order.
    Lines names() const {
        Lines names;
        const std::wstring label = L"Name: \t";
        for (std::size_t at = 0; (at = report.find(label, at)) != report.npos;) {
            at += label.size();
            names.push_back(shown(report.substr(at, report.find(L'\r', at) - at)));
        }
        return names;
    }

    std::wstring path;
    std::wstring report = L"before";
};

TEST_F(Reports, AListingTellsEveryField) {
    path = put("tank\nfile|name=a.gas|size=10|comp=8|crc=-5|format=1\n");
    EXPECT_TRUE(list(kFullList));
    EXPECT_EQ(shown(report), "Filename: " + toUtf8(path) + "\\r\\n" + kWhen +
                                 "Name: \\ta.gas\\r\\nPath: \\t\\Root\\r\\n"
                                 "Size: \\t10 (bytes)\\r\\nCompSize: \\t8 (bytes)\\r\\n"
                                 "CRC: \\t-5\\r\\nFlags: \\t0\\r\\nFormat: \\tZLib\\r\\n"
                                 "IsDirectory: \\tNo\\r\\n\\r\\n");
    for (const std::int16_t type : std::initializer_list<std::int16_t>{0, 2, -1}) {
        EXPECT_TRUE(list(type));
        EXPECT_EQ(body(),
                  "Name: \\ta.gas\\r\\nPath: \\t\\Root\\r\\nIsDirectory: \\tNo\\r\\n\\r\\n");
    }
}

TEST_F(Reports, ADirectoryStandsBeforeWhatItHolds) {
    path = put(kArt);
    EXPECT_TRUE(list(kFullList));
    EXPECT_EQ(names(), (Lines{"a.gas", "art", "x.RAW", "maps", "deep.gas", "last.txt", "z.gas"}));
    EXPECT_NE(body().find("Name: \\tdeep.gas\\r\\nPath: \\t\\Root\\art\\maps\\r\\n"), body().npos);
    EXPECT_NE(body().find("Flags: \\t-1\\r\\nFormat: \\tUnkown(Type: 7)\\r\\n"), body().npos);
    EXPECT_NE(body().find("Format: \\tRAW\\r\\nIsDirectory: \\tYes\\r\\n\\r\\n"), body().npos);
}

TEST_F(Reports, TheDialogFollowsTheWalk) {
    path = put(kArt);
    host.logsProgressSteps = true;
    ASSERT_TRUE(list());
    EXPECT_EQ(host.log,
              (Lines{"disable", "Process: Processing: a.dsres", "SubProcess: ", "show: owner",
                     "ShowProgress: 0 | Child: a.gas", "Process: Parent: art",
                     "ShowProgress: 0 | Child: x.RAW", "Process: Parent: maps",
                     "ShowProgress: 0 | Child: deep.gas", "ShowProgress: 25 | Child: maps",
                     "ShowProgress: 50 | Child: last.txt", "ShowProgress: 25 | Child: art",
                     "ShowProgress: 50 | Child: z.gas", "unload", "enable", "focus"}));
    EXPECT_FALSE(gProgram().progressShowing);
    host.log.clear();
    ASSERT_TRUE(find(L"DEEP"));
    EXPECT_EQ(host.log,
              (Lines{"disable", "SubProcess: ", "show: owner", "ShowProgress: 0 | Child: a.gas",
                     "Process: Parent: art", "ShowProgress: 0 | Child: x.RAW",
                     "Process: Parent: maps", "unload", "enable", "focus"}));
}

TEST_F(Reports, ACancelEndsEachLevelAtItsNextEntry) {
    path = put(kArt);
    const struct {
        std::size_t steps;
        Lines names;
        Lines after;  // what is still shown then
    } kRows[] = {
        {0, {"a.gas"}, {}},
        {1, {"a.gas", "art", "x.RAW"}, {"25 | Child: art"}},
        {2, {"a.gas", "art", "x.RAW", "maps", "deep.gas"}, {"25 | Child: maps", "25 | Child: art"}},
        {4, {"a.gas", "art", "x.RAW", "maps", "deep.gas", "last.txt"}, {"25 | Child: art"}},
    };
    host.logsProgressSteps = true;
    for (const auto& row : kRows) {
        host.log.clear();
        host.progressSteps = 0;
        host.cancelAt = row.steps;
        EXPECT_TRUE(list());
        EXPECT_EQ(names(), row.names) << row.steps;
        Lines steps = host.logged("ShowProgress: ");
        steps.erase(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(row.steps + 1));
        for (std::string& step : steps) step.erase(0, std::string("ShowProgress: ").size());
        EXPECT_EQ(steps, row.after);
        host.progressSteps = 0;
        EXPECT_FALSE(find(L"z.gas")) << row.steps;
        EXPECT_EQ(body(), "") << row.steps;
    }
}

TEST_F(Reports, AHitIsToldWithItsData) {
    path = put(kArt);
    const std::string plus(25, '+');
    const struct {
        const wchar_t* searched;
        const char* name;
        std::string data;  // what follows "IsDirectory: \t"
    } kRows[] = {
        {L"A.GA", "a.gas",
         "No\\r\\n\\r\\nData follows(10 bytes): \\r\\n" + plus + "\\r\\n[t:a]\\x00  \\r\\n" + plus},
        {L"raw", "x.RAW", "No\\r\\n\\r\\nUnable to show non-text data(3 bytes)."},
        {L"map", "maps", "Yes\\r\\n\\r\\nChild is a directory and has no data."},
        {L"LAST", "last.txt", "No\\r\\n\\r\\nUnable to get child data..."},
    };
    const std::string label = "IsDirectory: \\t";
    EXPECT_TRUE(find(L"last"));
    EXPECT_TRUE(body().starts_with(
        "Name: \\tlast.txt\\r\\nPath: \\t\\Root\\art\\r\\nSize: \\t0 (bytes)\\r\\nCompSize: \\t0 "
        "(bytes)\\r\\nCRC: \\t0\\r\\nFlags: \\t0\\r\\nFormat: \\tRAW\\r\\nIsDirectory: \\tNo"));
    for (const auto& row : kRows) {
        EXPECT_TRUE(find(row.searched));
        EXPECT_EQ(names(), Lines{row.name});
        EXPECT_EQ(body().substr(body().find(label) + label.size()), row.data);
    }
    EXPECT_EQ(shown(report).substr(0, 22), "Searched For: LAST\\r\\n");
}

TEST_F(Reports, OnlyTheNameIsSearchedAndTheFirstHitCounts) {
    path =
        put("tank\nfile|name=caf\xC9.gas|path=\\zebra|data=zebra\nfile|name=.raw|data=x\n"
            "file|name=raw|data=x\nfile|name=axraw|data=x\n");
    EXPECT_FALSE(find(L"zebra"));
    EXPECT_FALSE(find(L"caf?.gas"));
    EXPECT_TRUE(find(L"\u00e9.G"));
    EXPECT_TRUE(find(L"raw"));
    EXPECT_EQ(names(), Lines{".raw"});
    EXPECT_TRUE(body().ends_with("Unable to show non-text data(0 bytes)."));
    EXPECT_TRUE(find(L"xraw"));
    EXPECT_NE(body().find("Data follows(0 bytes): "), body().npos) << "it has no such ending";
}

TEST_F(Reports, WithoutARootOrEntries) {
    const std::string when = kWhen;
    const struct {
        const char* lines;
        bool listed;
        const char* body;
    } kRows[] = {{"tank|noroot\n", true, "Tank has no Root.\\r\\n"},
                 {"tank\n", true, ""},
                 {"no archive\n", false, ""},
                 {"", false, ""}};
    for (const auto& row : kRows) {
        host.log.clear();
        path = put(row.lines);
        EXPECT_EQ(list(), row.listed);
        EXPECT_EQ(shown(report), "Filename: " + toUtf8(path) + "\\r\\n" + when + row.body);
        EXPECT_FALSE(find(L"a"));
        EXPECT_EQ(shown(report), "Searched For: a\\r\\n" + when + row.body);
        EXPECT_FALSE(gblnTestTank(path));
        EXPECT_EQ(host.logged("show").size(), 2U);
        EXPECT_EQ(host.logged("unload").size(), 2U);
        EXPECT_EQ(host.logged("ask"), Lines{});
    }
}

TEST_F(Reports, NothingHappensForEmptyTexts) {
    EXPECT_FALSE(list());
    EXPECT_FALSE(gblnTestTank(path));
    EXPECT_FALSE(gblnFindChild(put("tank\n"), L"", 0, report, &host));
    EXPECT_EQ(report, L"before");
    EXPECT_EQ(host.log, Lines{});
    EXPECT_FALSE(find(L"x")) << "an empty path is one that does not open";
    EXPECT_EQ(shown(report), std::string("Searched For: x\\r\\n") + kWhen);
    EXPECT_EQ(host.logged("unload").size(), 1U);
}

TEST_F(Reports, AMissingLibraryIsReportedOnceAReport) {
    const auto missing = makeTankLibrary({files.path(L"none")});
    gProgram().host.tank = missing.get();
    path = put(kArt);
    EXPECT_FALSE(list());
    EXPECT_EQ(body(), "");
    EXPECT_FALSE(find(L"a"));
    EXPECT_EQ(errors().size(), 2U);
    EXPECT_FALSE(gblnTestTank(path));
    ASSERT_EQ(errors().size(), 3U);
    for (const std::string& line : errors()) EXPECT_TRUE(line.ends_with(" in 'gOpenTank'"));
    EXPECT_EQ(host.liveDialogs, 0U);
    EXPECT_EQ(host.log.back().substr(0, 4), "ask:");
}

TEST_F(Reports, TheTestReadsTheFirstEntryOnceForEachEntry) {
    path = put("tank|log\nfile|name=a\ndir|name=b\n.file|name=c\nfile|name=d\n");
    EXPECT_TRUE(gblnTestTank(path));
    const std::string entry = "GetChild 0\nGetChildName\nIsDirectory\nGetChildPath\n";
    EXPECT_EQ(calls(),
              "OpenTank\nGetRootDir\nGetChildCount\n" + entry + entry + entry + "CloseTank\n");
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Reports, DeepNestingIsListedWhole) {
    path = put("tank\ndir|name=d|nested=10000\n.file|name=bottom\n");
    ASSERT_TRUE(list());
    EXPECT_EQ(names().size(), 10001U);
    EXPECT_EQ(names().back(), "bottom");
    EXPECT_TRUE(find(L"bottom"));
    EXPECT_EQ(names(), Lines{"bottom"});
}

TEST_F(Reports, ADirectoryInsideItselfIsNotEnteredAgain) {
    path = put("tank\ndir|name=self|up=0\ndir|name=a\n.dir|name=b|up=1\nfile|name=end\n");
    ASSERT_TRUE(list());
    EXPECT_EQ(names(), (Lines{"self", "self", "a", "b", "a", "end"}));
    path = put("tank\ndir|name=a|up=1\nfile|name=end\n");
    ASSERT_TRUE(list());
    EXPECT_EQ(names(), (Lines{"a", "", "end"})) << "the root has no name";
    path = put("tank\ndir|name=twice|repeat=2\n.file|name=x\n");
    ASSERT_TRUE(list());
    EXPECT_EQ(names(), (Lines{"twice", "x", "twice", "x"})) << "it is not inside itself";
    EXPECT_EQ(errors(), Lines{});
}

TEST_F(Reports, EntriesWithoutEndAreReported) {
    path = put("tank\nfile|name=a\ndir|name=deeper|endless|count=1\n");
    EXPECT_FALSE(find(L"nowhere"));
    EXPECT_TRUE(list());
    EXPECT_EQ(names().size(), 100'001U) << "what was listed stays";
    path = put("tank\nfile|name=a\ndir|name=b|count=2147483647\n");
    EXPECT_FALSE(find(L"nowhere"));
    const std::string text = "Error (6): The archive lists more entries than it can hold in '";
    EXPECT_EQ(errors(), (Lines{text + "gblnSearchChildren'", text + "gblnListChildren'",
                               text + "gblnSearchChildren'"}));
    EXPECT_TRUE(gblnTestTank(put("tank|count=2147483647\nfile|name=a\n"))) << "and ends";
}

TEST_F(Reports, CountsAndEntriesThatLie) {
    path =
        put("tank\ndir|name=less|count=-1\n.file|name=x\ndir|name=more|count=3\n"
            ".file|name=y\nfile|name=odd|isdir=9\nfile\n");
    ASSERT_TRUE(list());
    EXPECT_EQ(names(), (Lines{"less", "more", "y", "", "", "odd", ""}));
    path = put("tank\nfile|name=a|data=ab\\0|bytes=2147483647\nfile|name=b|data=x|bytes=-3\n");
    EXPECT_TRUE(find(L"a"));
    EXPECT_TRUE(body().ends_with("Unable to get child data..."));
    EXPECT_EQ(errors().size(), 1U);
    EXPECT_TRUE(find(L"b"));
    EXPECT_TRUE(body().ends_with("Unable to get child data..."));
    EXPECT_EQ(errors().size(), 1U);
}

TEST_F(Reports, AMillionEntriesAreListedAndCancelled) {
    path = put("tank\nfile|name=abc|repeat=1000000\n");
    ASSERT_TRUE(list());
    const std::wstring heading = report.substr(0, report.find(L"Name: "));
    EXPECT_EQ(report.size(), heading.size() + 1'000'000 * std::size_t{46});
    EXPECT_EQ(host.progressSteps, 1'000'000U);
    host.progressSteps = 0;
    host.cancelAt = 499'999;
    ASSERT_TRUE(list());
    EXPECT_EQ(report.size(), heading.size() + 500'000 * std::size_t{46});
}

}  // namespace
}  // namespace kestrel
