#pragma once

#include <cstddef>
#include <string>

// Faults in the system calls of the code under test, which the linker leads
// through the wrappers of faults.cpp. Calls are counted while a Faults lives.
namespace kestrel::test {

class Faults {
  public:
    enum class Kind {
        none,        // counts alone
        error,       // the call fails with `code`
        errors,      // as error, and so do all later calls of that name
        shortWrite,  // a write takes one byte; other calls are not struck
        interrupt,   // the call is interrupted once by a signal
        kill,        // the process ends; a write has then taken half of its bytes
    };

    // Strikes at the call number `at`, counted from 1.
    Faults(Kind kind, std::size_t at, int code = 0);
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    // True once the call number `at` was reached.
    static bool reached();
    // The name of the call that was struck.
    static const char* struck();

    // The names of all calls so far, each followed by a blank.
    static std::string calls();

    // What a killed process ends with.
    static constexpr int kKilled = 99;
};

}  // namespace kestrel::test
