#pragma once

#include <string_view>

namespace kestrel::cli {

// What --help shows.
extern const std::string_view kHelp;

}  // namespace kestrel::cli
