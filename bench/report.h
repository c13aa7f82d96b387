#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::bench {

// What was measured at one size, by the contenders' names.
struct SizeResult {
    std::size_t size = 0;  // as asked for, in MB
    double megabytes = 0;  // of the `.gas` file
    std::map<std::string_view, std::vector<double>> seconds;
    std::map<std::string_view, double> peaks;  // bytes
};

// The tables of the results, with the goals that they can answer.
std::string report(const std::vector<SizeResult>& results);

}  // namespace kestrel::bench
