#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "system/scratchfile.h"

// What a started program writes, from its bytes to the text of a log.
namespace kestrel {

// The text of output that is no UTF-8: on Windows in the page of consoles, else in the
// program's own.
std::wstring consoleText(std::string_view bytes);

// How a program ended.
struct ProgramEnd {
    enum Kind { kCode, kSignal, kUnknown };
    Kind kind = kUnknown;
    int code = 0;  // its exit code, or the number of the signal
};

// What one started program wrote, and how it stands. The bytes take no memory, and no room on
// the disk once this object or Kestrel has gone.
class OutputLog {
  public:
    static constexpr std::uint64_t kMost = std::uint64_t{1} << 30;  // bytes

    explicit OutputLog(std::uint64_t most = kMost) : most_(most) {}

    // Keeps what has room. Throws RunTimeError, once, when the disk has none.
    void add(std::string_view bytes);
    // True from the first byte on that had no room.
    bool isFull() const noexcept { return full_; }
    const ScratchFile& file() const noexcept { return file_; }

    // "running", "finished", "failed with exit code 3", "ended by signal 9", "stopped".
    std::wstring stateText() const;

    std::wstring name;              // what was made
    bool stopping = false;          // it was told to end
    std::optional<ProgramEnd> end;  // once it has ended, and all that it wrote is here

  private:
    std::wstring runText() const;

    ScratchFile file_;
    std::uint64_t most_;
    bool full_ = false;
    bool broken_ = false;
};

// Bytes that come in pieces as text: lines that are UTF-8, and others as consoleText()
// reads them. What follows the first letter beyond ASCII waits for the end of its line.
class OutputDecoder {
  public:
    std::wstring decode(std::string_view bytes);
    // What still waits, once no more will come.
    std::wstring rest();

  private:
    std::string waiting_;
};

// Output in pieces as the lines of a log: a line longer than any that a program
// writes for people is broken, since a window takes the longer to show a line the
// longer it is.
class LogLines {
  public:
    static constexpr std::size_t kLongest = 4096;  // characters

    std::wstring add(std::wstring_view text);

  private:
    std::size_t length_ = 0;  // of the line that has not ended
};

// A log's text, piece by piece: of more than `most` bytes the last ones.
class LogReader {
  public:
    static constexpr std::uint64_t kMost = std::uint64_t{64} << 20;

    explicit LogReader(std::shared_ptr<const OutputLog> log, std::uint64_t most = kMost);

    struct Piece {
        std::wstring text;
        bool anew = false;  // what was handed out before is too old
    };
    // Never waits; empty when there is no more at this moment.
    Piece next();

  private:
    std::shared_ptr<const OutputLog> log_;
    std::uint64_t most_;
    std::uint64_t at_ = 0;
    OutputDecoder decoder_;
    LogLines lines_;
};

}  // namespace kestrel
