#pragma once

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What the three benchmarks have in common.
namespace kestrel::bench {

// A folder of this run's own, which goes with it.
struct Folder {
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kestrel-bench-" + std::to_string(getpid()));
};

// Appends `pattern` with a text in place of each character that `values` has one for.
using Values = std::initializer_list<std::pair<char, std::string_view>>;
inline void appendFilled(std::string& text, std::string_view pattern, Values values) {
    for (const char& c : pattern) {
        const auto* value = std::ranges::find(values, c, &Values::value_type::first);
        text += value == values.end() ? std::string_view(&c, 1) : value->second;
    }
}

// `count` times `unit`, with a number of its own from `first` on in place of each "#". The
// numbers are in no order.
inline std::string numbered(std::string_view unit, long count, long first = 0) {
    std::string text;
    for (long i = 0; i < count; ++i) {
        appendFilled(text, unit, {{'#', std::to_string(first + i * 7919 % count)}});
    }
    return text;
}

// A benchmark that does its work once, `repetitions` times over: of a function and what is
// passed to it, as the library registers them.
inline auto* addSingle(const std::string& name, int repetitions, auto&&... run) {
    return benchmark::RegisterBenchmark(name.c_str(), std::forward<decltype(run)>(run)...)
        ->Iterations(1)
        ->Repetitions(repetitions);
}

// Prints what is measured as it comes, and keeps it for the goals that are printed behind it.
class Report final : public benchmark::ConsoleReporter {
  public:
    Report() : ConsoleReporter(OO_None) { benchmark::SetDefaultTimeUnit(benchmark::kMillisecond); }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
            const std::string& name = run.run_name.function_name;
            const bool isReal = !run.run_name.time_type.empty();
            values_[name] = isReal ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
            for (const auto& [counter, value] : run.counters) values_[name + counter] = value;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // The median of a benchmark's times, in milliseconds, or of the counter that is named
    // behind it; NaN where that was not measured.
    double of(const std::string& name) const {
        return values_.contains(name) ? values_.at(name) : NAN;
    }

    static void printGoal(const std::string& what, const char* limit,
                          const std::vector<double>& values) {
        std::printf("%-44s %10s", what.c_str(), limit);
        for (const double value : values) std::printf(" %10.2f", value);
        std::puts("");
    }

  private:
    std::map<std::string, double> values_;
};

}  // namespace kestrel::bench
