#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "system/process.h"

// Starting a console program and reading what it writes.
//
// The program writes into a nameless temporary file rather than into a pipe: it
// never waits for a reader, and it runs on undisturbed when its log, or this
// program, is closed. Its input is at its end. It outlives this program.
namespace kestrel {

// What a started program did since it was last asked.
struct ProgramOutput {
    std::wstring text;
    bool ended = false;  // and all of its output was handed out
    int exitCode = 0;    // once ended; -1 when the system does not tell it
};

// Runs one program at a time. It is passive: somebody asks it.
class Launcher {
  public:
    enum Result { kStarted, kStillRunning, kRefused };

    virtual ~Launcher() = default;
    // Starts the program that `commandLine` (not quoted) names; `configured` is its
    // path as the user chose it. Systems whose programs get words give it `words`, the others
    // the line as it stands. kStillRunning: the one that was started before has
    // not ended. kRefused: the system would not start it, see errorText().
    virtual Result start(std::wstring_view commandLine, std::wstring_view configured,
                         const std::vector<std::wstring>& words) = 0;
    // Why the last start was refused.
    virtual std::wstring errorText() const = 0;
    // The next piece of what the program wrote to either stream; never waits. Empty
    // when there is nothing at this moment. Without a program: ended.
    virtual ProgramOutput poll() = 0;
};

// A launcher of the system's programs.
std::unique_ptr<Launcher> makeLauncher();

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

// A program that was started with a file for its output. The system's sources
// implement it.
class Child {
  public:
    virtual ~Child() = default;
    // How it ended; nothing while it runs.
    virtual std::optional<int> exitCode() = 0;
    // The next bytes of its output, `most` at most; empty when there are none now.
    virtual std::string read(std::size_t most) = 0;
};

// The text of output that is no UTF-8: on Windows in the page of consoles, else in the
// program's own.
std::wstring consoleText(std::string_view bytes);

// Starts `program` with the whole `commandLine` or with `words`, as the system has it.
// Throws RunTimeError with the system's reason.
std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view commandLine,
                                  const std::vector<std::wstring>& words);

}  // namespace kestrel
