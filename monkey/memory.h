#pragma once

#include <cstddef>

namespace kestrel::test {

// Bytes that the program holds on the heap now, and what the system counts as its
// memory.
std::size_t heapBytes();
std::size_t residentBytes();

// Open file descriptors of this process; ended children that nobody asked for.
std::size_t openFiles();
std::size_t zombies();

}  // namespace kestrel::test
