#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "gas/template.h"

namespace kestrel::cli {

// `text` as a JSON string with its quotes, in UTF-8. Any text gives valid JSON:
// controls and surrogates are escaped.
std::string jsonText(std::wstring_view text);

// Writes `record` as a JSON object on one line, without its end:
// {"Name":..,"Kind":..,"Text":..,"Comments":..,"Properties":[[Name,Value,Group,IsBlock,Level],..]}
void writeJson(std::ostream& out, const GasTemplate& record);

}  // namespace kestrel::cli
