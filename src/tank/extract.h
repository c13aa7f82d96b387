#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tank/contents.h"

// Files out of an archive. Its names are not trusted: nothing is ever written outside the
// chosen folder or through a link in it, and no two files into the same one.
namespace kestrel {

// What becomes of files that are there already.
enum class Existing { skip, replace, stop };

struct Extraction {
    std::wstring folder;            // must be there
    TankContents::Numbers numbers;  // a folder stands for all that it holds
    bool keepsPaths = true;         // else all files go into the folder itself
};

struct ExtractOutcome {
    std::size_t written = 0;
    std::uint64_t bytes = 0;
    std::size_t replaced = 0;        // of those written; what was there is kept as ".bak"
    std::size_t skipped = 0;         // as the user wanted
    std::size_t failed = 0;          // the others that were not written
    bool stopped = false;            // by the user, or by what `told` ends with
    std::vector<std::wstring> told;  // what was renamed or not written, and why; at most some
    std::size_t untold = 0;          // more of those
};

// Extracts with a progress dialog in front of `owner` (may be null). `ask` is called once, before
// anything is written, when `count` files are there already. Each file is written whole or not
// at all.
ExtractOutcome extract(TankContents& contents, const Extraction& wanted,
                       const std::function<Existing(std::size_t count)>& ask, Owner* owner);

// What came of it, in lines.
std::wstring summaryOf(const ExtractOutcome& outcome, std::wstring_view folder);

// The path of a new file with the item's data, in a folder that is closed to other users; its
// name ends in the item's, and it is write-protected: the archive does not change with it. The
// program remembers which archive it is from. Throws RunTimeError where there is no data.
std::wstring temporaryCopy(TankContents& contents, std::uint32_t number);

// `name` as a name that every system takes for a file of a folder, and for nothing else.
std::wstring safeName(std::wstring_view name);

}  // namespace kestrel
