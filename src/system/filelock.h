#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace kestrel {

// A lock that several programs, on several machines too, agree on by the name of a file
// that stands for nothing else. The system ends it with the program, however that ends;
// it is never guessed from numbers of processes.
class FileLock {
  public:
    // Waits up to `patience` for whoever holds it. The file at `path` is made, for the
    // user alone.
    explicit FileLock(std::wstring_view path, std::chrono::milliseconds patience = {});
    // Gives the lock up; its file goes.
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // False when another program kept it, and where no file can be made or locked.
    bool isHeld() const noexcept { return held_; }

  private:
    enum class Try { held, busy, impossible };
    Try tryOnce() noexcept;

    std::wstring path_;
    std::intptr_t file_ = -1;  // the system's own number of it
    bool held_ = false;
};

}  // namespace kestrel
