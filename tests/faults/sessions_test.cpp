#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <set>
#include <utility>

#include "faults/folder.h"
#include "faults/process.h"
#include "services/bytes.h"
#include "services/settings.h"

// Four programs at once over the same settings and histories.
namespace kestrel::test {
namespace {

constexpr int kEnds = 120;
constexpr std::size_t kPrograms = 4;

// A session's own text: long, so that half of it is seen.
std::string nameOf(int session) {
    return "/files/" + std::to_string(session) + "/" + std::string(5000, 'x') + ".gas";
}

// How a program is started whose processes have numbers of their own; nothing where the
// system does not let this user do that.
std::vector<std::string> ownNumbers() {
    const std::vector<std::string> start = {"/usr/bin/unshare", "--pid", "--fork", "--kill-child"};
    for (const bool asRoot : {false, true}) {
        std::vector<std::string> words = start;
        if (asRoot) words.insert(words.end(), {"--user", "--map-root-user"});
        std::vector<std::string> trial = words;
        trial.emplace_back("/bin/true");
        try {
            if (Process(trial).wait() == 0) return words;
        } catch (const std::runtime_error&) {
            return {};
        }
    }
    return {};
}

class Sessions : public testing::Test {
  protected:
    struct Session {
        int number = 0;
        std::size_t field = 0;
        std::unique_ptr<Process> program;
    };

    // `before` stands in front of the command line of every second program.
    void run(const std::vector<std::string>& before) {
        std::array<Session, kPrograms> sessions;
        int killed = 0;
        for (int ends = 0; ends < kEnds;) {
            const std::size_t field = draw(kPrograms);
            Session& session = sessions[field];
            if (session.program == nullptr) {
                session = start(field, field % 2 == 0 ? std::vector<std::string>() : before);
                continue;
            }
            ++ends;
            session.program->goOn();
            // Some end while others do; some are killed meanwhile.
            if (draw(8) == 0) {
                ::usleep(draw(2000));
                session.program->kill();
                session.program->wait();
                written_[field].insert(nameOf(session.number));
                killed_[field].insert(nameOf(session.number));
                ++killed;
            } else {
                ending_.push_back(std::move(session));
            }
            session.program.reset();
            if (draw(2) == 0 || ending_.size() > kPrograms) expectAllThere();
        }
        for (const Session& session : sessions) {
            if (session.program != nullptr) session.program->kill();
        }
        ending_.push_back(start(0, {}));
        ending_.back().program->goOn();
        expectAllThere();
        EXPECT_GT(killed, 0);
        std::printf("%d ends of four programs, %d of them killed\n", kEnds, killed);
    }

    // Waits for those that end. Their entries are in the history with those of before, as
    // far as it reaches, and each setting is what the last one made of it.
    void expectAllThere() {
        std::array<std::set<std::string>, kPrograms> last;
        for (const Session& session : ending_) {
            EXPECT_EQ(session.program->wait(), 0);
            ended_.push_back(nameOf(session.number));
            last[session.field].insert(ended_.back());
        }
        ending_.clear();
        expectHistory(L"info.his");
        expectHistory(L"info.his.bak");
        const std::string history = folder.bytes(L"info.his");
        constexpr std::size_t kMost = 8;  // of 16, since those that were killed are there too
        for (std::size_t i = ended_.size(); i-- > ended_.size() - std::min(ended_.size(), kMost);) {
            EXPECT_NE(history.find(ended_[i] + "\r\n"), history.npos) << ended_[i].substr(0, 12);
        }
        for (std::size_t field = 0; field < kPrograms; ++field) {
            if (last[field].empty()) continue;
            last[field].merge(std::exchange(killed_[field], {}));
            written_[field] = last[field];
        }
        expectSettings();
    }

    RecordingHost host;
    TempFolder folder;

  private:
    unsigned draw(unsigned below) { return static_cast<unsigned>(random_()) % below; }

    Session start(std::size_t field, std::vector<std::string> words) {
        Session session{++started_, field, nullptr};
        words.insert(words.end(), {KESTREL_TRIAL, "session", toUtf8(folder.path()),
                                   nameOf(started_), std::to_string(field)});
        session.program = std::make_unique<Process>(words);
        EXPECT_EQ(session.program->line(), "started");
        return session;
    }

    void expectSettings() {
        if (folder.bytes(L"settings.set") == "(missing)") return;
        gProgram().folder = folder.path();
        gProgram().settings = {};
        gReadSettings();
        const Settings& read = gProgram().settings;
        const std::array fields{read.orvane, read.zeltor, read.skritpad, read.tools[0]};
        for (std::size_t i = 0; i < kPrograms; ++i) {
            const std::string value = toUtf8(fields[i]);
            EXPECT_TRUE(written_[i].contains(value) || (written_[i].empty() && value.empty()))
                << i << " is " << value.substr(0, 12);
        }
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

    bool isName(const std::string& text) const {
        for (int session = 1; session <= started_; ++session) {
            if (text == nameOf(session)) return true;
        }
        return false;
    }

    std::minstd_rand random_{20'011};
    int started_ = 0;
    std::vector<Session> ending_;
    std::vector<std::string> ended_;
    // What each setting may be by now.
    std::array<std::set<std::string>, kPrograms> written_;
    std::array<std::set<std::string>, kPrograms> killed_;  // since a session ended well
};

TEST_F(Sessions, FourProgramsLoseNothing) {
    run({});
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"info.his", "info.his.bak", "settings.set"}));
}

TEST_F(Sessions, ProgramsWhoseProcessesHaveOtherNumbersLoseNothing) {
    const std::vector<std::string> before = ownNumbers();
    if (before.empty()) GTEST_SKIP() << "the system lets this user have no numbers of his own";
    run(before);
}

}  // namespace
}  // namespace kestrel::test
