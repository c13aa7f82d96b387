#pragma once

#include <memory>

#include "services/host.h"

namespace kestrel {

// The archives that the program's library reads. What the ones that were asked about last
// hold is remembered until they change.
std::unique_ptr<Archives> makeArchives();

}  // namespace kestrel
