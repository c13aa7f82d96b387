#pragma once

#include <cstdio>
#include <streambuf>
#include <string>

namespace kestrel::cli {

// A stream of the C library as a C++ stream's buffer. What is written to a reader
// that has gone is dropped quietly; any other failure fails the C++ stream.
class OutputBuffer final : public std::streambuf {
  public:
    // `file` must outlive the buffer. Where it is a terminal, what a file could command it
    // by becomes visible: text is then UTF-8.
    OutputBuffer(std::FILE* file, bool isTerminal) : file_(file), isTerminal_(isTerminal) {}

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    int sync() override;

  private:
    bool settle(bool done);
    bool writeOut(std::size_t count);

    std::size_t wholePart() const;

    std::FILE* file_;
    bool isTerminal_;
    std::string waiting_;
    bool gone_ = false;
};

}  // namespace kestrel::cli
