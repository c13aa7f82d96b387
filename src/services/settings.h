#pragma once

#include <string>
#include <string_view>

#include "system/filelock.h"

namespace kestrel {

// Reads "settings.set" of the program's folder into the program's settings.
// Fields that the file does not name keep their values; a missing file changes
// nothing, and one that cannot be read is reported.
void gReadSettings();

// Puts what was changed since gReadSettings() into "settings.set" as other programs have
// left it; nothing is written when that is nothing, unless there is no file. A file that
// could not be read, or that holds lines of no setting, is kept as ".bak". A failure is
// reported.
void gWriteSettings();

// The lock under which settings and histories are read once more and written, so that
// of two programs none takes away what the other wrote. Whoever waits in vain for it, or
// may make no file in the program's folder, goes on without.
FileLock lockSettings();

// The caption of a user tool: the text before the first "|" of `setting`, or
// `defaultCaption` when the setting is empty.
std::wstring toolCaption(std::wstring_view setting, std::wstring_view defaultCaption);

}  // namespace kestrel
