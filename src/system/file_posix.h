#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <string_view>

// Open files of a POSIX system, for the *_posix.cpp sources alone.
namespace kestrel::posix {

// The system's name of `path`; empty for a path that it would cut at a NUL.
std::string nameOf(std::wstring_view path);

// An open file, closed at the end of its life. A call that fails throws the
// error of "`action` 'path'"; both texts must outlive the object.
class File {
  public:
    struct Failure {
        std::wstring_view action;
        std::wstring_view path;
        // Throws the error that errno tells.
        [[noreturn]] void raise() const;
    };

    File(const std::string& name, int flags, mode_t mode, const Failure& failure);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int descriptor() const noexcept { return descriptor_; }
    struct stat status() const;
    // Reads up to `size` bytes; 0 at the end of the file.
    std::size_t read(char* bytes, std::size_t size);
    void write(std::string_view bytes);
    // Learns what some file systems tell of earlier writes at a close alone.
    void settle();
    // Waits until the content is on the disk.
    void sync();
    // Throws the error that errno tells.
    [[noreturn]] void raise() const { failure_.raise(); }

  private:
    int descriptor_;
    Failure failure_;
};

// filesystem::replace().
void replaceFile(std::wstring_view path, std::string_view bytes, std::wstring_view backup);

}  // namespace kestrel::posix
