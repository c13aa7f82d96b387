#pragma once

#include <string>
#include <vector>

#include "gas/template.h"
#include "services/host.h"

// The one parser of the program. It is line-oriented and tolerant: no syntax is
// an error, and it fails only when the text yields no block at all.
namespace kestrel {

inline constexpr std::wstring_view kNoGasData =
    L"File loading error: Either no data found or unsupported file type.";

// Loads the `.gas` file at `path` into `templates`, replacing what it held, and
// adds a row for each block to `list` (may be null, as the windows have it; the caller
// empties it before). True when at least one block was loaded. A text without any block
// gives the message kNoGasData and false: `list` is then empty
// and `templates` holds one element, index 0 as it was before. When the text
// holds no "]" at all, `path` is emptied too. A run-time error is reported and
// gives false, an empty list and one empty record.
bool gblnLoadGas(std::wstring& path, std::vector<GasTemplate>& templates, TemplateList* list);

struct GasRecords {
    std::vector<GasTemplate> templates;
    bool hasHeader = false;  // of any kind; without one there are no records
};

// The records of a file that holds `bytes`, behind a mark of UTF-8 in that, else in `page`.
// Throws RunTimeError for more of them than can be addressed. It needs no program around it.
GasRecords readRecords(std::string bytes, const CodePage& page, TemplateList* list = nullptr);

}  // namespace kestrel
