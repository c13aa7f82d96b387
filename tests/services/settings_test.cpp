#include "services/settings.h"

#include <gtest/gtest.h>

#include <ctime>

#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

class SettingsFile : public testing::Test {
  protected:
    SettingsFile() { gProgram().folder = folder.path(); }

    const Settings& read(std::string_view bytes) {
        folder.put(L"settings.set", bytes);
        gProgram().settings = {L"o", L"z", L"s", {L"1", L"2", L"3", L"4", L"5"}};
        gReadSettings();
        return gProgram().settings;
    }
    static std::string all() {
        const Settings& s = gProgram().settings;
        std::string text;
        for (const std::wstring& field : {s.orvane, s.zeltor, s.skritpad, s.tools[0], s.tools[1],
                                          s.tools[2], s.tools[3], s.tools[4]}) {
            text.append(test::shown(field)).append(",");
        }
        return text;
    }

    test::RecordingHost host;
    test::TempFolder folder;
};

TEST_F(SettingsFile, Read) {
    const struct {
        const char* bytes;
        const char* fields;
    } cases[] = {
        {"", "o,z,s,1,2,3,4,5,"},
        {"TOOL1=abc", "o,z,s,abc,2,3,4,5,"},
        {"skritpad=C:\\x=y\\z.exe\r\n", "o,z,C:\\x,1,2,3,4,5,"},
        {"orvane=a\r\nORVANE= b \r\n", " b ,z,s,1,2,3,4,5,"},
        {"tool5=\r\nZeltor=x\r\n", "o,x,s,1,2,3,4,,"},
        {" orvane=a\r\norvane =b\r\norvan=c\r\n=d\r\norvane\r\n", "o,z,s,1,2,3,4,5,"},
        {"\xEF\xBB\xBFtool2=a\norvane=b\r\n", "b,z,s,1,a,3,4,5,"},
        {"tool6=x\r\ntool=y\r\n", "o,z,s,1,2,3,4,5,"},
        {"tool1==x\r\ntool2=cap|C:\\t.exe", "o,z,s,,cap|C:\\t.exe,3,4,5,"},
        {"orvane=\x80", "\xE2\x82\xAC,z,s,1,2,3,4,5,"},
    };
    for (const auto& c : cases) {
        read(c.bytes);
        EXPECT_EQ(all(), c.fields) << c.bytes;
    }
    std::filesystem::remove(folder.native(L"settings.set"));
    gReadSettings();
    EXPECT_EQ(all(), std::end(cases)[-1].fields) << "a missing file changes nothing";
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(SettingsFile, WriteNamesAllEightInOrder) {
    gProgram().settings = {L"o", L"z", L"\u20AC", {L"1", L"2", L"", L"4", L"a=b"}};
    gWriteSettings();
    EXPECT_EQ(folder.bytes(L"settings.set"),
              "orvane=o\r\nzeltor=z\r\nskritpad=\x80\r\ntool1=1\r\ntool2=2\r\ntool3=\r\n"
              "tool4=4\r\ntool5=a=b\r\n");
    EXPECT_EQ(folder.names(), Lines{"settings.set"});
}

TEST_F(SettingsFile, WhatThisRunChangedIsPutIntoWhatTheFileHoldsNow) {
    const std::string rest = "tool1=\r\ntool2=\r\ntool3=\r\ntool4=\r\ntool5=\r\n";
    const struct {
        const char* start;
        const wchar_t* skritpad;
        const char* now;
        std::string saved;
        const char* backup;
    } cases[] = {
        {"zeltor=z\r\nskritpad=s\r\n", L"s", "", "", "(missing)"},
        {"", L"s", "zeltor=z=1", "orvane=\r\nzeltor=z=1\r\nskritpad=s\r\n" + rest, "(missing)"},
        {"zeltor=z\r\n", L"s", "ZELTOR=x\r\nskritpad=y",
         "orvane=\r\nzeltor=x\r\nskritpad=s\r\n" + rest, "(missing)"},
        {"skritpad=s", L"", "skritpad=y\n\n", "orvane=\r\nzeltor=\r\nskritpad=\r\n" + rest,
         "(missing)"},
        {"zeltor=z\r\n", L"", "; mine\r\nzeltor=x", "; mine\r\nzeltor=x", "(missing)"},
        {"zeltor=z", L"\u0416", "zeltor=\x80",
         "\xEF\xBB\xBForvane=\r\nzeltor=\xE2\x82\xAC\r\nskritpad=\xD0\x96\r\n" + rest, "(missing)"},
        {"zeltor=z\r\n", L"s\ntool1=t", "; mine\r\nzeltor=x",
         "orvane=\r\nzeltor=x\r\nskritpad=\r\n" + rest, "; mine\r\nzeltor=x"},
    };
    for (const auto& c : cases) {
        gProgram().settings = {};
        folder.put(L"settings.set", c.start);
        gReadSettings();
        gProgram().settings.skritpad = c.skritpad;
        folder.put(L"settings.set", c.now);
        gWriteSettings();
        EXPECT_EQ(folder.bytes(L"settings.set"), c.saved);
        EXPECT_EQ(folder.bytes(L"settings.set.bak"), c.backup);
    }
    EXPECT_EQ(folder.names(), (Lines{"settings.set", "settings.set.bak"}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(SettingsFile, HostileFilesAreReadInNoTime) {
    std::string many;
    for (int i = 0; i < 100'000; ++i) many += "tool1=x\r\n";
    const std::string cases[] = {std::string(10'000'000, '='), std::string(10'000'000, '\0'),
                                 std::string(10'000'000, '\r') + "\norvane=x", many};
    for (const std::string& bytes : cases) {
        folder.put(L"settings.set", bytes);
        // Of the processor where the system tells it: other work on the machine takes none.
        const std::clock_t start = std::clock();
        gReadSettings();
        EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
    }
    EXPECT_EQ(all(), "x,,,x,,,,,");
    EXPECT_EQ(host.log, Lines{});
}

TEST(ToolCaption, IsTheTextBeforeTheBar) {
    EXPECT_EQ(toolCaption(L"", L"Tool 1"), L"Tool 1");
    EXPECT_EQ(toolCaption(L"Maker|C:\\m.exe|x", L"Tool 1"), L"Maker");
    EXPECT_EQ(toolCaption(L"no bar", L"Tool 1"), L"no bar");
    EXPECT_EQ(toolCaption(L"|C:\\m.exe", L"Tool 1"), L"");
}

}  // namespace
}  // namespace kestrel
