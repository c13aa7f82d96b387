#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "contenders.h"

namespace kestrel::bench {

// CPU seconds that this process has used.
double cpuSeconds();

double median(std::vector<double> values);

// The CPU seconds of one run; what it needs is made before, what it leaves is
// freed after.
double timeOnce(const Contender& contender, Input& input);

// The memory that one run needs at its peak beyond what was there before it, in
// bytes: measured in a new process. Nothing when that process failed.
std::optional<double> peakInChild(const Contender& contender, const std::filesystem::path& folder);

// What that new process does: runs the contender once and prints its peak.
int runAsChild(const Contender& contender, const std::filesystem::path& folder);

}  // namespace kestrel::bench
