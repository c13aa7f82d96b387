#pragma once

#include <cerrno>

#include "services/fixture.h"

// Faults in the system calls of the code under test, which the linker leads through the
// wrappers of faults.cpp, and processes that such a fault may end.
namespace kestrel::test {

struct Fault {
    enum class Kind {
        none,        // counts alone
        error,       // the call fails with `code`; by EINTR only those that a signal interrupts
        shortWrite,  // a write takes one byte
        kill,        // the process is killed, a write having taken half of its bytes
    };
    Kind kind = Kind::none;
    int code = 0;
    // Counted are the calls of this name alone; without one all that change files, since
    // files that are only read are left alone.
    std::string_view call = {};
    std::size_t at = 1;  // strikes at the call of this number
    bool lasts = false;  // and at all that are counted after it
};

inline std::string_view struckCall;  // the last one that was; empty when none was
inline std::string seenCalls;        // all so far, each followed by a blank

// Does `work`, which must not throw, under the fault.
void under(const Fault& fault, const std::function<void()>& work);

// Starts a process that does `work` and ends with what that returns, with this one at the
// latest.
int startProcess(const std::function<int()>& work) noexcept;

// Waits for its end: the exit code, or the negative number of a signal; -1 without one.
int endOf(int process);

}  // namespace kestrel::test
