#pragma once

#include "faults/operations.h"
#include "support/tempfolder.h"

namespace kestrel::test {

// Makes `files` the folder's only content.
void fill(const TempFolder& folder, const FileBytes& files);

// What stands in a folder. The writer's temporary siblings are only counted, locks
// stand for nothing, and a file for another program goes by kTemporary.
struct Shot {
    FileBytes files;
    std::size_t strays = 0;
};
Shot shotOf(const TempFolder& folder);

// The file beside which an operation keeps the one that it replaces.
std::string backupOf(const std::string& target);

// Why the folder is not one that a user may find after `operation` was ended
// anywhere, `good` being what it makes of its files; empty when it is. The backup of a
// history may be lacking where that was `told`.
std::string fault(const Operation& operation, const FileBytes& good, const Shot& found,
                  bool told = false);

// True when every target is as in `good`.
bool isDone(const Operation& operation, const FileBytes& good, const Shot& found);

}  // namespace kestrel::test
