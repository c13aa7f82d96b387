#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "services/host.h"
#include "tank/library.h"

// Text reports of what an archive holds, with CR LF line ends. A report's text is
// emptied first; it stays as it was only where the archive is not even opened.
// The progress dialog is made here, and `owner` (may be null) disabled meanwhile.
//
// An archive may lie: a directory inside itself is not entered again, and a walk
// ends with an error report after 4,000,000 entries, 100,000 levels or half a
// billion characters. What was written until then stays.
namespace kestrel {

// The list type with every field of the entries; any other gives their names,
// paths and directory flags.
inline constexpr std::int16_t kNameList = 0;
inline constexpr std::int16_t kFullList = 1;

// Lists all entries of the archive at `path`. True when it was opened, also after
// a cancel, which keeps what was listed so far. Nothing is done for an empty path.
bool gblnListTank(std::wstring_view path, std::wstring& report, Owner* owner,
                  std::int16_t listType);

// Appends the entries below `directory` to `report`, each directory before what
// it holds. `progress` may be null. True when there was one.
bool gblnListChildren(TankHandle tank, ChildHandle directory, std::wstring& report,
                      Progress* progress, std::int16_t listType);

// Finds the first entry whose name holds `searched`, without regard to case, and
// reports it with its data. False when there is none, and after a cancel. Nothing
// is done for an empty `searched`. `passed` is not used.
bool gblnFindChild(std::wstring_view path, std::wstring_view searched, std::int32_t passed,
                   std::wstring& report, Owner* owner);

// As above, appending, for the entries below `directory`. `progress` may be null.
bool gblnSearchChildren(std::wstring_view searched, std::int32_t passed, TankHandle tank,
                        ChildHandle directory, std::wstring& report, Progress* progress);

// True when the archive at `path` can be opened and its root holds an entry.
bool gblnTestTank(std::wstring_view path);

}  // namespace kestrel
