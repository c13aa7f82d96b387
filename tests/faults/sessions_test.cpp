#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <stdexcept>

#include "faults/folder.h"
#include "faults/process.h"
#include "services/bytes.h"

// Four programs at once over the same settings and history.
namespace kestrel::test {
namespace {

constexpr int kEnds = 120;
constexpr std::array kFields{"orvane=", "zeltor=", "skritpad=", "tool1="};

using Words = std::vector<std::string>;

// How a program is started whose processes have numbers of their own; nothing where the
// system does not let this user do that.
Words ownNumbers() {
    Words words = {"/usr/bin/unshare", "--user",      "--map-root-user", "--pid",
                   "--fork",           "--kill-child"};
    try {
        Words trial = words;
        trial.emplace_back("/bin/true");
        return Process(trial).wait() == 0 ? words : Words();
    } catch (const std::runtime_error&) {
        return {};
    }
}

class Sessions : public testing::Test {
  protected:
    // `before` stands in front of the command line of every second program.
    void run(const Words& before) {
        for (int ends = 0; ends < kEnds;) {
            const std::size_t field = draw(kFields.size());
            if (running_[field] == nullptr) {
                start(field, field % 2 == 0 ? Words() : before);
                continue;
            }
            ++ends;
            running_[field]->goOn();
            // Some end while others do; some are killed meanwhile.
            if (draw(8) == 0) {
                ::usleep(draw(2000));
                running_[field]->kill();
                running_[field]->wait();
                running_[field].reset();
                killed_[field].push_back(names_[field]);
            } else {
                end(field);
            }
            if (draw(2) == 0 || ending_.size() > kFields.size()) expectAllThere();
        }
        for (const auto& program : running_) {
            if (program != nullptr) program->kill();
        }
        // The last one clears away what they left.
        start(0, {});
        running_[0]->goOn();
        end(0);
        expectAllThere();
    }

    TempFolder folder;

  private:
    unsigned draw(unsigned below) { return static_cast<unsigned>(random_()) % below; }

    void start(std::size_t field, Words words) {
        // Long, so that half of it is seen.
        names_[field] = "/" + std::to_string(++started_) + "/" + std::string(5000, 'x');
        words.insert(words.end(), {KESTREL_TRIAL, "session", toUtf8(folder.path()), names_[field],
                                   std::to_string(field)});
        running_[field] = std::make_unique<Process>(words);
        EXPECT_EQ(running_[field]->line(), "started");
    }

    void end(std::size_t field) {
        ending_.push_back(std::move(running_[field]));
        ended_.push_back(names_[field]);
        last_[field].push_back(names_[field]);
    }

    // Waits for those that end. Their entries are in the history with those of before, as
    // far as it reaches, and each setting is what one of its last made of it.
    void expectAllThere() {
        for (const auto& program : ending_) EXPECT_EQ(program->wait(), 0);
        ending_.clear();
        const std::string history = "\n" + folder.bytes(L"info.his");
        constexpr std::size_t kMost = 8;  // of 16, since those that were killed are there too
        for (std::size_t i = ended_.size() - std::min(ended_.size(), kMost); i < ended_.size();
             ++i) {
            EXPECT_NE(history.find("\n" + ended_[i] + "\r\n"), history.npos) << ended_[i][1];
        }
        const std::string settings = "\n" + folder.bytes(L"settings.set");
        for (std::size_t field = 0; field < kFields.size(); ++field) {
            if (last_[field].empty()) continue;
            last_[field].insert(last_[field].end(), killed_[field].begin(), killed_[field].end());
            EXPECT_TRUE(std::ranges::any_of(last_[field], [&](const std::string& name) {
                return settings.find(std::string("\n") + kFields[field] + name + "\r\n") !=
                       settings.npos;
            })) << kFields[field];
            killed_[field].clear();
            last_[field].clear();
        }
    }

    std::minstd_rand random_{20'011};
    int started_ = 0;
    std::array<std::unique_ptr<Process>, kFields.size()> running_;
    std::array<std::string, kFields.size()> names_;
    std::vector<std::unique_ptr<Process>> ending_;
    Words ended_;
    std::array<Words, kFields.size()> last_;    // that ended, since that was looked at
    std::array<Words, kFields.size()> killed_;  // that were killed
};

TEST_F(Sessions, FourProgramsLoseNothing) {
    run({});
    EXPECT_EQ(folder.names(), (Words{"info.his", "info.his.bak", "settings.set"}));
}

TEST_F(Sessions, ProgramsWhoseProcessesHaveOtherNumbersLoseNothing) {
    const Words before = ownNumbers();
    if (before.empty()) GTEST_SKIP() << "the system lets this user have no numbers of his own";
    run(before);
}

}  // namespace
}  // namespace kestrel::test
