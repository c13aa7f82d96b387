#pragma once

#include <span>
#include <string>

namespace kestrel::bench {

// A text that a careless parser takes quadratic time for: `head`, then `unit` again and
// again, then `tail`.
struct Shape {
    const char* name;
    std::string_view head;
    std::string_view unit;
    std::string_view tail;
};

std::span<const Shape> shapes();

// The shape with at least `bytes`.
std::string textOf(const Shape& shape, std::size_t bytes);

}  // namespace kestrel::bench
