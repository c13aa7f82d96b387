#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "faults/faults.h"
#include "services/histories.h"
#include "services/settings.h"
#include "support/vectortextlist.h"

namespace kestrel::test {
namespace {

constexpr std::size_t kPrograms = 4;
constexpr int kRounds = 40;

class Sessions : public Services {
  protected:
    // Starts as the program does, waits, changes its own setting and ends as it does.
    int useProgram(std::size_t field, const std::string& name) {
        VectorTextList list;
        gReadSettings();
        gLoadHistory(list, L"info.his");
        ::raise(SIGSTOP);
        Settings& settings = gProgram().settings;
        const std::wstring value = fromUtf8(name);
        *std::array{&settings.orvane, &settings.zeltor, &settings.skritpad,
                    &settings.tools[0]}[field] = value;
        gWriteSettings();
        gAddHistoryItem(list, value);
        gSaveHistory(list, L"info.his");
        return host.log.empty() ? 0 : 1;
    }

    bool holds(std::wstring_view file, const std::string& line) const {
        return ("\n" + folder.bytes(file)).find("\n" + line + "\r\n") != line.npos;
    }
};

// Of those that end at once over the same settings and history, in some rounds one is killed
// meanwhile.
TEST_F(Sessions, FourProgramsLoseNothing) {
    constexpr std::array<const char*, kPrograms> kKeys{"orvane=", "zeltor=", "skritpad=", "tool1="};
    std::minstd_rand random(20'011);
    std::array<std::string, kPrograms> names, before;
    std::array<int, kPrograms> processes{};
    for (int round = 1; round <= kRounds; ++round) {
        for (std::size_t i = 0; i < kPrograms; ++i) {
            before[i] = std::exchange(names[i], std::to_string(4 * round + static_cast<int>(i)));
            // Long, so that half of it is seen.
            names[i].append(5000, 'x');
            processes[i] = startProcess([&] { return useProgram(i, names[i]); });
        }
        for (const int process : processes) ::waitpid(process, nullptr, WUNTRACED);
        for (const int process : processes) ::kill(process, SIGCONT);
        // The last ones clear away what was left.
        const std::size_t killed = round < kRounds ? random() % (2 * kPrograms) : kPrograms;
        if (killed < kPrograms) {
            ::usleep(static_cast<useconds_t>(random()) % 5000);
            ::kill(processes[killed], SIGKILL);
        }
        for (std::size_t i = 0; i < kPrograms; ++i) {
            const int end = endOf(processes[i]);
            const bool written = end == 0;
            EXPECT_TRUE(written || i == killed) << kKeys[i] << end;
            if (!written && !holds(L"settings.set", kKeys[i] + names[i])) names[i] = before[i];
        }
        for (std::size_t i = 0; i < kPrograms; ++i) {
            EXPECT_TRUE(holds(L"settings.set", kKeys[i] + names[i])) << kKeys[i] << round;
            EXPECT_TRUE(i == killed || holds(L"info.his", names[i])) << kKeys[i] << round;
        }
    }
    EXPECT_EQ(folder.names(), (Lines{"info.his", "info.his.bak", "settings.set"}));
}

}  // namespace
}  // namespace kestrel::test
