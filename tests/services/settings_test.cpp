#include "services/settings.h"

#include "services/bytes.h"
#include "services/fixture.h"
#include "services/histories.h"
#include "services/text.h"
#include "support/vectortextlist.h"

namespace kestrel::test {
namespace {

using namespace std::string_literals;

const std::string kNone = "(missing)";

// In these tests a bar stands for the end of a line, and between the entries of a list.
std::string ends(std::string text) {
    for (std::size_t at = 0; (at = text.find('|', at)) != text.npos;) text.replace(at, 1, "\r\n");
    return text;
}

class KeptFiles : public Services {
  protected:
    void put(std::wstring_view name, const std::string& text) const {
        std::filesystem::remove(folder.native(name));
        if (text != kNone) folder.put(name, ends(text));
    }
    static std::string joined(const Texts& texts) {
        std::string all;
        for (const std::wstring& text : texts) all.append(toUtf8(text)).append("|");
        return all;
    }
    static std::string settings() {
        const Settings& s = gProgram().settings;
        return joined({s.orvane, s.zeltor, s.skritpad}) + joined({s.tools.begin(), s.tools.end()});
    }
    // A list of the windows, or the list of files.
    std::string load(bool ofFiles) const {
        if (ofFiles) return joined(loadFileHistory(folder.path(L"info.his")));
        VectorTextList list;
        gLoadHistory(list, L"info.his");
        return joined(list.items);
    }
    static void save(bool ofFiles, std::string_view items) {
        const std::wstring text = fromUtf8(items);
        const auto pieces = split(text, L"|");
        const Texts texts(pieces.begin(), pieces.end());
        if (ofFiles) return mSaveFileHistory(texts, L"info.his");
        gSaveHistory(VectorTextList(texts), L"info.his");
    }
};

TEST_F(KeptFiles, SettingsAreRead) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "o|z|s|1|2|3|4|5|"},
        {"TOOL1=abc", "o|z|s|abc|2|3|4|5|"},
        {"skritpad=C:\\x=y\\z.exe|", "o|z|C:\\x|1|2|3|4|5|"},
        {"orvane=a|ORVANE= b |", " b |z|s|1|2|3|4|5|"},
        {"tool5=|Zeltor=x|", "o|x|s|1|2|3|4||"},
        {" orvane=a|orvane =b|orvan=c|=d|orvane|tool6=x|tool=y|", "o|z|s|1|2|3|4|5|"},
        {"\xEF\xBB\xBFtool2=a\norvane=b|tool3==x", "b|z|s|1|a||4|5|"},
        {std::string(10'000'000, '='), "o|z|s|1|2|3|4|5|"},
        {std::string(10'000'000, '\0'), "o|z|s|1|2|3|4|5|"},
        {std::string(10'000'000, '\r') + "\ntool4=\x80", "o|z|s|1|2|3|\xE2\x82\xAC|5|"},
    };
    for (const auto& [text, fields] : cases) {
        put(L"settings.set", text);
        gProgram().settings = {L"o", L"z", L"s", {L"1", L"2", L"3", L"4", L"5"}};
        gReadSettings();
        EXPECT_EQ(settings(), fields) << text.substr(0, 80);
    }
    put(L"settings.set", kNone);
    gReadSettings();
    EXPECT_EQ(settings(), std::end(cases)[-1].second) << "a missing file changes nothing";
    EXPECT_EQ(gProgram().routine, L"gReadSettings");
    gWriteSettings();
    EXPECT_EQ(gProgram().routine, L"gWriteSettings");
    EXPECT_EQ(folder.bytes(L"settings.set"), ends("orvane=o|zeltor=z|skritpad=s|tool1=1|tool2=2|"
                                                  "tool3=3|tool4=\x80|tool5=5|"));
    EXPECT_EQ(folder.names(), Lines{"settings.set"});
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(KeptFiles, ChangedSettingsArePutIntoWhatTheFileHoldsNow) {
    const std::string rest = "tool1=|tool2=|tool3=|tool4=|tool5=|";
    const struct {
        const char* found;
        const wchar_t* skritpad;
        const char* now;
        std::string saved;
        bool keeps = false;
    } cases[] = {
        {"zeltor=z|skritpad=s|", L"s", "", ""},
        {"", L"s", "zeltor=z=1", "orvane=|zeltor=z=1|skritpad=s|" + rest},
        {"zeltor=z|", L"s", "ZELTOR=x|skritpad=y", "orvane=|zeltor=x|skritpad=s|" + rest},
        {"skritpad=s", L"", "skritpad=y\n\n", "orvane=|zeltor=|skritpad=|" + rest},
        {"zeltor=z|", L"", "; mine|zeltor=x", "; mine|zeltor=x"},
        {"zeltor=z", L"\u0416", "zeltor=\x80",
         "\xEF\xBB\xBForvane=|zeltor=\xE2\x82\xAC|skritpad=\xD0\x96|" + rest},
        {"zeltor=z|", L"s\ntool1=t", "; mine|zeltor=x", "orvane=|zeltor=x|skritpad=|" + rest, true},
        {"", L"s", "zeltor=x|zeltor=y", "orvane=|zeltor=y|skritpad=s|" + rest, true},
    };
    for (const auto& c : cases) {
        gProgram().settings = {};
        put(L"settings.set.bak", kNone);
        put(L"settings.set", c.found);
        gReadSettings();
        gProgram().settings.skritpad = c.skritpad;
        put(L"settings.set", c.now);
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set"), ends(c.saved));
        EXPECT_EQ(folder.bytes(L"settings.set.bak"), c.keeps ? ends(c.now) : kNone);
        put(L"settings.set", "theirs");
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set"), "theirs") << "nothing was changed";
    }
    EXPECT_EQ(folder.names(), (Lines{"settings.set", "settings.set.bak"}));
    EXPECT_EQ(host.log, Lines{});
}

const std::string kFifteen = "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|";

TEST_F(KeptFiles, HistoriesAreRead) {
    const struct {
        std::string text;
        std::string items;
        bool ofFiles = false;
    } cases[] = {
        {kNone, ""},
        {"a| b |c", "a| b |c|"},
        {"a\nb\rc|\t|\x80|", "a\nb\rc|\t|\xE2\x82\xAC|"},
        {"\xEF\xBB\xBF\xD0\x96|\x80|", "\xD0\x96|\x80|"},
        {"||  |  |" + kFifteen, "1|2|3|4|5|6|7|8|9|10|11|12|"},
        {"|||||||||||||||x", "x|"},
        {"||||||||||||||||x", ""},
        {std::string(10'000'000, 'x'), ""},
        {std::string(32768, 'x') + "|" + std::string(32767, 'y'), std::string(32767, 'y') + "|"},
        {"a\0b|"s, "a\0b|"s},
        {kNone, "", true},
        {"|", "||", true},
        {"a|| b |a", "a|| b |a|", true},
        {kFifteen + kFifteen, kFifteen + kFifteen + "|", true},
    };
    for (const auto& c : cases) {
        put(L"info.his", c.text);
        EXPECT_EQ(load(c.ofFiles), c.items) << c.text.substr(0, 80);
        EXPECT_EQ(gProgram().routine, c.ofFiles ? L"loadFileHistory" : L"gLoadHistory");
    }
    VectorTextList list({L"a", L"b"});
    for (const wchar_t* text : {L"b", L"B", L" b"}) gAddHistoryItem(list, text);
    EXPECT_EQ(joined(list.items), " b|B|a|b|");
    EXPECT_EQ(gProgram().routine, L"gAddHistoryItem");
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(KeptFiles, WhatThisRunDidToAHistoryIsMergedIntoWhatTheFileHoldsNow) {
    const struct {
        std::string found;
        std::string now;
        std::string mine;
        std::string saved;
        bool ofFiles = false;
    } cases[] = {
        {kNone, kNone, "a|  |\xD0\x96.gas| b |", "\xEF\xBB\xBF\x61|\xD0\x96.gas| b |"},
        {kNone, kNone, "|   ", kNone},
        {"", "", kFifteen + "16|17", kFifteen + "16|"},
        {"a|b|c|d|", "a|b|c|d|", "", "a|b|c|d|"},
        {"a|b|c|d|", "x|a|", "a|b|c|d", "x|a|"},
        {"a|b|c|d|", "x|a|b|", "m| |n|a|b|c|d", "m|n|x|a|b|"},
        {"a|b|c|d|", "x|m|a|", "m|a|b|c|d", "m|x|a|"},
        {"a|b|c|d|", "x|a|b|c|d|", "a|d", "x|a|d|"},
        {"a|b|c|d|", kFifteen + "a|", "m|a|b|c|d", "m|" + kFifteen},
        {"", "", "new", "new", true},
        {"a|", "a|", "a||new", "a||new", true},
        {"", "", kFifteen + "16|17", kFifteen + "16|17", true},
        {"a||b", "c|b|a", "b|d|c", "c|b|d", true},
        {"a|b", "b|a", "", "b|a", true},
    };
    for (const auto& c : cases) {
        put(L"info.his", c.found);
        load(c.ofFiles);
        put(L"info.his", c.now);
        put(L"info.his.bak", "older");
        save(c.ofFiles, c.mine);
        EXPECT_EQ(folder.bytes(L"info.his"), ends(c.saved));
        const bool keeps = c.now != kNone && c.saved != c.now;
        EXPECT_EQ(folder.bytes(L"info.his.bak"), keeps ? ends(c.now) : "older") << c.saved;
        put(L"info.his", "theirs");
        save(c.ofFiles, c.mine);
        EXPECT_EQ(folder.bytes(L"info.his"), "theirs") << "nothing more was done";
    }
    EXPECT_EQ(folder.names(), (Lines{"info.his", "info.his.bak"}));
    EXPECT_EQ(host.log, Lines{});
    gProgram().folder = folder.path(L"none");
    save(true, "a");
    save(false, "a");
    ASSERT_EQ(host.log.size(), 2U);
    EXPECT_TRUE(host.log[0].ends_with(" in 'mSaveFileHistory' | Kestrel | exclamation | ok"));
    EXPECT_TRUE(host.log[1].ends_with(" in 'gSaveHistory' | Kestrel | exclamation | ok"));
}

}  // namespace
}  // namespace kestrel::test
