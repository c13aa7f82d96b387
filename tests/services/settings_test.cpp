#include "services/settings.h"
#include "base/text.h"
#include "services/fixture.h"
#include "services/histories.h"
#include "support/vectortextlist.h"

namespace kestrel::test {
namespace {

using namespace std::string_literals;

const std::string kNone = "(missing)";

// A list of the windows, or the list of files.
enum OfFiles : bool { kOfPaths, kOfFiles };

// In these tests a bar stands for the end of a line, and between the entries of a list.
std::string ends(const std::string& text) {
    return replaced(text, "|", "\r\n");
}

class KeptFiles : public ToldServices {
  protected:
    void put(std::wstring_view name, const std::string& text) const {
        fs::remove(folder.native(name));
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
    std::string load(OfFiles ofFiles) const {
        if (ofFiles) return joined(loadFileHistory(folder.path(L"info.his")));
        VectorTextList list;
        gLoadHistory(list, L"info.his");
        return joined(list.items);
    }
    static void save(OfFiles ofFiles, std::string_view items) {
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
}

TEST_F(KeptFiles, ChangedSettingsArePutIntoWhatTheFileHoldsNow) {
    const std::string rest = "tool1=|tool2=|tool3=|tool4=|tool5=|";
    const std::tuple<std::string, std::wstring, std::string, std::string, bool> cases[] = {
        {"zeltor=z|skritpad=s|", L"s", "", "", false},
        {"", L"s", "zeltor=z=1", "orvane=|zeltor=z=1|skritpad=s|" + rest, false},
        {"zeltor=z|", L"s", "ZELTOR=x|skritpad=y", "orvane=|zeltor=x|skritpad=s|" + rest, false},
        {"skritpad=s", L"", "skritpad=y\n\n", "orvane=|zeltor=|skritpad=|" + rest, false},
        {"zeltor=z|", L"", "; mine|zeltor=x", "; mine|zeltor=x", false},
        {"zeltor=z", L"\u0416", "zeltor=\x80",
         "\xEF\xBB\xBForvane=|zeltor=\xE2\x82\xAC|skritpad=\xD0\x96|" + rest, false},
        {"zeltor=z|", L"s\ntool1=t", "; mine|zeltor=x", "orvane=|zeltor=x|skritpad=|" + rest, true},
        {"", L"s", "zeltor=x|zeltor=y", "orvane=|zeltor=y|skritpad=s|" + rest, true},
    };
    for (const auto& [found, skritpad, now, saved, keeps] : cases) {
        gProgram().settings = {};
        put(L"settings.set.bak", kNone);
        put(L"settings.set", found);
        gReadSettings();
        gProgram().settings.skritpad = skritpad;
        put(L"settings.set", now);
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set"), ends(saved));
        EXPECT_EQ(folder.bytes(L"settings.set.bak"), keeps ? ends(now) : kNone);
        put(L"settings.set", "theirs");
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set"), "theirs") << "nothing was changed";
    }
    EXPECT_EQ(folder.names(), (Lines{"settings.set", "settings.set.bak"}));
}

const std::string kFifteen = "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|";

TEST_F(KeptFiles, HistoriesAreRead) {
    const std::tuple<OfFiles, std::string, std::string> cases[] = {
        {kOfPaths, kNone, ""},
        {kOfPaths, "a||  | b |c", "a| b |c|"},
        {kOfPaths, "a\nb\rc|\t|\x80|\0|"s, "a\nb\rc|\t|\xE2\x82\xAC|\0|"s},
        {kOfPaths, "\xEF\xBB\xBF\xD0\x96|\x80|", "\xD0\x96|\x80|"},
        {kOfPaths, "|||||||||||||||x", "x|"},
        {kOfPaths, "||||||||||||||||x", ""},
        {kOfPaths, std::string(10'000'000, 'x'), ""},
        {kOfPaths, std::string(32768, 'x') + "|" + std::string(32767, 'y'),
         std::string(32767, 'y') + "|"},
        {kOfFiles, kNone, ""},
        {kOfFiles, "|", "||"},
        {kOfFiles, "a|| b |a", "a|| b |a|"},
        {kOfFiles, kFifteen + kFifteen, kFifteen + kFifteen + "|"},
    };
    for (const auto& [ofFiles, text, items] : cases) {
        put(L"info.his", text);
        EXPECT_EQ(load(ofFiles), items) << text.substr(0, 80);
        EXPECT_EQ(gProgram().routine, ofFiles ? L"loadFileHistory" : L"gLoadHistory");
    }
    VectorTextList list({L"a", L"b"});
    for (const wchar_t* text : {L"b", L"B", L" b"}) gAddHistoryItem(list, text);
    EXPECT_EQ(joined(list.items), " b|B|a|b|");
    EXPECT_EQ(gProgram().routine, L"gAddHistoryItem");
}

TEST_F(KeptFiles, WhatThisRunDidToAHistoryIsMergedIntoWhatTheFileHoldsNow) {
    const std::tuple<OfFiles, std::string, std::string, std::string, std::string> cases[] = {
        {kOfPaths, kNone, kNone, "a|  |\xD0\x96.gas| b |", "\xEF\xBB\xBF\x61|\xD0\x96.gas| b |"},
        {kOfPaths, kNone, kNone, "|   ", kNone},
        {kOfPaths, "", "", kFifteen + "16|17", kFifteen + "16|"},
        {kOfPaths, "a|b|c|d|", "a|b|c|d|", "", "a|b|c|d|"},
        {kOfPaths, "a|b|c|d|", "x|a|", "a|b|c|d", "x|a|"},
        {kOfPaths, "a|b|c|d|", "x|a|b|", "m| |n|a|b|c|d", "m|n|x|a|b|"},
        {kOfPaths, "a|b|c|d|", "x|m|a|", "m|a|b|c|d", "m|x|a|"},
        {kOfPaths, "a|b|c|d|", "x|a|b|c|d|", "a|d", "x|a|d|"},
        {kOfPaths, "a|b|c|d|", kFifteen + "a|", "m|a|b|c|d", "m|" + kFifteen},
        {kOfFiles, "", "", "new", "new"},
        {kOfFiles, "a|", "a|", "a||new", "a||new"},
        {kOfFiles, "", "", kFifteen + "16|17", kFifteen + "16|17"},
        {kOfFiles, "a||b", "c|b|a", "b|d|c", "c|b|d"},
        {kOfFiles, "a|b", "b|a", "", "b|a"},
    };
    for (const auto& [ofFiles, found, now, mine, saved] : cases) {
        put(L"info.his", found);
        load(ofFiles);
        put(L"info.his", now);
        put(L"info.his.bak", "older");
        save(ofFiles, mine);
        EXPECT_EQ(folder.bytes(L"info.his"), ends(saved));
        const bool keeps = now != kNone && saved != now;
        EXPECT_EQ(folder.bytes(L"info.his.bak"), keeps ? ends(now) : "older") << saved;
        put(L"info.his", "theirs");
        save(ofFiles, mine);
        EXPECT_EQ(folder.bytes(L"info.his"), "theirs") << "nothing more was done";
    }
    EXPECT_EQ(folder.names(), (Lines{"info.his", "info.his.bak"}));
    gProgram().folder = folder.path(L"none");
    save(kOfFiles, "a");
    save(kOfPaths, "a");
    // The reason is in the system's words.
    for (std::string& line : host.log) line.erase(0, line.rfind(" in '"));
}

}  // namespace
}  // namespace kestrel::test
