#pragma once

#include <string>

#include "services/host.h"

namespace kestrel {

// The numbered table of what a list shows, with its sort state, as tab-delimited
// text.
std::wstring gstrMakeListText(const ListShot& list);

}  // namespace kestrel
