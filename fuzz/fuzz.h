#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "services/bytes.h"
#include "services/host.h"
#include "services/program.h"
#include "support/tempfolder.h"

// What the fuzzers share. Each gives any bytes to a part of the core and holds
// what comes back against what the headers promise.
namespace kestrel::fuzz {

// Ends the fuzzer, which then keeps the input, unless `holds`.
inline void require(bool holds) {
    if (!holds) std::abort();
}

// The bytes of one input, taken off from the front. Behind the end all is zero
// and empty.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    bool empty() const noexcept { return rest_.empty(); }
    std::string_view rest() const noexcept { return rest_; }

    std::uint8_t byte() noexcept {
        if (rest_.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    // Up to the next LF, which is taken too.
    std::string_view line() noexcept {
        const std::string_view line = rest_.substr(0, rest_.find('\n'));
        rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
        return line;
    }
    // A line that users type: it need not be of the code page.
    std::wstring text() { return fromUtf8(line()); }

  private:
    std::string_view rest_;
};

// A host for one input: it counts what it is told, and its dialogs are cancelled
// when they were asked for it `patience` times.
class QuietHost final : public Messages, public ProgressMaker, public Clock {
  public:
    QuietHost() {
        gProgram().host.messages = this;
        gProgram().host.progress = this;
        gProgram().host.clock = this;
    }

    std::size_t told = 0;
    std::size_t patience = static_cast<std::size_t>(-1);

    Answer ask(std::wstring_view, std::wstring_view, Icon, Buttons buttons) override {
        ++told;
        return buttons == Buttons::ok ? Answer::ok : Answer::cancel;
    }
    std::optional<std::wstring> prompt(std::wstring_view, std::wstring_view,
                                       std::wstring_view) override {
        return {};
    }
    std::unique_ptr<Progress> makeProgress() override { return std::make_unique<Dialog>(*this); }
    std::wstring longTime() const override { return L"10:20:30"; }
    std::wstring longDate() const override { return L"Friday, 1 March 2002"; }

  private:
    class Dialog final : public Progress {
      public:
        explicit Dialog(QuietHost& host) : host_(host) {}
        void show(Owner*) override {}
        void Process(std::wstring_view) override {}
        void SubProcess(std::wstring_view) override {}
        void ShowProgress(int percentage, std::wstring_view) override {
            require(percentage >= 0 && percentage <= 100);
        }
        void CanCancel(bool) override {}
        bool DidCancel() const override {
            if (host_.patience > 0) --host_.patience;
            return host_.patience == 0;
        }

      private:
        QuietHost& host_;
    };

    ProgramScope program_;
};

// The folder for the files of all inputs; in memory where TMPDIR is.
inline const test::TempFolder& workFolder() {
    static const test::TempFolder folder;
    return folder;
}

// One run of the fuzzer; each has its own.
void run(Input input);

}  // namespace kestrel::fuzz
