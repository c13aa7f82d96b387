#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "services/host.h"

// Whole folders of `.gas` files to tab-delimited text.
namespace kestrel {

// Option of gblnConvertFolder: one output file for the whole folder.
inline constexpr std::int16_t kSingleFile = 2;

// A file that was not converted, by its name in the folder, and why.
struct LeftOut {
    std::wstring name;
    std::wstring reason;
};

// What came of a conversion beside its summary.
struct ConversionOutcome {
    // Told of each file that is left out, at once. Without it the first failure is reported,
    // and those without `.gas` data are not.
    std::function<void(const LeftOut&)> tell;
    bool cancelled = false;
    std::vector<LeftOut> leftOut;
};

// Converts the `.gas` files of `folder` (whatever the case of their extension)
// in the file system's order. Each gives a `.tab` file beside it or, with
// kSingleFile, all of them give singleOutput(). Every output file begins with
// `header`. A single file that is replaced is kept as its ".bak". No source is ever
// written over, nor a write-protected file, nor do two sources give one file: such an
// output is a failure.
//
// `folder` comes back with a separator at its end, and what was done is
// appended to `summary`, with those files that are left out. They do not stop the others;
// `outcome` (may be null) holds them all.
// Without `progress` a dialog is made and `owner` (may be null) disabled
// meanwhile; the caller's own stays as it is. A cancel keeps what was written
// until then and writes nothing more: no single output file either.
//
// False, with nothing done, when the folder holds no `.gas` file.
bool gblnConvertFolder(std::wstring& folder, std::wstring& summary, std::wstring_view outputFile,
                       std::int16_t options, std::wstring_view header, Owner* owner,
                       Progress*& progress, ConversionOutcome* outcome = nullptr);

// The single output file that `given` means: ".tab" is added where there is no extension, and
// an empty one is "Converted.tab" in `folder`.
std::wstring singleOutput(std::wstring_view folder, std::wstring_view given);

// What a user is told at the end of a conversion that found files.
std::wstring closingMessage(const ConversionOutcome& outcome, std::wstring_view summary);

// What the `.tab` file of the file at `source` is called.
std::wstring tabPath(std::wstring_view source);

// The header of a single output file; the texts stand in it as they are.
std::wstring conversionHeader(std::wstring_view title, std::wstring_view author,
                              std::wstring_view build, std::wstring_view copyright);

}  // namespace kestrel
