#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "services/host.h"

// Whole folders of `.gas` files to tab-delimited text.
namespace kestrel {

// Option of gblnConvertFolder: one output file for the whole folder.
inline constexpr std::int16_t kSingleFile = 2;

// Converts the `.gas` files of `folder` (whatever the case of their extension)
// in the file system's order. Each gives a `.tab` file beside it or, with
// kSingleFile, all of them give `outputFile` (empty: "Converted.tab" in the
// folder). Every output file begins with `header`.
//
// `folder` comes back with a separator at its end, and what was done is
// appended to `summary`. Files that do not load are left out without a message.
// Without `progress` a dialog is made and `owner` (may be null) disabled
// meanwhile; the caller's own stays as it is. A cancel keeps what was written
// until then and writes nothing more: no single output file either.
//
// False, with nothing done, when the folder holds no `.gas` file.
bool gblnConvertFolder(std::wstring& folder, std::wstring& summary, std::wstring_view outputFile,
                       std::int16_t options, std::wstring_view header, Owner* owner,
                       Progress*& progress);

// What the `.tab` file of the file at `source` is called.
std::wstring tabPath(std::wstring_view source);

// The header of a single output file; the texts stand in it as they are.
std::wstring conversionHeader(std::wstring_view title, std::wstring_view author,
                              std::wstring_view build, std::wstring_view copyright);

}  // namespace kestrel
