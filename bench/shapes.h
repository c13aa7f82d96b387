#pragma once

#include <filesystem>
#include <string>

namespace kestrel::bench {

// Loads texts that a parser may choke on, each at doubling sizes, and returns
// tables of their times. Their files go into `folder`.
std::string measureShapes(const std::filesystem::path& folder);

}  // namespace kestrel::bench
