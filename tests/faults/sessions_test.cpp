#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "faults/folder.h"
#include "faults/process.h"
#include "services/bytes.h"
#include "services/settings.h"

// Two programs at once over the same settings and histories.
namespace kestrel::test {
namespace {

constexpr int kEnds = 200;

// A session's own text: long, so that half of it is seen.
std::string nameOf(int session) {
    return "/files/" + std::to_string(session) + "/" + std::string(5000, 'x') + ".gas";
}

class Sessions : public testing::Test {
  protected:
    std::unique_ptr<Process> start() {
        const std::vector<std::string> words = {KESTREL_TRIAL, "session", toUtf8(folder.path()),
                                                nameOf(++started_)};
        auto program = std::make_unique<Process>(words);
        EXPECT_EQ(program->line(), "started");
        return program;
    }

    // The settings are those of one session, whole.
    void expectSettings() {
        if (folder.bytes(L"settings.set") == "(missing)") return;
        gProgram().folder = folder.path();
        gProgram().settings = {};
        gReadSettings();
        const Settings& read = gProgram().settings;
        EXPECT_TRUE(isName(toUtf8(read.orvane)));
        EXPECT_EQ(read.zeltor, read.orvane);
        EXPECT_EQ(read.skritpad, read.orvane);
        for (const std::wstring& tool : read.tools) EXPECT_EQ(tool, read.orvane);
    }

    // A history is one whole line or more.
    void expectHistory(std::wstring_view name) const {
        std::string rest = folder.bytes(name);
        if (rest == "(missing)") return;
        EXPECT_NE(rest, "");
        while (!rest.empty()) {
            const std::size_t end = rest.find("\r\n");
            ASSERT_NE(end, rest.npos) << "cut";
            EXPECT_TRUE(isName(rest.substr(0, end)));
            rest.erase(0, end + 2);
        }
    }

    void expectWhole() {
        expectSettings();
        expectHistory(L"info.his");
        expectHistory(L"info.his.bak");
    }

    RecordingHost host;
    TempFolder folder;

  private:
    bool isName(const std::string& text) const {
        for (int session = 1; session <= started_; ++session) {
            if (text == nameOf(session)) return true;
        }
        return false;
    }

    int started_ = 0;
};

TEST_F(Sessions, TwoProgramsLeaveWholeFiles) {
    std::minstd_rand random(20'011);
    const auto draw = [&random](unsigned below) { return static_cast<unsigned>(random()) % below; };
    std::unique_ptr<Process> programs[2];
    std::vector<std::unique_ptr<Process>> ending;
    int killed = 0;
    for (int ends = 0; ends < kEnds;) {
        std::unique_ptr<Process>& program = programs[draw(2)];
        if (program == nullptr) {
            program = start();
            continue;
        }
        ++ends;
        program->goOn();
        // Some end while the other does; some are killed meanwhile.
        if (draw(8) == 0) {
            ::usleep(draw(2000));
            program->kill();
            program->wait();
            ++killed;
        } else {
            ending.push_back(std::move(program));
        }
        program.reset();
        if (draw(2) == 0) {
            for (const auto& one : ending) EXPECT_EQ(one->wait(), 0);
            ending.clear();
        }
        expectWhole();
    }
    for (const auto& one : ending) EXPECT_EQ(one->wait(), 0);
    for (auto& program : programs) program.reset();
    const auto last = start();
    last->goOn();
    EXPECT_EQ(last->wait(), 0);
    expectWhole();
    EXPECT_EQ(shotOf(folder).strays, 0U);
    EXPECT_EQ(shotOf(folder).files.size(), 3U);
    EXPECT_GT(killed, 0);
    std::printf("%d ends of two programs, %d of them killed\n", kEnds, killed);
}

}  // namespace
}  // namespace kestrel::test
