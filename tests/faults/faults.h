#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

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

// Counts and strikes for its lifetime.
class Faults {
  public:
    explicit Faults(const Fault& fault = {});
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    static inline std::string_view struck;  // the call that was; empty when none was
    static inline std::string calls;        // all so far, each followed by a blank

  private:
    const Fault fault_;
};

// A process that does `work` and ends with what that returns; killed, if it still runs, at
// the end of its life. It is one of a number space of its own where it is `apart`.
class Child {
  public:
    explicit Child(const std::function<int()>& work, bool apart = false);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Waits for its end: the exit code, or the negative number of a signal; -1 where there
    // is none, since the system lets this user have no number space.
    int wait();

  private:
    int process_;
};

}  // namespace kestrel::test
