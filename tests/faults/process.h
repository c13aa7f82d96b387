#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kestrel::test {

// A program that is talked to over its standard streams; killed, if it still runs,
// at the end of its life.
class Process {
  public:
    // `changes` are "NAME=value" of its environment beside ours.
    Process(std::vector<std::string> words, const std::vector<std::string>& changes = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Its next line without the end; empty once it has ended.
    std::string line();
    // Lets a program that waits for a line go on.
    void goOn();
    void kill() const;
    // Waits for its end: the exit code, or the negative number of a signal.
    int wait();

  private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace kestrel::test
