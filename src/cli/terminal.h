#pragma once

#include <chrono>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "services/program.h"
#include "tank/archivefiles.h"
#include "tank/library.h"

namespace kestrel::cli {

// `text` as UTF-8 in one column of a line: what would end either is a visible escape.
std::string oneLine(std::wstring_view text);

// As oneLine(), with escapes for all that isDrawable() tells of too, so that no file can send
// commands to a terminal, or turn the direction of a name.
std::string visibleLine(std::wstring_view text);

// As visibleLine(), with the lines and columns of `text`.
std::string visibleText(std::wstring_view text);

// The host of the core while it has no windows: what it tells goes to the error
// stream, and so does progress where that is a terminal. Nobody is asked
// anything. The program's host for the lifetime of the object.
class Terminal final : public Messages, public ProgressMaker, public Clock {
  public:
    Terminal(std::ostream& err, bool showsProgress);
    ~Terminal() override;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // What messages are about from now on, mostly a file; empty for nothing.
    void about(std::wstring_view subject) { subject_ = subject; }

    // Writes "kestrel-cli: subject: text" on a line.
    void error(std::wstring_view text);

    // How many messages there were.
    std::size_t errors() const noexcept { return errors_; }

    // From now on an interrupt of the user's is a Cancel of what goes on; one that follows
    // after a while ends the program at once.
    void catchInterrupts();

    // Shows `text` in place of the progress shown before; empty to remove it.
    void showProgress(std::wstring_view text);

    Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
               Buttons buttons) override;
    std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                       std::wstring_view initial) override;
    std::unique_ptr<Progress> makeProgress() override;
    std::wstring longTime() const override;
    std::wstring longDate() const override;

  private:
    std::ostream& err_;
    bool showsProgress_;
    bool interruptible_ = false;
    std::unique_ptr<TankLibrary> tank_ = makeTankLibrary();
    std::unique_ptr<Archives> archives_ = makeArchives();
    Host before_;
    std::wstring subject_;
    std::size_t errors_ = 0;
    std::size_t shown_ = 0;  // columns of progress on the line
};

}  // namespace kestrel::cli
