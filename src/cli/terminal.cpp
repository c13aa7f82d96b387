#include "cli/terminal.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <ostream>
#include <utility>

#include "base/bytes.h"
#include "base/text.h"
#include "cli/system.h"

namespace kestrel::cli {
namespace {

class TerminalProgress final : public Progress {
  public:
    TerminalProgress(Terminal& terminal, bool isShown) : terminal_(terminal), isShown_(isShown) {}
    ~TerminalProgress() override { terminal_.showProgress({}); }
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    void show(Owner*) override {}
    void Process(std::wstring_view text) override {
        process_ = text;
        paint();
    }
    void SubProcess(std::wstring_view) override {}
    void ShowProgress(int percentage, std::wstring_view) override {
        if (percentage == std::exchange(percentage_, percentage)) return;
        paint();
    }
    void CanCancel(bool) override {}
    bool DidCancel() const override { return system::isInterrupted(); }

  private:
    using Clock = std::chrono::steady_clock;

    void paint() {
        constexpr std::chrono::milliseconds kPause{100};
        if (!isShown_) return;
        const Clock::time_point now = Clock::now();
        if (now - painted_ < kPause) return;
        painted_ = now;
        terminal_.showProgress(process_ + L" " + std::to_wstring(percentage_) + L"%");
    }

    Terminal& terminal_;
    bool isShown_;
    std::wstring process_;
    int percentage_ = 0;
    Clock::time_point painted_ = Clock::now();  // quick work shows nothing
};

// The current time in one format for all users: a text that is written into a
// file must not depend on who runs the program.
std::wstring formattedTime(const char* format) {
    const std::time_t now = std::time(nullptr);
    const std::tm* local = std::localtime(&now);
    std::array<char, 64> text{};
    if (local != nullptr) std::strftime(text.data(), text.size(), format, local);
    return fromUtf8(text.data());
}

bool breaksLine(wchar_t c) {
    return c == L'\n' || c == L'\r' || c == L'\t';
}

std::string escapeOf(wchar_t c) {
    if (c == L'\n') return "\\n";
    if (c == L'\r') return "\\r";
    if (c == L'\t') return "\\t";
    const auto code = static_cast<unsigned>(static_cast<char32_t>(c));
    char escape[16];
    std::snprintf(escape, sizeof escape, code < 0x80 ? "\\x%02X" : "\\u%04X", code);
    return escape;
}

// `text` as UTF-8, with an escape for each character at whose place `isEscaped` is true.
template <class IsEscaped>
std::string escaped(std::wstring_view text, IsEscaped&& isEscaped) {
    std::string line;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isEscaped(i)) continue;
        line.append(toUtf8(text.substr(start, i - start))).append(escapeOf(text[i]));
        start = i + 1;
    }
    return line.append(toUtf8(text.substr(start)));
}

}  // namespace

std::string oneLine(std::wstring_view text) {
    return escaped(text, [&](std::size_t i) { return breaksLine(text[i]); });
}

std::string visibleLine(std::wstring_view text) {
    return escaped(text, [&](std::size_t i) { return !isDrawable(text[i]); });
}

std::string visibleText(std::wstring_view text) {
    return escaped(text, [&](std::size_t i) {
        if (text[i] == L'\r') return !text.substr(i + 1).starts_with(L'\n');
        return !breaksLine(text[i]) && !isDrawable(text[i]);
    });
}

Terminal::Terminal(std::ostream& err, bool showsProgress)
    : err_(err), showsProgress_(showsProgress), before_(gProgram().host) {
    gProgram().host = {};
    gProgram().host.messages = this;
    gProgram().host.progress = this;
    gProgram().host.clock = this;
    gProgram().host.tank = tank_.get();
    gProgram().host.archives = archives_.get();
}

Terminal::~Terminal() {
    gProgram().host = before_;
}

void Terminal::error(std::wstring_view text) {
    showProgress({});
    ++errors_;
    err_ << "kestrel-cli: ";
    if (!subject_.empty()) err_ << visibleLine(subject_) << ": ";
    err_ << visibleLine(text) << '\n';
}

void Terminal::catchInterrupts() {
    interruptible_ = true;
    system::catchInterrupts();
}

void Terminal::showProgress(std::wstring_view text) {
    constexpr std::size_t kColumns = 79;
    if (text.empty() && shown_ == 0) return;
    const std::wstring line = fromUtf8(visibleLine(text)).substr(0, kColumns);
    err_ << '\r' << toUtf8(line);
    if (shown_ > line.size()) err_ << std::string(shown_ - line.size(), ' ');
    if (line.empty()) err_ << '\r';
    err_.flush();
    shown_ = line.size();
}

Answer Terminal::ask(std::wstring_view text, std::wstring_view, Icon, Buttons buttons) {
    error(text);
    if (buttons == Buttons::ok) return Answer::ok;
    return buttons == Buttons::yesNo ? Answer::no : Answer::cancel;
}

std::optional<std::wstring> Terminal::prompt(std::wstring_view, std::wstring_view,
                                             std::wstring_view) {
    return std::nullopt;
}

std::unique_ptr<Progress> Terminal::makeProgress() {
    // What is not shown can be interrupted all the same.
    const bool isNeeded = showsProgress_ || interruptible_;
    return isNeeded ? std::make_unique<TerminalProgress>(*this, showsProgress_) : nullptr;
}

std::wstring Terminal::longTime() const {
    return formattedTime("%H:%M:%S");
}

std::wstring Terminal::longDate() const {
    return formattedTime("%A, %d %B %Y");
}

}  // namespace kestrel::cli
