#pragma once

#include <string>
#include <string_view>
#include <vector>

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

// All lines of the file at `path`, blank ones too. Unlike the others it does not
// look in the program's folder: a bare name is that of the current folder.
std::vector<std::wstring> loadFileHistory(std::wstring_view path);

// Writes all of `files`, each but the last one with a line end, to the file `name`
// of the program's folder, and keeps the file that it replaces as ".bak". An entry
// that 8-bit text cannot hold is left out. Nothing is written when no text is left.
void mSaveFileHistory(const std::vector<std::wstring>& files, std::wstring_view name);

}  // namespace kestrel
