// Runs the loader and the renderer beside other parsers on the same generated information.
// See README.md.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

#include "base/bytes.h"
#include "contenders.h"
#include "gas/load.h"
#include "shapes.h"

namespace kestrel::bench {
namespace {

constexpr std::size_t kSizes[] = {1, 10, 100};  // MB of `.gas`

// Of the process since the last reset, in bytes; -1 where the system does not tell.
class PeakMemory final : public benchmark::MemoryManager {
  public:
    void Start() override {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";
        before_ = statusBytes("VmRSS:");
    }
    void Stop(Result* result) override { result->max_bytes_used = statusBytes("VmHWM:") - before_; }

  private:
    static std::int64_t statusBytes(std::string_view key) {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(key))
                return std::strtoll(line.c_str() + key.size(), nullptr, 10) << 10;
        }
        return -1;
    }

    std::int64_t before_ = 0;
};

Input& inputOf(std::size_t megabytes) {
    static std::map<std::size_t, Input> inputs;
    return inputs.try_emplace(megabytes, megabytes * 1'000'000).first->second;
}

void measure(benchmark::State& state, const Contender& contender, std::size_t megabytes) {
    Input& input = inputOf(megabytes);
    contender.run(input);  // makes what it works on
    for (auto _ : state) {
        state.PauseTiming();
        malloc_trim(0);
        state.ResumeTiming();
        Result result = contender.run(input);
        state.PauseTiming();
        result.reset();
        state.ResumeTiming();
    }
    const auto bytes = static_cast<double>(input.sizeOf(Format::gas));
    state.counters["bytes"] = bytes;
    state.counters["MB/s"] =
        benchmark::Counter(bytes * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

void measureFree(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto records = loadOrExit(inputOf(100).path(Format::gas));
        state.ResumeTiming();
        records = {};
    }
}

void measureShape(benchmark::State& state, const Shape& shape) {
    const std::string text = textOf(shape, static_cast<std::size_t>(state.range(0)) * 1'000'000);
    for (auto _ : state) benchmark::DoNotOptimize(readRecords(text, CodePage::utf8()));
    state.SetComplexityN(state.range(0));
}

// Prints what is measured as it comes, and the goals behind it.
class Report final : public benchmark::ConsoleReporter {
  public:
    Report() : ConsoleReporter(OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        std::vector<Run> shown;
        for (const Run& run : runs) {
            const std::string& name = run.run_name.function_name;
            if (run.run_type == Run::RT_Aggregate) shown.push_back(run);
            if (run.aggregate_name == "median") seconds_[name] = run.GetAdjustedCPUTime() * 1e-3;
            if (run.memory_result != nullptr && run.counters.contains("bytes")) {
                memory_[name] = static_cast<double>(run.memory_result->max_bytes_used) /
                                run.counters.at("bytes").value;
            }
        }
        if (!shown.empty()) ConsoleReporter::ReportRuns(shown);
    }

    void printGoals() const {
        std::printf("\n%-44s %10s %10s %10s %10s\n", "goal", "limit", "1 MB", "10 MB", "100 MB");
        ratio("load : simdjson into records", 1.0, "load", "simdjson into records");
        ratio("load : pugixml's own tree", 0.6, "load", "pugixml's own tree");
        ratio("load : libconfig++ into records", 6.0, "load", "libconfig++ into records");
        ratio("render : copying the wide text", 1.5, "render", "copying the wide text");
        for (const char* name : {"load", "render"}) {
            const auto times = timesOf(name);
            const double growth = std::log(times[2] / times[0]) / std::log(100);
            std::printf("%-44s %10s %32.3f\n", (std::string(name) + ", exponent").c_str(),
                        "<= 1.05", growth);
        }
        std::printf("%-44s %10s", "load, peak bytes a source byte", "<= 3.5");
        for (const std::size_t size : kSizes)
            std::printf(" %10.2f", of(memory_, nameOf("load", size)));
        std::printf("\n%-44s %10s %32.1f\n", "freeing 100 MB, ms", "<= 10",
                    of(seconds_, "free") * 1e3);
    }

    static std::string nameOf(const std::string& contender, std::size_t megabytes) {
        return contender + ", " + std::to_string(megabytes) + " MB";
    }

  private:
    // NaN for what was not measured.
    static double of(const std::map<std::string, double>& values, const std::string& name) {
        const auto found = values.find(name);
        return found == values.end() ? NAN : found->second;
    }

    std::vector<double> timesOf(const char* name) const {
        std::vector<double> times;
        for (const std::size_t size : kSizes) times.push_back(of(seconds_, nameOf(name, size)));
        return times;
    }

    void ratio(const char* what, double least, const char* ours, const char* others) const {
        std::printf("%-44s %7s%3.1f", what, ">= ", least);
        for (std::size_t i = 0; i < std::size(kSizes); ++i) {
            std::printf(" %10.2f", timesOf(others)[i] / timesOf(ours)[i]);
        }
        std::puts("");
    }

    std::map<std::string, double> seconds_;
    std::map<std::string, double> memory_;  // bytes a source byte
};

bool areSame(const GasTemplate& a, const GasTemplate& b) {
    return a.Name == b.Name && a.Kind == b.Kind && a.Properties == b.Properties;
}

// Ends the program when one of them gives other records than the loader.
void checkRecords(const std::vector<Contender>& all) {
    Input& input = inputOf(1);
    for (const Contender& contender : all) {
        if (contender.records == nullptr ||
            std::ranges::equal(input.records(), contender.records(input), areSame)) {
            continue;
        }
        std::fprintf(stderr, "%s: other records\n", contender.name.c_str());
        std::exit(1);
    }
}

void registerAll(const std::vector<Contender>& all) {
    for (const Contender& contender : all) {
        for (const std::size_t size : kSizes) {
            benchmark::RegisterBenchmark(Report::nameOf(contender.name, size).c_str(), measure,
                                         contender, size)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark("free", measureFree)->Unit(benchmark::kMillisecond);
    for (const Shape& shape : shapes()) {
        benchmark::RegisterBenchmark(shape.name, measureShape, shape)
            ->RangeMultiplier(2)
            ->Range(1, 8)
            ->Complexity(benchmark::oN)
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace
}  // namespace kestrel::bench

int main(int count, char** words) {
    using namespace kestrel::bench;
    // Interleaved, so that a slow moment of the machine meets all; what is given goes before.
    std::vector<char*> all{words[0]};
    std::string defaults[] = {"--benchmark_repetitions=7", "--benchmark_min_time=0.1",
                              "--benchmark_enable_random_interleaving=true"};
    for (std::string& word : defaults) all.push_back(word.data());
    all.insert(all.end(), words + 1, words + count);
    int given = static_cast<int>(all.size());
    all.push_back(nullptr);
    benchmark::Initialize(&given, all.data());
    if (benchmark::ReportUnrecognizedArguments(given, all.data())) return 2;
    const std::vector<Contender> who = contenders();
    checkRecords(who);
    registerAll(who);
    PeakMemory memory;
    benchmark::RegisterMemoryManager(&memory);
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    report.printGoals();
    return 0;
}
