// What is loaded of texts that are too long for a story, and of samples.
#include <filesystem>
#include <random>

#include "gas/edit.h"
#include "gas/losses.h"
#include "gastest.h"
#include "services/files.h"
#include "view/tree.h"

namespace kestrel::test {
namespace {

std::string repeat(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

GasTemplate info(const std::string& body) {
    return loaded("[info]|" + body).at(0);
}

TEST(Load, LevelsStayWhereTheyCountNoMore) {
    const auto around = [](int i) { return "g" + std::to_string(i % 300); };
    std::string body = repeat("[n:ignored]\r\n", 32768);
    for (int i = 0; i < 16383; ++i) body += "[" + around(i) + "]\r\n{\r\n[x]\r\n{\r\n}\r\n}\r\n";
    const GasProperties all = info(body + "[b]|[c]|[t:part,n:d]").Properties;
    ASSERT_EQ(all.size(), 32770U);
    for (int i = 0; i < 16383; ++i) {
        const std::string level = "#" + std::to_string(2 * i + 2);
        ASSERT_EQ(dump(all[2U * static_cast<unsigned>(i) + 1]),
                  "[x] @" + around(i) + "\\x" + level);
    }
    EXPECT_EQ(dump(all[32767]), "[c] @b\\c#32767");
    EXPECT_EQ(dump(all.back()), "name=d @b\\c\\d#32767");
    const std::vector<Loss> losses = findLosses("[info]\r\n" + repeat("[a]\r\n", 32768));
    ASSERT_EQ(losses.size(), 1U);
    EXPECT_EQ(losses[0].line, 32769U);
    EXPECT_EQ(losses[0].why,
              L"levels count 32767 sub-blocks; this one and those behind it have the level of the "
              L"last");
}

TEST(Load, TreesKeepThePathsOfSubBlocksThatAreTooDeepToDraw) {
    const GasTemplate record = info(repeat("[a]\r\n{\r\n", 5000));
    const std::vector<BlockNode> nodes = blockTree(record);
    ASSERT_EQ(nodes.size(), 5001U);
    EXPECT_EQ(nodes[249].parent, 248U);
    EXPECT_EQ(nodes[250].parent, 248U);
    EXPECT_EQ(nodes.back().parent, 248U);
    const GasProperty last = record.Properties.back();
    EXPECT_EQ(Text(last.Group.group()->start), record.Properties[127].Group) << "256 characters";
    EXPECT_EQ(branchPath(record, nodes.back()), groupPath(record, last));
    const GasTemplate deepest = info(repeat("[a]\r\n", 1'050'000));
    EXPECT_EQ(deepest.Properties.back().Group.group()->id, 1'050'000U);
}

// Beside those that bench/main.cpp measures: with them a careless parser would run for
// minutes, and the time limit of the run ends it.
TEST(Load, StaysLinearOnNastyShapes) {
    const std::string info = "[info]\r\n";
    for (const std::string& text :
         {repeat("[a]", 500000), info + repeat("[a]\r\n{\r\n", 100000),
          info + repeat("[a]\r\n", 1000000), repeat("[", 2000000) + "x]" + repeat("[", 4000000),
          info + "[" + repeat("\\", 100000) + "]\r\n" + repeat("}\r\n[b]\r\n", 100000)}) {
        EXPECT_FALSE(loaded(text).empty()) << text.substr(0, 40);
    }
}

// The loader looks at many bytes at a time and shares what is equal: what it gives must
// not depend on where in the file a text stands, on its length, or on what came before it.
TEST(Load, MarksAreFoundWhereverTheyStand) {
    for (std::size_t shift = 0; shift < 140; ++shift) {
        const GasTemplate record =
            info(std::string(shift, 'x') +
                 "|// a|[t:b,n:c] {|d = 1; e = 2=3; f//g;|}|h]n:i||\r|j = 4 }");
        ASSERT_EQ(dump(record), "type=b @c#1, name=c @c#1, d=1 @c#1, e=2 @c#1, hn=i @#1, j=4 @#1")
            << shift;
        ASSERT_EQ(flat(record.Comments.wide()),
                  shift == 0 ? "Line 1:␉ a|Line 5:␉fg;|" : "Line 2:␉ a|Line 6:␉fg;|");
    }
}

TEST(Load, NamesAndValuesOfEveryLengthAreCleanedAndStayApart) {
    std::string body;
    std::vector<std::string> expected;
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
    // Each of them on both sides of what is stored shortly.
    for (const std::size_t length : {255U, 256U, 65534U, 65535U}) {
        const std::string text(length, 'z');
        body += text + "=;|y=" + text + ";|y=" + std::string(length - 1, ' ') + "z;|";
        expected.insert(expected.end(), {text + "= @#0", "y=" + text + " @#0", "y=z @#0"});
    }
    const std::string bytes = "[info]\r\n[caf\xE9]\r\n\x97 = \xE9";
    EXPECT_EQ(readRecords(bytes, *CodePage::find(1252)).templates.at(0).Properties,
              info("[café]|— = é").Properties);
    const GasTemplate record = info(body);
    ASSERT_EQ(record.Properties.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(dump(record.Properties[i]), expected[i]);
    }
}

// The rules tell on themselves: where nothing is said to be left out, the records
// hold every word of a statement.
TEST(Load, WhatIsNotToldIsKept) {
    constexpr const char* kPieces[] = {"[", "]",  "{",  "}", "=",  ":",
                                       ",", "//", "\"", " ", "t:", "n:"};
    std::mt19937 random(7);  // the same statements in each run
    std::size_t silent = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string statement;
        char letter = 'A';
        for (std::size_t left = random() % 9 + 1; left > 0; --left) {
            statement += kPieces[random() % std::size(kPieces)];
            if (random() % 2 == 0) statement += letter++;
        }
        const std::string text = "[info]\r\n" + statement;
        if (!findLosses(text).empty()) continue;
        ++silent;
        const GasTemplate record = loaded(text).at(0);
        const std::string kept = dump(record) + toUtf8(record.Comments.wide());
        while (letter-- > 'A') EXPECT_NE(kept.find(letter), kept.npos) << letter << statement;
    }
    EXPECT_GT(silent, 2000U);
}

// Each block of each sample, put back as it is shown.
TEST(Samples, StayToTheByteWhereNothingWasChanged) {
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(KESTREL_SOURCES "/samples")) {
        if (entry.path().extension() != ".gas") continue;
        std::wstring path = fromUtf8(entry.path().string());
        const std::string file = readFileBytes(path);
        std::vector<GasTemplate> templates;
        gblnLoadGas(path, templates, nullptr);
        for (const GasTemplate& block : templates) {
            // One that no header begins is no block of the file.
            if (block.Place == GasTemplate::kNowhere) continue;
            const std::wstring text = block.Text.wide();
            const auto same = replaceBlock(file, block.Place, text, text);
            EXPECT_TRUE(same && (*same == file || !text.ends_with(L"\r\n"))) << entry << text;
        }
    }
}

}  // namespace
}  // namespace kestrel::test
