#include "services/histories.h"

#include <gtest/gtest.h>

#include <chrono>

#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "support/vectortextlist.h"

namespace kestrel {
namespace {

using Items = std::vector<std::wstring>;
using Lines = std::vector<std::string>;

class Histories : public testing::Test {
  protected:
    Histories() { gProgram().folder = folder.path(); }

    Items loaded(std::string_view bytes) {
        folder.put(L"info.his", bytes);
        test::VectorTextList list;
        gLoadHistory(list, L"info.his");
        return list.items;
    }
    void save(Items items) { gSaveHistory(test::VectorTextList(std::move(items)), L"info.his"); }

    test::RecordingHost host;
    test::TempFolder folder;
};

std::string lines(int count, const char* line) {
    std::string text;
    for (int i = 0; i < count; ++i) text.append(line).append("\r\n");
    return text;
}

TEST_F(Histories, Load) {
    EXPECT_EQ(loaded(""), Items{});
    EXPECT_EQ(loaded("a\r\n b \r\nc"), (Items{L"a", L" b ", L"c"}));
    EXPECT_EQ(loaded("a\nb\rc\r\n"), Items{L"a\nb\rc"});
    EXPECT_EQ(loaded("\t\r\n\x80\r\n"), (Items{L"\t", L"\u20AC"}));
    EXPECT_EQ(loaded("\xEF\xBB\xBF"
                     "\xD0\x96\r\n\x80\r\n"),
              (Items{L"\u0416", L"\xDC80"}));
    EXPECT_EQ(loaded(lines(2, "") + lines(2, "  ") + lines(20, "x")), Items(12, L"x"));
    EXPECT_EQ(loaded(lines(16, "") + "x"), Items{});
}

TEST_F(Histories, LoadSurvivesHostileFiles) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(loaded(std::string(10'000'000, 'x')), Items{});
    EXPECT_EQ(loaded(std::string("a\0b\r\n", 5)), Items{std::wstring(L"a\0b", 3)});
    EXPECT_EQ(loaded(lines(100'000, "x")).size(), 16U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(Histories, SaveWritesTheFirst16AndKeepsTheFileBefore) {
    folder.put(L"info.his.bak", "older\r\n");
    save({L"a", L"  ", L"\u0416.gas", L" b ", L""});
    const std::string first =
        "\xEF\xBB\xBF"
        "a\r\n\xD0\x96.gas\r\n b \r\n";
    EXPECT_EQ(folder.bytes(L"info.his"), first);
    EXPECT_EQ(folder.bytes(L"info.his.bak"), "older\r\n") << "there was no file to keep";
    Items many(15, L"x");
    many.insert(many.end(), {L"sixteenth", L"seventeenth"});
    save(many);
    EXPECT_EQ(folder.bytes(L"info.his"), lines(15, "x") + "sixteenth\r\n");
    EXPECT_EQ(folder.bytes(L"info.his.bak"), first);
    for (const Items& items : {Items{}, Items{L"", L"   "}}) save(items);
    EXPECT_EQ(folder.bytes(L"info.his.bak"), first) << "nothing would be left";
    EXPECT_EQ(folder.names(), (Lines{"info.his", "info.his.bak"}));
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Histories, WhatThisRunDidIsMergedIntoWhatTheFileHoldsNow) {
    const std::string four = "a\r\nb\r\nc\r\nd\r\n";
    const struct {
        const char* what;
        std::string now;
        Items mine;
        std::string saved;
    } cases[] = {
        {"nothing", "x\r\na\r\n", {L"a", L"b", L"c", L"d"}, "x\r\na\r\n"},
        {"added",
         "x\r\na\r\nb\r\n",
         {L"m", L"n", L"a", L"b", L"c", L"d"},
         "m\r\nn\r\nx\r\na\r\nb\r\n"},
        {"added by both", "x\r\nm\r\na\r\n", {L"m", L"a", L"b", L"c", L"d"}, "m\r\nx\r\na\r\n"},
        {"removed", "x\r\n" + four, {L"a", L"d"}, "x\r\na\r\nd\r\n"},
        {"too many",
         lines(15, "y") + "a\r\n",
         {L"m", L"a", L"b", L"c", L"d"},
         "m\r\n" + lines(15, "y")},
    };
    for (const auto& c : cases) {
        const testing::ScopedTrace where(__FILE__, __LINE__, c.what);
        EXPECT_EQ(loaded(four).size(), 4U);
        folder.put(L"info.his", c.now);
        save(c.mine);
        EXPECT_EQ(folder.bytes(L"info.his"), c.saved);
        std::filesystem::remove(folder.native(L"info.his.bak"));
        save(c.mine);
        EXPECT_EQ(folder.names(), Lines{"info.his"}) << "not written again";
    }
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Histories, FileListsKeepAllTheirLines) {
    const struct {
        std::string bytes;
        Items items;
        std::string saved;
    } cases[] = {
        {"a\r\n\r\n b \r\na", {L"a", L"", L" b ", L"a"}, "a\r\n\r\n b \r\na\r\nnew"},
        {"a\r\n", {L"a", L""}, "a\r\n\r\nnew"},
        {lines(20, "x") + "x", Items(21, L"x"), lines(21, "x") + "new"},
        {"\r\n", {L"", L""}, "\r\n\r\nnew"},
        {"", {}, "new"},
    };
    for (const auto& c : cases) {
        Items items = loadFileHistory(folder.put(L"spec.his", c.bytes));
        EXPECT_EQ(items, c.items);
        items.push_back(L"new");
        mSaveFileHistory(items, L"spec.his");
        EXPECT_EQ(folder.bytes(L"spec.his"), c.saved);
    }
    EXPECT_EQ(folder.bytes(L"spec.his.bak"), "") << "the last one";
    loadFileHistory(folder.put(L"spec.his", "a\r\n\r\nb"));
    folder.put(L"spec.his", "c\r\nb\r\na");
    mSaveFileHistory({L"b", L"d", L"c"}, L"spec.his");
    EXPECT_EQ(folder.bytes(L"spec.his"), "c\r\nb\r\nd");
    mSaveFileHistory({L""}, L"spec.his");
    EXPECT_EQ(folder.bytes(L"spec.his"), "c\r\nb\r\nd") << "nothing would be left";
    EXPECT_EQ(loadFileHistory(folder.path(L"none")), Items{});
    EXPECT_EQ(host.log, Lines{});
    gProgram().folder = folder.path(L"none");
    mSaveFileHistory({L"a"}, L"spec.his");
    ASSERT_EQ(host.log.size(), 1U);
    EXPECT_NE(host.log[0].find(" in 'mSaveFileHistory'"), std::string::npos) << host.log[0];
}

TEST_F(Histories, AddAndRemove) {
    test::VectorTextList list({L"a", L"b"});
    gAddHistoryItem(list, L"b");
    EXPECT_EQ(list.items, (Items{L"a", L"b"}));
    gAddHistoryItem(list, L"B");
    gAddHistoryItem(list, L" b");
    EXPECT_EQ(list.items, (Items{L" b", L"B", L"a", L"b"}));

    const struct {
        Items before;
        std::wstring text;
        Items after;
    } cases[] = {
        {{L"a", L"b", L"a"}, L"a", {L"b"}},       {{L"a", L"a", L"b"}, L"a", {L"a", L"b"}},
        {{L"b", L"a", L"a"}, L"a", {L"b", L"a"}}, {{L"a", L"a", L"a"}, L"a", {L"a"}},
        {{L"a", L""}, L"", {L"a", L""}},          {{L"a"}, L"A", {L"a"}},
    };
    for (const auto& c : cases) {
        test::VectorTextList removing(c.before);
        gRemoveHistoryItem(removing, c.text);
        EXPECT_EQ(removing.items, c.after);
    }
}

}  // namespace
}  // namespace kestrel
