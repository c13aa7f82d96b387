#include "gas/edit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "gas/load.h"
#include "services/bytes.h"
#include "services/files.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

class Editing : public testing::Test {
  protected:
    std::vector<GasTemplate> load(std::string_view file) {
        std::vector<GasTemplate> templates;
        loadGasText(widen(file), templates);
        return templates;
    }

    // `file` after `from` became `to` in the text of its block `index`.
    std::string edit(std::string_view file, std::size_t index, std::wstring_view from,
                     std::wstring_view to) {
        const std::wstring loaded = load(file).at(index).Text;
        std::wstring edited = loaded;
        edited.replace(edited.find(from), from.size(), to);
        return replaceBlock(file, index, loaded, edited).value_or("refused");
    }

    test::RecordingHost host_;
};

constexpr const char* kTwo =
    "// top\r\n"
    "[t:template,n:a]\r\n{\r\n\tx = 1;\t// one\r\n\r\n\r\n\ty = 2;\r\n\tz = 3;\r\n}\r\n\r\n"
    "[t:template,n:b]\r\n{\r\n\tw = 4;\r\n}\r\n";

TEST_F(Editing, ReplacesTheLinesThatChangedAndNothingElse) {
    struct Row {
        const char* what;
        std::string file;
        std::size_t index;
        const wchar_t* from;
        const wchar_t* to;
        std::string expected;
    };
    const auto after = [](std::string text, std::string_view from, std::string_view to) {
        return text.replace(text.find(from), from.size(), to);
    };
    const std::string two = kTwo + std::strlen("// top\r\n");
    const std::string lf = "[t:sed,n:a]\n{\n\tx = 1;\n\n\ty = 2;\n}\n[t:sed,n:b]\n{\n}\n";
    const std::string open = "[t:sed,n:a]\r\n{\r\n\tx = 1;\r\n[t:sed,n:b]\r\n{\r\n}\r\n";
    const std::string inLine = "[t:sed,n:a] { x = 1; } [t:sed,n:b]\r\n{\r\n}";
    const Row rows[] = {
        {"one line", two, 0, L"y = 2;", L"y = 22;", after(two, "\ty = 2;", "    y = 22;")},
        {"two far apart", two, 0, L"x = 1;    // one\r\n    y = 2;\r\n    z = 3;",
         L"x = 11;\r\n    y = 2;\r\n    z = 33;",
         after(after(two, "\tx = 1;\t// one\r\n\r\n", "    x = 11;"), "\tz = 3;", "    z = 33;")},
        {"a line more", two, 0, L"    z", L"\tnew = 0;\r\n    z",
         after(two, "\tz", "\tnew = 0;\r\n\tz")},
        {"a line less", two, 0, L"    z = 3;\r\n", L"", after(two, "\tz = 3;\r\n", "")},
        {"an empty line more", two, 0, L"    z", L"\r\n    z", after(two, "\tz", "\r\n\tz")},
        {"the last line, with the distance to the next block", two, 0, L"}", L"} // end",
         after(two, "}", "} // end")},
        {"the last block", two, 1, L"4", L"5", after(two, "\tw = 4", "    w = 5")},
        {"line ends of LF", lf, 0, L"x = 1;", L"x = 1;\r\n    n = 0;",
         after(lf, "\ty", "    n = 0;\n\ty")},
        {"a block that was left open is closed", open, 0, L"1", L"2",
         after(open, "\tx = 1;\r\n", "    x = 2;\r\n}\r\n")},
        {"no brace is added in a line", inLine, 0, L"1", L"2", after(inLine, "1", "2")},
        {"no line end is added to the last", inLine, 1, L"{", L"{\r\n  y = 2;",
         after(inLine, "{\r\n}", "{\r\n  y = 2;\r\n}")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(edit(row.file, row.index, row.from, row.to), row.expected) << row.what;
    }
}

TEST_F(Editing, FindsTheBlockWhereItIsNow) {
    const std::string two = kTwo;
    const std::wstring loaded = load(two).at(2).Text;
    const std::wstring edited = loaded + L"// more\r\n";
    EXPECT_EQ(replaceBlock("[t:template,n:0]\r\n{\r\n}\r\n" + two, 1, loaded, edited),
              "[t:template,n:0]\r\n{\r\n}\r\n" + two + "// more\r\n");
    for (const std::string& file :
         {std::string(), std::string("[t:template,n:b]\r\n{\r\n\tw = 5;\r\n}\r\n"),
          two + two.substr(two.find("[t:template,n:b]"))}) {
        EXPECT_EQ(replaceBlock(file, 7, loaded, edited), std::nullopt) << file;
    }
    // What was saved before stands there as it was typed.
    const std::string typed =
        *replaceBlock(two, 1, loaded, L"[t:template,n:b]\r\n\r\n{\tq = 1;\r\n}\r\n");
    EXPECT_EQ(replaceBlock(typed, 1, L"[t:template,n:b]\r\n\r\n{\tq = 1;\r\n}\r\n",
                           L"[t:template,n:b]\r\n{\tq = 1;\r\n}\r\n"),
              std::string(kTwo).substr(0, two.find("[t:template,n:b]")) +
                  "[t:template,n:b]\r\n{\tq = 1;\r\n}\r\n");
}

// Each block of each sample, put back as it is shown.
TEST_F(Editing, WhatWasNotChangedStaysToTheByte) {
    std::size_t blocks = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(KESTREL_SAMPLES)) {
        if (!entry.is_regular_file()) continue;
        const std::string file = readFileBytes(entry.path().wstring());
        std::vector<GasTemplate> templates = load(file);
        // One that no header begins is no block of the file.
        const std::size_t first = templates.size() - std::min(templates.size(), countBlocks(file));
        for (std::size_t i = first; i < templates.size(); ++i) {
            const std::wstring text = templates[i].Text;
            const auto same = replaceBlock(file, i - first, text, text);
            if (text.ends_with(L"\r\n")) {
                EXPECT_EQ(same, file) << entry.path() << " " << i;
            } else {
                EXPECT_TRUE(same) << entry.path() << " " << i;
            }
            ++blocks;
        }
    }
    EXPECT_GT(blocks, 60U);
}

TEST_F(Editing, TellsWhatIsNotOneBlock) {
    const std::wstring loaded = L"[t:sed,n:a]\r\n{\r\n}\r\n";
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"[t:sed,n:a]\r\n{\r\n  [b] { c = \"}\"; } // }\r\n}\r\n", L""},
        {L"\r\n[t:sed,n:other]\r\n{\r\n}", L""},
        {L"", L"It has no header that begins with \"[t:sed,\"."},
        {L"[t:tsd,n:a]\r\n{\r\n}\r\n", L"It has no header that begins with \"[t:sed,\"."},
        {L"[t:sed,n:a]\r\n{\r\n}\r\n[t:sed,n:b]\r\n{\r\n}\r\n",
         L"It has more than one header that begins with \"[t:sed,\"."},
        {L"a = 1;\r\n[t:sed,n:a]\r\n{\r\n}\r\n", L"Its header is not its begin."},
        {L"[t:sed,n:a]\r\n{\r\n  [b]\r\n  {\r\n}\r\n", L"A brace is open at its end."},
        {L"[t:sed,n:a]\r\n{\r\n}\r\n}\r\n", L"It has a closing brace too many."},
    };
    for (const auto& [text, why] : rows) EXPECT_EQ(whyNotOneBlock(loaded, text), why) << text;
}

}  // namespace
}  // namespace kestrel
