#pragma once

#include <string>
#include <vector>

namespace kestrel::bench {

// A Markdown table; the first row is its heading.
std::string markdown(const std::vector<std::vector<std::string>>& rows);

// `value` with `decimals` digits behind the point.
std::string fixed(double value, int decimals);

}  // namespace kestrel::bench
