#pragma once

#include <string_view>

#include "services/host.h"

namespace kestrel {

// Asks the desktop to perform `verb` ("open") on a document or an address. Its
// answer is not looked at.
void gShellExec(std::wstring_view file, std::wstring_view verb);

// Shows the desktop's properties sheet of the file at `path`.
void gShowProps(std::wstring_view path, Owner* owner);

}  // namespace kestrel
