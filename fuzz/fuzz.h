#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "support/recordinghost.h"
#include "support/tempfolder.h"

// What the fuzzers share. Each gives any bytes to a part of the core and holds
// what comes back against what the headers promise.
namespace kestrel::fuzz {

using Words = std::vector<std::wstring>;

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

    // Up to the next `end`, which is taken too.
    std::string_view line(char end = '\n') noexcept {
        const std::string_view line = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
        return line;
    }
    // A line that users type: it need not be of the code page.
    std::wstring text() { return fromUtf8(line()); }

  private:
    std::string_view rest_;
};

// The folder for the files of all inputs; in memory where TMPDIR is.
inline const test::TempFolder& workFolder() {
    static const test::TempFolder folder;
    return folder;
}

// One run of the fuzzer; each has its own. The program's folder is workFolder().
void run(Input input, test::RecordingHost& host);

}  // namespace kestrel::fuzz
