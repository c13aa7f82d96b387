#include "report.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "contenders.h"
#include "measure.h"
#include "table.h"

namespace kestrel::bench {
namespace {

using Row = std::vector<std::string>;

constexpr const char* kNone = "-";

// Source MB a CPU second.
double speed(const SizeResult& result, std::string_view name) {
    return result.megabytes / median(result.seconds.at(name));
}

bool has(const SizeResult& result, std::string_view name) {
    return result.seconds.contains(name);
}

// Ours stands for the loader where the contender reads, for the renderer where
// it writes.
std::string_view oursFor(std::string_view name) {
    return name == "render" || name == "copy" ? "render" : "load";
}

std::string spread(const std::vector<double>& seconds) {
    const auto [least, most] = std::ranges::minmax(seconds);
    return fixed((most - least) / median(seconds) * 100, 0) + " %";
}

// The power of the size that the time grows by, from the smallest to the
// largest.
std::optional<double> exponent(const std::vector<SizeResult>& results, std::string_view name) {
    const SizeResult& small = results.front();
    const SizeResult& large = results.back();
    if (large.size == small.size || !has(small, name)) return {};
    return std::log(median(large.seconds.at(name)) / median(small.seconds.at(name))) /
           std::log(large.megabytes / small.megabytes);
}

std::optional<double> memory(const SizeResult& result, std::string_view name) {
    const auto peak = result.peaks.find(name);
    if (peak == result.peaks.end()) return {};
    return peak->second / (result.megabytes * 1e6);
}

std::string textOf(std::optional<double> value, int decimals) {
    return value ? fixed(*value, decimals) : kNone;
}

Row heading(const std::vector<SizeResult>& results) {
    Row row = {"Contender"};
    for (const SizeResult& result : results) {
        const std::string size = std::to_string(result.size) + " MB";
        row.insert(row.end(), {size + ", MB/s", "spread", ": ours"});
    }
    row.insert(row.end(), {"exponent", "memory"});
    return row;
}

Row rowOf(const std::vector<SizeResult>& results, const Contender& contender) {
    Row row = {std::string(contender.what)};
    const std::string_view ours = oursFor(contender.name);
    for (const SizeResult& result : results) {
        const double own = speed(result, contender.name);
        row.push_back(fixed(own, own < 10 ? 1 : 0));
        row.push_back(spread(result.seconds.at(contender.name)));
        row.push_back(has(result, ours) ? fixed(own / speed(result, ours), 2) : kNone);
    }
    row.push_back(textOf(exponent(results, contender.name), 3));
    row.push_back(textOf(memory(results.back(), contender.name), 1));
    return row;
}

struct Goal {
    std::string_view what;
    std::string_view name;
    std::string_view beside;  // the other side of a ratio; empty: see `unit`
    double limit;
    enum { atLeast, atMost } direction;
    enum { ratio, megabytesPerSecond, exponent, memory } unit;
};

constexpr Goal kGoals[] = {
    {"gblnLoadGas : simdjson into records", "load", "simdjson-records", 1.0, Goal::atLeast,
     Goal::ratio},
    {"gblnLoadGas : libconfig++ into records", "load", "libconfig-records", 3.0, Goal::atLeast,
     Goal::ratio},
    {"gblnLoadGas : one std::wstring a field", "load", "fields", 0.5, Goal::atLeast, Goal::ratio},
    {"gblnLoadGas, exponent of its growth", "load", "", 1.05, Goal::atMost, Goal::exponent},
    {"gblnLoadGas, peak bytes a source byte", "load", "", 15, Goal::atMost, Goal::memory},
    {"gstrMakeFileText, MB/s", "render", "", 150, Goal::atLeast, Goal::megabytesPerSecond},
    {"gstrMakeFileText : copying its text", "render", "copy", 0.7, Goal::atLeast, Goal::ratio},
};

std::optional<double> measured(const Goal& goal, const SizeResult& result,
                               const std::vector<SizeResult>& all) {
    if (!has(result, goal.name)) return {};
    switch (goal.unit) {
        case Goal::ratio:
            if (!has(result, goal.beside)) return {};
            return speed(result, goal.name) / speed(result, goal.beside);
        case Goal::megabytesPerSecond:
            return speed(result, goal.name);
        case Goal::exponent:
            return exponent(all, goal.name);
        case Goal::memory:
            return memory(result, goal.name);
    }
    return {};
}

bool meets(const Goal& goal, double value) {
    return goal.direction == Goal::atLeast ? value >= goal.limit : value <= goal.limit;
}

Row goalRow(const Goal& goal, const std::vector<SizeResult>& results) {
    Row row = {std::string(goal.what),
               (goal.direction == Goal::atLeast ? "at least " : "at most ") + fixed(goal.limit, 2)};
    bool met = true;
    for (const SizeResult& result : results) {
        const std::optional<double> value = measured(goal, result, results);
        row.push_back(textOf(value, 2));
        met = met && value && meets(goal, *value);
    }
    row.emplace_back(met ? "yes" : "no");
    return row;
}

std::string goals(const std::vector<SizeResult>& results) {
    Row first = {"Goal", "limit"};
    for (const SizeResult& result : results) first.push_back(std::to_string(result.size) + " MB");
    first.emplace_back("met at every size");
    std::vector<Row> rows = {first};
    for (const Goal& goal : kGoals) {
        if (measured(goal, results.back(), results)) rows.push_back(goalRow(goal, results));
    }
    return rows.size() > 1 ? std::string("\n").append(markdown(rows)) : "";
}

}  // namespace

std::string report(const std::vector<SizeResult>& results) {
    std::vector<Row> rows = {heading(results)};
    for (const Contender& contender : contenders()) {
        if (has(results.front(), contender.name)) rows.push_back(rowOf(results, contender));
    }
    return markdown(rows) + goals(results);
}

}  // namespace kestrel::bench
