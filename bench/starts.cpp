#include "starts.h"

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/frame.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "ui/app.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;
// The file of a start; empty without one.
std::wstring& openedFile() {
    static std::wstring file;
    return file;
}

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

// The CPU seconds of a start until it is painted.
double start(const char* program, std::vector<std::string> words) {
    std::vector<char*> arguments{const_cast<char*>(program)};
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = 1;
    rusage used{};
    if (posix_spawn(&child, program, nullptr, nullptr, arguments.data(), environ) != 0 ||
        wait4(child, &status, 0, &used) != child || status != 0) {
        std::fputs("a start failed\n", stderr);
        std::exit(1);
    }
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

}  // namespace

void addStarts(const char* program) {
    static const fs::path folder = fs::temp_directory_path() / "kestrel-bench-starts";
    fs::create_directories(folder);
    const fs::path file = folder / "small.gas";
    std::ofstream(file) << "[t:template,n:small]\r\n{\r\n\tdoc = \"Small\";\r\n}\r\n";
    // The settings are those of a new user.
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
        setenv(name, folder.c_str(), 1);
    }
    const std::pair<const char*, std::vector<std::string>> all[] = {
        {"a start of an empty window", {"start", "empty"}},
        {"a start", {"start", "kestrel"}},
        {"a start with a small file", {"start", "kestrel", file.string()}}};
    for (const auto& [name, words] : all) {
        benchmark::RegisterBenchmark(name,
                                     [program, words = words](benchmark::State& state) {
                                         double cpu = 0;
                                         for (auto _ : state) cpu += start(program, words);
                                         state.counters["CPU s"] = benchmark::Counter(
                                             cpu, benchmark::Counter::kAvgIterations);
                                     })
            ->Iterations(1)
            ->Repetitions(15)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

int startAs(const std::string& who, int count, char** words) {
    if (count > 1) openedFile() = fs::path(words[1]).wstring();
    EndOncePainted end;
    if (who == "empty") {
        wxApp::SetInstance(new EmptyApp);
    } else {
        wxApp::SetInstance(new App);
    }
    int none = 1;
    return wxEntry(none, words);
}

}  // namespace kestrel::bench

// As the program's own main source does.
std::optional<std::wstring> kestrel::App::commandFile() {
    return bench::openedFile().empty() ? std::nullopt : std::optional(bench::openedFile());
}
