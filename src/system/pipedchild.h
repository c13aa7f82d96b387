#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

// A program that is asked over its standard input and answers over its standard output; what
// else it writes is lost. It ends with this object.
class PipedChild {
  public:
    // `program` is a full path. Throws RunTimeError with the system's reason.
    PipedChild(const std::wstring& program, const std::vector<std::wstring>& words);
    ~PipedChild();
    PipedChild(const PipedChild&) = delete;
    PipedChild& operator=(const PipedChild&) = delete;

    // Never waits: false when there is no place for the bytes, of which 60,000 have one before
    // the program reads any, and when it has ended.
    bool send(std::string_view bytes);
    // What it wrote since the last time; waits for the first of it, at most so long. Empty when
    // nothing came; nothing once it has closed its output.
    std::optional<std::string> receive(std::chrono::milliseconds wait);
    // Ends the program, if it still runs, and tells how it came to its end: "exit code 3".
    std::wstring end();

  private:
    struct System;
    std::unique_ptr<System> system_;
};

}  // namespace kestrel
