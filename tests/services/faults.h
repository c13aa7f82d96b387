#pragma once

#include <cstddef>
#include <string>

// Faults in the system calls of the code under test, which the linker leads
// through the wrappers of faults.cpp. Calls are counted while a Faults lives.
namespace kestrel::test {

class Faults {
  public:
    enum class Kind {
        none,    // counts alone
        error,   // the call fails with `code`
        errors,  // as error, and so do all later calls of that name
    };

    // Strikes at the call number `at`, counted from 1.
    Faults(Kind kind, std::size_t at, int code = 0);
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    // The name of the call that was struck.
    static const char* struck();

    // The names of all calls so far, each followed by a blank.
    static std::string calls();
};

}  // namespace kestrel::test
