#include <chrono>
#include <cstdlib>

#include "base/bytes.h"
#include "base/paths.h"
#include "tank/archives.h"
#include "tankhost/server.h"

namespace kestrel::test {
namespace {

using Time = std::chrono::steady_clock;
using namespace std::chrono_literals;

#if defined(__SANITIZE_ADDRESS__)  // whose processes take long to start
constexpr int kTries = 10;
#else
constexpr int kTries = kWindowsPaths ? 20 : 100;
#endif

// What the stand-in library does to its process, and a hundred times what this one sees of it.
class Harm : public Archives {
  protected:
    Harm() { place(L"lib"); }

    std::wstring archive(const std::string& call, const std::string& kind) const {
        return files.put(L"a.dsres", "tank|harm=" + call + "|by=" + kind +
                                         "\ndir|name=first\n.file|name=second\n");
    }

    void use(std::chrono::milliseconds patience) {
        library = makeTankLibrary({files.path(L"lib")}, L"" KESTREL_TANK_HOST, patience);
        gProgram().host.tank = library.get();
        host.log.clear();
    }

    std::wstring report_;
};

struct Case {
    const char* call;
    const char* kind;
    const char* doing;
    const char* listed;  // of the report
};

TEST_F(Harm, EndsOneProcessAndNoOther) {
    constexpr Case kCases[] = {
        {"OpenTank", "crash", "opening", ""},
        {"OpenTank", "memory", "opening", ""},
        {"GetRootDir", "exit", "reading", ""},
        {"GetChildCount", "abort", "listing a folder of", ""},
        {"GetChildName", "crash", "listing a folder of", ""},
        {"CloseTank", "exit", "closing", "first second"},
    };
    for (const Case& harm : kCases) {
        use(30s);
        const std::wstring path = archive(harm.call, harm.kind);
        for (int i = 0; i < kTries; ++i) {
            report_.clear();
            gblnListTank(path, report_, &host, kNameList);
            const Lines told = errors();
            ASSERT_EQ(told.size(), 1U) << harm.call;
            ASSERT_NE(told.front().find(std::string("The archive library stopped working while ") +
                                        harm.doing + " 'ARCHIVE' ("),
                      std::string::npos)
                << told.front();
            for (const wchar_t* name : {L"first", L"second"}) {
                ASSERT_EQ(report_.find(name) != report_.npos, *harm.listed != 0) << harm.call;
            }
            ASSERT_EQ(gProgram().progress, nullptr);
        }
    }
    EXPECT_TRUE(opens());
}

TEST_F(Harm, DoesNotReachWhatTheLibraryWrites) {
    use(30s);
    EXPECT_TRUE(gblnListTank(archive("GetChildName", "write"), report_, &host, kNameList));
    EXPECT_EQ(errors(), Lines());
    EXPECT_NE(report_.find(L"second"), report_.npos);
}

// A library that never answers is ended by Cancel at once, and asked about after a while.
TEST_F(Harm, IsEndedWithACallThatNeverReturns) {
    const std::wstring path = archive("GetChildCount", "hang");
    for (int i = 0; i < kTries; ++i) {
        use(30s);
        host.cancelAtBreath = host.breaths;
        // Where starting the process takes long it is that which is cancelled.
        gblnListTank(path, report_, &host, kNameList);
        EXPECT_LT(Time::now() - host.cancelledAt, 200ms);
        EXPECT_EQ(errors(), Lines());
    }
    host.cancelAtBreath = static_cast<std::size_t>(-1);
    for (const bool inTime : {true, false}) {
        use(inTime ? 30s : 50ms);
        host.answers = {Answer::yes, Answer::no};
        if (inTime) host.cancelAtBreath = host.breaths;
        // Without a dialog of its own, one shows after a while.
        EXPECT_FALSE(gblnTestTank(path));
        EXPECT_EQ(host.logged("ask: ").size(), inTime ? 0U : 2U);
        EXPECT_EQ(host.logged("Process: ").size(), inTime ? 1U : 0U);
        host.cancelAtBreath = static_cast<std::size_t>(-1);
    }
    EXPECT_EQ(gProgram().progress, nullptr);
}

// What a client may ask, and what it gets: an answer, or an error's number.
TEST_F(Harm, QuestionsThatMakeNoSenseAreErrors) {
    tankhost::Server server;
    const auto asked = [&](const Lines& words) {
        PackedWriter question;
        for (const std::string& word : words) question.add(std::string_view(word));
        return server.answer(question.bytes());
    };
    const std::string lib = toUtf8(files.path(L"lib/" + std::wstring(dynamic::tankFileName())));
    const std::string version(tankhost::kVersion);
    const std::string path =
        toUtf8(files.put(L"a.dsres", "tank\nfile|name=a|data=abc|bytes=70000\n"));
    const std::pair<Lines, std::string> cases[] = {
        {{}, "1:5"},
        {{"1", path}, "1:5"},
        {{"0", "kestrel-tank 0", lib}, "1:5"},
        {{"0", version, path}, "2:48"},
        {{"0", version, lib, "more"}, "1:5"},
        {{"0", version, lib}, "1:014:" + version},
        {{"x"}, "1:5"},
        {{"1", path}, "1:011:-2000000000"},
        {{"3", "-2000000000"}, "1:04:4096"},
        {{"4", "-2000000000", "4096", "0", "0"}, "1:0"},
        {{"4", "-2000000000", "4096", "0", "9"}, "1:04:40961:132:1:14:40971:a0:1:01:01:01:01:01:0"},
        {{"5", "-2000000000", "0"}, "1:01:01:0"},
        {{"6", "-2000000000", "4097"}, "1:05:700001:1"},
        {{"7", "1", "1", "2"}, "1:02:bc"},
        {{"7", "2", "0", "9"}, "1:00:"},
        {{"8", "2"}, "1:01:0"},
        {{"8", "1"}, "1:01:3"},
        {{"2", "-2000000000"}, "1:01:7"},
    };
    for (const auto& [words, answer] : cases) {
        const std::string given = asked(words);
        EXPECT_TRUE(given.starts_with(answer)) << given << " for " << testing::PrintToString(words);
    }
    EXPECT_TRUE(server.answer("9:1").starts_with("1:5"));
}

// A process that is none of ours, or has gone mad: what makes no sense is told once.
TEST_F(Harm, IsNoMoreThanAMessageWhereAnswersMakeNoSense) {
    if (kWindowsPaths) GTEST_SKIP() << "a script is no program there";
    const auto frame = [](const Lines& words) {
        PackedWriter answer;
        for (const std::string& word : words) answer.add(std::string_view(word));
        PackedWriter whole;
        whole.add(std::string_view(answer.bytes()));
        return whole.bytes();
    };
    const std::string loaded = frame({"0", std::string(tankhost::kVersion)});
    const std::string opened = frame({"0", "5"});
    const std::string rooted = frame({"0", "7"});
    const std::vector<Lines> cases = {
        {"no frame"},
        {"99999999999999999999:"},
        {"8388609:"},
        {"-1:"},
        {frame({})},
        {frame({"0", "kestrel-tank 0"})},
        {loaded + loaded},
        {loaded, "1:x"},
        {loaded, frame({"0"})},
        {loaded, frame({"0", "5", "more"})},
        {loaded, frame({"0", "99999999999"})},
        {loaded, opened, rooted, frame({"0", "7"})},
        {loaded, opened, rooted, frame({"0", "7", "1", "2:x"})},
        {loaded, opened, rooted, frame({"0", "7", "1", "1:01:1"})},
    };
    const std::wstring path = archive("none", "none");
    for (const Lines& answers : cases) {
        std::string script = "#!/bin/sh\n";
        for (const std::string& answer : answers) {
            script += "head -c 1 >/dev/null; sleep 0.05; printf '" + answer + "'\n";
        }
        files.put(L"host", script + "exec sleep 9\n");
        fs::permissions(files.native(L"host"), fs::perms::owner_all);
        library = makeTankLibrary({files.path(L"lib")}, files.path(L"host"), 30s);
        gProgram().host.tank = library.get();
        report_.clear();
        gblnListTank(path, report_, &host, kNameList);
        const Lines told = errors();
        ASSERT_EQ(told.size(), 1U) << answers.back() << testing::PrintToString(told);
        EXPECT_NE(told[0].find("stopped working"), std::string::npos) << told[0];
    }
}

// scripts/test-windows tells where that library and its process are.
TEST_F(Harm, IsDoneThroughWineWhereThereIsNoOtherLibrary) {
    const char* build = std::getenv("KESTREL_WINDOWS_TANK");
    if (build == nullptr) GTEST_SKIP() << "there is no library for Windows";
    fs::remove_all(files.native(L"lib"));
    fs::create_directory(files.native(L"lib"));
    fs::copy(fs::path(build) / "src/tankhost/kestrel-tank.exe", files.native(L"lib"));
    fs::copy(fs::path(build) / "tests/stubs/tank/kestrel_stub_tank/tank.dll", files.native(L"lib"));
    use(60s);
    const std::wstring sound = files.put(L"b.dsres", "tank\nfile|name=caf\xE9|data=abc\n");
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(gblnFindChild(sound, L"caf\u00E9", 0, report_, &host));
    EXPECT_NE(report_.find(L"\r\nabc\r\n"), report_.npos);
    EXPECT_EQ(errors().size(), 1U) << "that it is read through Wine";
    EXPECT_TRUE(gblnListTank(archive("GetChildName", "crash"), report_, &host, kNameList));
    EXPECT_EQ(errors().size(), 1U);
}

}  // namespace
}  // namespace kestrel::test
