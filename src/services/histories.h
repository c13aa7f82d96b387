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

// Puts what was added to `list`, and what was removed from it, since it was loaded into
// the file as other programs have left it: the added entries on top, of all the first 16
// that are not blank. The file that they replace is kept as ".bak"; where it cannot be,
// that is reported and the file written.
// Nothing is written when nothing has changed, or none is left.
void gSaveHistory(const TextList& list, std::wstring_view name);

// Puts `text` at the top unless an equal entry is in the list already.
void gAddHistoryItem(TextList& list, std::wstring_view text);

// Removes the entries equal to `text`; of two that stand next to each other
// only the first. Part of the product's interface; no window asks for it.
void gRemoveHistoryItem(TextList& list, std::wstring_view text);

// All lines of the file at `path`, blank ones too. Unlike the others it does not
// look in the program's folder: a bare name is that of the current folder.
std::vector<std::wstring> loadFileHistory(std::wstring_view path);

// As gSaveHistory() for all of `files`, each but the last one with a line end: what was
// added stands behind the others.
void mSaveFileHistory(const std::vector<std::wstring>& files, std::wstring_view name);

}  // namespace kestrel
