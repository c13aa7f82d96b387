#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#include "faults/faults.h"
#include "services/bytes.h"
#include "services/histories.h"
#include "services/settings.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "support/vectortextlist.h"

// Four programs at once over the same settings and history.
namespace kestrel::test {
namespace {

constexpr int kEnds = 120;
constexpr std::array kFields{"orvane=", "zeltor=", "skritpad=", "tool1="};

using Words = std::vector<std::string>;

// One that runs, and those before it that used the same setting.
struct Program {
    std::unique_ptr<Child> child;
    int line = -1;  // it waits for a byte of this
    std::string name;
    Words last;             // ended or were killed since the setting was looked at
    bool hasEnded = false;  // one of them was not killed
};

class Sessions : public testing::Test {
  protected:
    // The processes of every second program have numbers of their own where they are `apart`.
    void run(bool apart) {
        for (int ends = 0; ends < kEnds;) {
            const std::size_t field = draw(kFields.size());
            if (programs_[field].child == nullptr) {
                start(field, apart && field % 2 == 1);
                continue;
            }
            ++ends;
            // Some end while others do; some are killed meanwhile.
            end(programs_[field], draw(8) == 0);
            if (draw(2) == 0 || ending_.size() > kFields.size()) expectAllThere();
        }
        for (Program& program : programs_) program.child.reset();
        // The last one clears away what they left.
        start(0, false);
        end(programs_[0], false);
        expectAllThere();
        EXPECT_EQ(folder_.names(), (Words{"info.his", "info.his.bak", "settings.set"}));
    }

  private:
    unsigned draw(unsigned below) { return static_cast<unsigned>(random_()) % below; }

    void start(std::size_t field, bool apart) {
        Program& program = programs_[field];
        // Long, so that half of it is seen.
        program.name = "/" + std::to_string(++started_) + "/" + std::string(5000, 'x');
        int line[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, line), 0);
        const auto work = [&] { return useProgram(field, line[1]); };
        program.child = std::make_unique<Child>(work, apart);
        ::close(line[1]);
        char started = 0;
        EXPECT_EQ(::read(line[0], &started, 1), 1);
        program.line = line[0];
    }

    // Starts as the program does, says so, waits, changes the setting and ends as it does.
    int useProgram(std::size_t field, int line) const {
        RecordingHost host;
        gProgram().folder = folder_.path();
        VectorTextList list;
        gReadSettings();
        gLoadHistory(list, L"info.his");
        char go = 0;
        if (::write(line, "", 1) != 1 || ::read(line, &go, 1) != 1) return 2;
        Settings& settings = gProgram().settings;
        const std::wstring name = fromUtf8(programs_[field].name);
        *std::array{&settings.orvane, &settings.zeltor, &settings.skritpad,
                    &settings.tools[0]}[field] = name;
        gWriteSettings();
        gAddHistoryItem(list, name);
        gSaveHistory(list, L"info.his");
        return host.log.empty() ? 0 : 1;
    }

    void end(Program& program, bool killed) {
        EXPECT_EQ(::write(program.line, "", 1), 1);
        ::close(program.line);
        program.last.push_back(program.name);
        if (killed) {
            ::usleep(draw(2000));
            program.child.reset();
            return;
        }
        program.hasEnded = true;
        ending_.push_back(std::move(program.child));
        ended_.push_back(program.name);
        constexpr std::size_t kMost = 8;  // of 16, since those that were killed are there too
        if (ended_.size() > kMost) ended_.erase(ended_.begin());
    }

    // Waits for those that end. Their entries are in the history with those of before, as
    // far as it reaches, and each setting is what one of its last made of it.
    void expectAllThere() {
        for (const auto& child : ending_) EXPECT_EQ(child->wait(), 0);
        ending_.clear();
        const std::string history = "\n" + folder_.bytes(L"info.his");
        for (const std::string& name : ended_) {
            EXPECT_NE(history.find("\n" + name + "\r\n"), history.npos) << name.substr(0, 9);
        }
        const std::string settings = "\n" + folder_.bytes(L"settings.set");
        for (std::size_t field = 0; field < kFields.size(); ++field) {
            Program& program = programs_[field];
            if (!std::exchange(program.hasEnded, false)) continue;
            const Words last = std::exchange(program.last, {});
            EXPECT_TRUE(std::ranges::any_of(last, [&](const std::string& name) {
                return settings.find(std::string("\n") + kFields[field] + name + "\r\n") !=
                       settings.npos;
            })) << kFields[field];
        }
    }

    TempFolder folder_;
    std::minstd_rand random_{20'011};
    int started_ = 0;
    std::array<Program, kFields.size()> programs_;
    std::vector<std::unique_ptr<Child>> ending_;
    Words ended_;  // the last of them
};

TEST_F(Sessions, FourProgramsLoseNothing) {
    run(false);
}

TEST_F(Sessions, ProgramsWhoseProcessesHaveOtherNumbersLoseNothing) {
    const auto number = [] { return static_cast<int>(::getpid()); };
    if (Child(number, true).wait() != 1) GTEST_SKIP() << "this user may have no numbers of his own";
    run(true);
}

}  // namespace
}  // namespace kestrel::test
