#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tank/library.h"

// One routine for each operation of the archive library. Every one of them
// returns 0, false or empty text, without a call, for an archive that is 0 (null
// data, an empty path) and on a host without the library; a failure is reported.
namespace kestrel {

// Opens the archive at `path`; 0 when it cannot be opened. The caller closes it.
TankHandle gOpenTank(std::wstring_view path);

// Closes the archive and sets `tank` to 0; returns the library's status.
std::int32_t glngCloseTank(TankHandle& tank);

// The number of entries that stand directly in `directory`. It may be negative.
std::int32_t glngGetChildCount(TankHandle tank, ChildHandle directory);

// Puts the entry at the 0-based `index` of `directory` into `child`, 0 when the
// library gives none; returns the library's status.
std::int32_t glngGetChild(TankHandle tank, ChildHandle directory, std::int32_t index,
                          ChildHandle& child);

// The entry's name, and the path of the folder that it stands in; whole, however
// long. A text of nothing but spaces is empty.
std::wstring gstrGetChildName(TankHandle tank, ChildHandle child);
std::wstring gstrGetChildPath(TankHandle tank, ChildHandle child);

bool gblnIsDirectory(TankHandle tank, ChildHandle child);

// Bytes of the entry's data, and bytes that it takes in the archive.
std::int32_t glngGetChildSize(TankHandle tank, ChildHandle child);
std::int32_t glngGetChildCompSize(TankHandle tank, ChildHandle child);

std::int32_t glngGetChildCRC(TankHandle tank, ChildHandle child);
std::int16_t gintGetChildFlags(TankHandle tank, ChildHandle child);
std::int16_t gintGetChildFormat(TankHandle tank, ChildHandle child);

// Puts the address of the entry's data into `data`, null when there is none, and
// returns how many bytes the library says it has. Data that is not null is given
// back with glngCloseChild, which returns the library's status.
std::int32_t glngOpenChild(TankHandle tank, ChildHandle child, const char*& data);
std::int32_t glngCloseChild(const char* data);

// The entry's data as text, one character a byte, of as many characters as the
// library says there are bytes: up to its first zero byte, that byte, then
// spaces. Empty when only spaces stand before that byte, and when there is no
// data. `count` is what the library says, even where it cannot be.
std::wstring gstrGetChildDataRAW(TankHandle tank, ChildHandle child, std::int32_t& count);

// The name of a storage format.
std::wstring gstrFormatName(std::int32_t format);

}  // namespace kestrel
