#pragma once

#include <string>
#include <string_view>

#include "services/program.h"

namespace kestrel {

// Reads "settings.set" of the program's folder into the program's settings.
// Fields that the file does not name keep their values; a missing file changes
// nothing.
void gReadSettings();

// Writes the program's settings to "settings.set"; a failure is reported.
void gWriteSettings();

// The caption of a user tool: the text before the first "|" of `setting`, or
// `defaultCaption` when the setting is empty.
std::wstring toolCaption(std::wstring_view setting, std::wstring_view defaultCaption);

}  // namespace kestrel
