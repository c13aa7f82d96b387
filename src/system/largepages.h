#pragma once

#include <cstddef>

namespace kestrel {

// Asks the system to give these bytes of memory, which nobody has used yet, in large pages
// where they fill some: each page that is touched first costs as much as reading a kilobyte.
// Only a wish.
void wishForLargePages(void* memory, std::size_t bytes) noexcept;

}  // namespace kestrel
