#include "starts.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/frame.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "measure.h"
#include "table.h"
#include "ui/app.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;
using Steady = std::chrono::steady_clock;

constexpr int kRuns = 15;

class EmptyApp final : public wxApp {
  public:
    bool OnInit() override {
        (new wxFrame(nullptr, wxID_ANY, "empty"))->Show();
        return true;
    }
};

// Ends the process when something was painted and nothing is left to be done.
class EndOncePainted final : public wxEventFilter {
  public:
    EndOncePainted() { wxEvtHandler::AddFilter(this); }
    ~EndOncePainted() override { wxEvtHandler::RemoveFilter(this); }

    int FilterEvent(wxEvent& event) override {
        if (event.GetEventType() == wxEVT_PAINT) painted_ = true;
        if (event.GetEventType() == wxEVT_IDLE && painted_) std::_Exit(0);
        return Event_Skip;
    }

  private:
    bool painted_ = false;
};

struct Cost {
    double wall, cpu;  // milliseconds
};

double milliseconds(const timeval& time) {
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

Cost start(const char* program, std::vector<std::string> words) {
    std::vector<char*> arguments{const_cast<char*>(program)};
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const auto begin = Steady::now();
    pid_t child = 0;
    int status = 1;
    rusage used{};
    if (posix_spawn(&child, program, nullptr, nullptr, arguments.data(), environ) != 0 ||
        wait4(child, &status, 0, &used) != child || status != 0) {
        std::fputs("a start failed\n", stderr);
        std::exit(1);
    }
    return {std::chrono::duration<double, std::milli>(Steady::now() - begin).count(),
            milliseconds(used.ru_utime) + milliseconds(used.ru_stime)};
}

}  // namespace

std::string startsTable(const char* program) {
    const fs::path folder = fs::temp_directory_path() / "kestrel-bench-starts";
    fs::create_directories(folder);
    const fs::path file = folder / "small.gas";
    std::ofstream(file) << "[t:template,n:small]\r\n{\r\n\tdoc = \"Small\";\r\n}\r\n";
    // The settings are those of a new user.
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
        setenv(name, folder.c_str(), 1);
    }
    const std::vector<std::vector<std::string>> kWho{
        {"start", "empty"}, {"start", "kestrel"}, {"start", "kestrel", file.string()}};
    const char* const kNames[] = {"an empty window", "Kestrel", "Kestrel with a small file"};
    std::vector<std::vector<double>> wall(kWho.size());
    std::vector<std::vector<double>> cpu(kWho.size());
    for (const auto& words : kWho) start(program, words);
    for (std::size_t run = 0; run < kRuns; ++run) {
        for (std::size_t i = 0; i < kWho.size(); ++i) {
            const std::size_t who = (i + run) % kWho.size();
            const Cost cost = start(program, kWho[who]);
            wall[who].push_back(cost.wall);
            cpu[who].push_back(cost.cpu);
        }
    }
    fs::remove_all(folder);
    std::vector<std::vector<std::string>> rows{
        {"Start, until painted", "ms", "CPU ms", ": empty", "of CPU"}};
    for (std::size_t i = 0; i < kWho.size(); ++i) {
        rows.push_back({kNames[i], fixed(median(wall[i]), 0), fixed(median(cpu[i]), 0),
                        fixed(median(wall[i]) / median(wall[0]), 2),
                        fixed(median(cpu[i]) / median(cpu[0]), 2)});
    }
    return markdown(rows);
}

int startAs(const std::string& who, int count, char** words) {
    EndOncePainted end;
    if (who == "empty") {
        wxApp::SetInstance(new EmptyApp);
    } else {
        wxApp::SetInstance(new App);
    }
    return wxEntry(count, words);
}

}  // namespace kestrel::bench
