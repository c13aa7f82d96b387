#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace kestrel::test {

// Choices that are the same for the same seed on every system.
class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    // Any number from 0 to `count` - 1; 0 when there is none.
    std::size_t below(std::size_t count) {
        return count == 0 ? 0 : static_cast<std::size_t>(engine_() % count);
    }
    int between(int least, int most) {
        return least + static_cast<int>(below(static_cast<std::size_t>(most - least + 1)));
    }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <class Values>
    const auto& of(const Values& values) {
        return values[below(std::size(values))];
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace kestrel::test
