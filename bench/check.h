#pragma once

#include "input.h"

namespace kestrel::bench {

// True when every contender that fills records gives the loader's own: names,
// kinds and properties. Prints the first difference otherwise.
bool recordsAgree(Input& input);

}  // namespace kestrel::bench
