// Texts that go back into files: whole ones, and blocks that are put in their places.
#include "gas/saving.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "gas/edit.h"
#include "gastest.h"
#include "services/files.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using Answers = std::deque<Answer>;
using namespace std::string_view_literals;
constexpr Answer kYes = Answer::yes;
constexpr Answer kNo = Answer::no;

std::string with(std::string text, std::string_view from, std::string_view to) {
    return text.replace(text.find(from), from.size(), to);
}

class Saving : public testing::Test {
  protected:
    Saving() {
        gProgram().version.fileDescription = L"Kestrel";
        gProgram().folder = folder.path();
    }

    // What the user is asked and told while `viewed` is saved into the file `target`.
    std::string save(ViewedText& viewed, const std::wstring& target, const OpenFile& openFile) {
        host.log.clear();
        host.files = {target.empty() ? std::nullopt : std::optional(folder.path(target))};
        saved = saveViewedText(viewed, openFile);
        return inWords(host.log, words);
    }

    test::RecordingHost host;
    test::TempFolder folder;
    const std::wstring openPath = folder.path(L"open.gas");
    const OpenFile open{[this] { return openPath; }, [this] { host.log.push_back("reload"); }};
    bool saved = false;
    const Words words{
        {"save: Select Save As Filename and Location | ", "as "},
        {"Text File (*.txt)|*.txt|GAS File (*.gas)|*.gas|All files (*.*)|*.* | ", "text in "},
        {"GAS File (*.gas)|*.gas|Text File (*.txt)|*.txt|All files (*.*)|*.* | ", "source over "},
        {test::shown(openPath), "it"},
        {test::shown(folder.path()), "its folder"},
        {" | Kestrel | question | noYes", "?"},
        {" | Kestrel | question | yesNoCancel", "?"},
        {" | Kestrel | exclamation | ok", "!"},
        {"ask: File already exists. Replace existing file?", "replace"},
        {"ask: The file has been changed by another program since it was loaded. Overwrite it?",
         "changed"},
        {"ask: \"it\" is write-protected. Replace it anyway?", "protected"},
        {"ask: This text is one of the ", ""},
        {" blocks of this file. Put it in its place and keep the others?", " blocks"},
        {"ask: This text is no longer one block of the file. A brace is open at its end. Put it in "
         "its place all the same?",
         "all the same"},
        {"ask: Nothing was written: \"it\" does not hold this block any more as it was loaded. "
         "Save the text to another file, or open this one again.",
         "gone"}};
};

// The open file is edited, other ones get what a viewer shows.
TEST_F(Saving, AsksBeforeItReplacesAFile) {
    // The file and what it holds; the answers, of which the last is no where nothing is written.
    const std::tuple<const wchar_t*, const char*, Answers, const char*> cases[] = {
        {L"new.txt", nullptr, {}, "as text in its folder"},
        {L"other.txt", "other", {}, "as text in its folder, replace?"},
        {L"other.gas", "other", {}, "as text in its folder, replace?"},
        {L"LOUD.GAS", "other", {}, "as text in its folder, replace?"},
        {L"open.gas", nullptr, {}, "as source over it"},
        {L"open.gas", "as loaded", {}, "as source over it, replace?, reload"},
        {L"open.gas", "as loaded", {kNo}, "as source over it, replace?"},
        {L"open.gas", "longer", {}, "as source over it, replace?, changed?, reload"},
        {L"open.gas", "later", {}, "as source over it, replace?, changed?, reload"},
        {L"open.gas", "later", {kYes, kNo}, "as source over it, replace?, changed?"},
        {L"open.gas", "unknown", {}, "as source over it, replace?, reload"},
        {L"open.gas", "locked", {kYes, kNo}, "as source over it, replace?, protected?"},
        {L"open.gas", "locked", {}, "as source over it, replace?, protected?, reload"},
    };
    const std::wstring text = L"[t:a]\r\n{\r\n}\n";
    for (const auto& [target, now, answers, told] : cases) {
        const fs::path file = folder.native(target);
        const std::wstring backup = std::wstring(target) + L".bak";
        folder.put(L"open.gas", "open");
        fs::remove(file);
        fs::remove(folder.native(backup));
        const std::string state = now == nullptr ? "(missing)" : now;
        if (now != nullptr) folder.put(target, now);
        if (state == "locked") fs::permissions(file, fs::perms::owner_read);
        std::optional<FileStamp> stamp = fileStamp(openPath);
        if (state == "longer" || state == "other") --stamp->size;
        if (state == "later") --stamp->written;
        if (state == "unknown") stamp.reset();
        gProgram().kept.clear();
        host.answers = answers;
        ViewedText viewed{[&] { return text; }, target == L"open.gas"sv, true};
        EXPECT_EQ(save(viewed, target, {open.path, open.reload, [&] { return stamp; }}), told);
        EXPECT_EQ(saved, answers.empty()) << told;
        if (state == "locked") fs::permissions(file, fs::perms::owner_all);
        EXPECT_EQ(folder.bytes(target), saved ? toUtf8(text) : state) << told;
        const bool isKept = saved && !std::wstring_view(target).ends_with(L"txt");
        EXPECT_EQ(folder.bytes(backup), isKept ? state : "(missing)") << told;
    }
    ViewedText viewed{[&] { return text; }, true, true};
    EXPECT_EQ(save(viewed, L"", {}), "as source over its folder");
    EXPECT_FALSE(saved);
}

TEST_F(Saving, TextThatHasNoByteIsRefusedAndTheFileStays) {
    folder.put(L"open.gas", "before");
    const auto untouched = fs::last_write_time(folder.native());
    ViewedText viewed{[] { return L"one\r\ntwo \u0416"; }, true, true};
    EXPECT_EQ(save(viewed, L"open.gas", open),
              "as source over it, replace?, ask: Error (5): Cannot write 'it': The character "
              "'\u0416' (U+0416) in line 2 cannot be stored in code page 1252. Replace it, or save "
              "the text as a text file in 'saveViewedText'!");
    EXPECT_EQ(folder.bytes(L"open.gas"), "before");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"open.gas"});
    EXPECT_EQ(fs::last_write_time(folder.native()), untouched);
    EXPECT_EQ(save(viewed, L"new.txt", open), "as source over it");
    EXPECT_EQ(folder.bytes(L"new.txt"), "\xEF\xBB\xBFone\r\ntwo \xD0\x96");
}

TEST_F(Saving, ABlockGoesToItsPlace) {
    const std::string a = "[t:sed,n:a]|{|\tx = 1;|}|";
    const std::string alone = "[t:sed,n:a]|{|    x = 2;|}|";
    const std::string two = "|[t:sed,n:b]|{|}|[t:sed,n:c]|{|}|";
    const std::string utf8(kUtf8Mark);
    // What is typed in place of "x = 1;", the answers, and the file before and after.
    const std::tuple<const char*, Answers, std::string, std::string, const char*> cases[] = {
        {"x = 2;", {}, "//|" + a + two, "//|" + alone + two, ", 3 blocks?"},
        {"x = 2;", {kYes, kNo}, a + two, alone, ", 3 blocks?"},
        {"x = 2;", {kYes, Answer::cancel}, a + two, a + two, ", 3 blocks?"},
        {"x = 2;||\ty;", {}, a + two, with(alone + two, "2;", "2;||\ty;"), ", 3 blocks?"},
        {"{", {kYes, kYes, kNo}, a + two, a + two, ", 3 blocks?, all the same?"},
        {"{", {}, a + two, with(alone + two, "x = 2;", "{"), ", 3 blocks?, all the same?"},
        {"x = 2;", {}, two + two, two + two, ", 4 blocks?, gone!"},
        {"x = 2;", {}, two + a + a, two + a + a, ", 4 blocks?, gone!"},
        {"x = 2;", {}, two + a + two, two + alone + two, ", 5 blocks?"},
        {"Ж = 2;", {}, utf8 + a + two, utf8 + with(alone + two, "x", "Ж"), ", 3 blocks?"},
        {"Ж = 2;", {kYes, kNo}, utf8 + a + two, utf8 + with(alone, "x", "Ж"), ", 3 blocks?"},
        // The only one keeps what is around it without a question, if it still is one.
        {"x = 2;", {}, "// top|" + a, "// top|" + alone, ""},
        {"{", {}, "// top|" + a, with(alone, "x = 2;", "{"), ""},
        {"x = 2;", {}, with(a, "1", "7"), alone, ""},
        {"x = 2;", {}, "none", alone, ""},
    };
    const GasTemplate block = loaded(a).at(0);
    for (const auto& [edited, answers, before, after, told] : cases) {
        gProgram().kept.clear();
        folder.put(L"open.gas", lines(before));
        const std::wstring text = fromUtf8(lines(with(flat(block.Text.wide()), "x = 1;", edited)));
        ViewedText viewed{[&] { return text; }, true, true, block.Text,
                          FileBlock{openPath, block.Place}};
        host.answers = answers;
        EXPECT_EQ(save(viewed, L"open.gas", {}), std::string("as source over it, replace?") + told);
        EXPECT_EQ(flat(folder.bytes(L"open.gas")), after);
        EXPECT_EQ(saved, before != after) << told;
        EXPECT_EQ(viewed.loaded == text, saved) << told;
        if (!saved) continue;
        // Once more, and what was there before this run is still in the copy.
        save(viewed, L"open.gas", {});
        EXPECT_EQ(flat(folder.bytes(L"open.gas")), after);
        EXPECT_EQ(flat(folder.bytes(L"open.gas.bak")), before);
    }
}

TEST_F(Saving, ReplacesTheLinesThatChangedAndNothingElse) {
    const std::string two =
        "[t:template,n:a]|{|\tx = 1;\t// one|||\ty = 2;|\tz = 3;|}||[t:template,n:b]|{|\tw = 4;|}|";
    const std::string lf = "[t:sed,n:a]\n{\n\tx = 1;\n\n\ty = 2;\n}\n[t:sed,n:b]\n{\n}\n";
    const std::string left = "[t:sed,n:a]|{|\tx = 1;|[t:sed,n:b]|{|}|";
    const std::string inLine = "[t:sed,n:a] { x = 1; } [t:sed,n:b]|{|}";
    const std::tuple<std::string, std::size_t, const char*, const char*, std::string> cases[] = {
        {two, 0, "y = 2;", "y = 22;", with(two, "\ty = 2;", "    y = 22;")},
        {two, 0, "x = 1;    // one|    y = 2;|    z = 3;", "x = 11;|    y = 2;|    z = 33;",
         with(with(two, "\tx = 1;\t// one||", "    x = 11;"), "\tz = 3;", "    z = 33;")},
        {two, 0, "y = 2;|    z = 3;", "z = 3;|    y = 2;",
         with(two, "\ty = 2;|\tz = 3;", "\tz = 3;|    y = 2;")},
        {two, 0, "y = 2;|    z = 3;", "n = 0;|    y = 2;|    m = 3;",
         with(two, "\ty = 2;|\tz = 3;", "    n = 0;|\ty = 2;|    m = 3;")},
        {two, 0, "    z", "\tnew = 0;|    z", with(two, "\tz", "\tnew = 0;|\tz")},
        {two, 0, "    z = 3;|", "", with(two, "\tz = 3;|", "")},
        {two, 0, "    z", "|    z", with(two, "\tz", "|\tz")},
        // The last line, with the distance to the next block.
        {two, 0, "}", "} // end", with(two, "}", "} // end")},
        {two, 1, "4", "5", with(two, "\tw = 4", "    w = 5")},
        {lf, 0, "x = 1;", "x = 1;|    n = 0;", with(lf, "\ty", "    n = 0;\n\ty")},
        // A block that was left open is closed, but not in a line.
        {left, 0, "1", "2", with(left, "\tx = 1;|", "    x = 2;|}|")},
        {inLine, 0, "1", "2", with(inLine, "1", "2")},
        {inLine, 1, "{", "{|  y = 2;", with(inLine, "{|}", "{|  y = 2;|}")},
    };
    for (const auto& [file, index, from, to, expected] : cases) {
        const std::wstring before = loaded(file).at(index).Text;
        const auto edited =
            replaceBlock(lines(file), index, before, fromUtf8(lines(with(flat(before), from, to))));
        EXPECT_EQ(flat(edited.value_or("refused")), expected);
    }
}

// Each block of each sample, put back as it is shown.
TEST_F(Saving, WhatWasNotChangedStaysToTheByte) {
    std::size_t blocks = 0;
    for (const auto& entry : fs::recursive_directory_iterator(KESTREL_SAMPLES)) {
        if (!entry.is_regular_file()) continue;
        const std::string file = readFileBytes(entry.path().wstring());
        for (const GasTemplate& block : loaded(toUtf8(widen(file)))) {
            // One that no header begins is no block of the file.
            if (block.Place == GasTemplate::kNowhere) continue;
            const std::wstring text = block.Text;
            const auto same = replaceBlock(file, block.Place, text, text);
            EXPECT_TRUE(same && (*same == file || !text.ends_with(L"\r\n"))) << entry << text;
            ++blocks;
        }
    }
    EXPECT_GT(blocks, 60U);
}

TEST_F(Saving, TellsWhatIsNotOneBlock) {
    const std::pair<const char*, const wchar_t*> cases[] = {
        {"[t:sed,n:a]|{|  [b] { c = \"}\"; } // }|}|", L""},
        {"|[t:sed,n:other]|{|}", L""},
        {"", L"It has no header that begins with \"[t:sed,\"."},
        {"[t:tsd,n:a]|{|}|", L"It has no header that begins with \"[t:sed,\"."},
        {"[t:sed,n:a]|{|}|[t:sed,n:b]|{|}|",
         L"It has more than one header that begins with \"[t:sed,\"."},
        {"a = 1;|[t:sed,n:a]|{|}|", L"Its header is not its begin."},
        {"[t:sed,n:a]|{|  [b]|  {|}|", L"A brace is open at its end."},
        {"[t:sed,n:a]|{|}|}|", L"It has a closing brace too many."},
    };
    for (const auto& [text, why] : cases) {
        EXPECT_EQ(whyNotOneBlock(L"[t:sed,n:a]\r\n{\r\n}\r\n", fromUtf8(lines(text))), why) << text;
    }
}

}  // namespace
}  // namespace kestrel
