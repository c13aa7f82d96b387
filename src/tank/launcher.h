#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "system/process.h"
#include "tank/outputlog.h"

// Starting a console program and reading what it writes.
//
// The program writes into a pipe, and Kestrel keeps what comes out: nothing grows on the disk
// that nobody watches, whatever ends. Its input is at its end. It outlives its log and this
// program: what it writes then is lost.
namespace kestrel {

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
    // Puts the next piece of what the program wrote to either stream into its log; never waits.
    // True when there was one: there may be more. A program that fills its log is told to end.
    virtual bool poll() = 0;
    // Tells the program, and all that it has started, to end. Where programs can be told so they
    // get two seconds for it.
    virtual void stop() = 0;
    // Of the program that was started last; null before the first.
    virtual std::shared_ptr<OutputLog> log() const = 0;
};

// A launcher of the system's programs, whose logs keep so many bytes.
std::unique_ptr<Launcher> makeLauncher(std::uint64_t mostKept = OutputLog::kMost);

// A program that was started with pipes for its streams. The system's sources implement it.
class Child {
  public:
    // The program runs on, unless it was told to stop: that is waited for.
    virtual ~Child() = default;
    // How it ended; nothing while it runs.
    virtual std::optional<ProgramEnd> end() = 0;
    // The next bytes of its output, `most` at most; empty when there are none now.
    virtual std::string read(std::size_t most) = 0;
    // As Launcher::stop().
    virtual void stop() = 0;
};

// What a pipe holds at most.
inline constexpr std::size_t kPipeSize = std::size_t{1} << 20;

// True where programs get one line, which they cut at blanks, and no words.
bool startsByLine() noexcept;

// Starts `program` with the whole `commandLine` or with `words`, as the system has it.
// Throws RunTimeError with the system's reason.
std::unique_ptr<Child> startChild(const std::wstring& program, std::wstring_view commandLine,
                                  const std::vector<std::wstring>& words);

}  // namespace kestrel
