#pragma once

#include <string_view>

#include "services/host.h"

// Lists of recent entries, newest first, kept in files of the program's folder.
namespace kestrel {

// Appends the entries of the file `name` to `list`: the lines among its first
// 16 that are not blank. A line longer than any path is none.
void gLoadHistory(TextList& list, std::wstring_view name);

// Writes the entries among the first 16 of `list` that are not blank, and keeps
// the file that they replace as ".bak". An entry that 8-bit text cannot hold is
// left out. Nothing is written when none is left.
void gSaveHistory(const TextList& list, std::wstring_view name);

// Puts `text` at the top unless an equal entry is in the list already.
void gAddHistoryItem(TextList& list, std::wstring_view text);

// Removes the entries equal to `text`; of two that stand next to each other
// only the first.
void gRemoveHistoryItem(TextList& list, std::wstring_view text);

}  // namespace kestrel
