#pragma once

#include <cstdio>
#include <streambuf>
#include <string>

namespace kestrel::cli {

// A stream of the C library as a C++ stream's buffer. What is written to a reader
// that has gone is dropped quietly; any other failure fails the C++ stream.
class OutputBuffer final : public std::streambuf {
  public:
    // `file` must outlive the buffer.
    explicit OutputBuffer(std::FILE* file) : file_(file) {}

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    int sync() override;

  private:
    bool settle(bool done);
    bool writeOut(std::size_t count);

    std::FILE* file_;
    std::string waiting_;
    bool gone_ = false;
};

}  // namespace kestrel::cli
