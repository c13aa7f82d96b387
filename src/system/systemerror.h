#pragma once

#include <string_view>

#include "base/error.h"

namespace kestrel {

// Throws the RunTimeError of an operating-system error code (errno, or the
// Windows error): `action` is what failed ("Cannot write"), `path` the file. Each
// system has its own codes.
[[noreturn]] void throwSystemError(int code, std::wstring_view action, std::wstring_view path);

}  // namespace kestrel
