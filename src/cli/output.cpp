#include "cli/output.h"

#include <string_view>

#include "base/bytes.h"
#include "cli/system.h"
#include "cli/terminal.h"

namespace kestrel::cli {

OutputBuffer::int_type OutputBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
}

std::streamsize OutputBuffer::xsputn(const char* bytes, std::streamsize count) {
    waiting_.append(bytes, static_cast<std::size_t>(count));
    constexpr std::size_t kEnough = 65536;
    if (waiting_.size() < kEnough) return count;
    return writeOut(wholePart()) ? count : 0;
}

// A console takes whole characters; what ends a line is one. In a line without end, the last
// character may not be whole.
std::size_t OutputBuffer::wholePart() const {
    const std::size_t line = waiting_.rfind('\n') + 1;
    if (line != 0) return line;
    std::size_t last = waiting_.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(waiting_[last]) & 0xC0U) == 0x80) --last;
    return last;
}

bool OutputBuffer::writeOut(std::size_t count) {
    const std::string_view raw(waiting_.data(), count);
    const std::string visible = isTerminal_ ? visibleText(fromUtf8(raw)) : std::string();
    const bool done = gone_ || settle(system::write(file_, isTerminal_ ? visible : raw));
    waiting_.erase(0, count);
    return done;
}

int OutputBuffer::sync() {
    return writeOut(waiting_.size()) && (gone_ || settle(std::fflush(file_) == 0)) ? 0 : -1;
}

bool OutputBuffer::settle(bool done) {
    gone_ = !done && system::readerIsGone();
    return done || gone_;
}

}  // namespace kestrel::cli
