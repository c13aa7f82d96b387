#include "cli/output.h"

#include "cli/system.h"

namespace kestrel::cli {

OutputBuffer::int_type OutputBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
}

std::streamsize OutputBuffer::xsputn(const char* bytes, std::streamsize count) {
    waiting_.append(bytes, static_cast<std::size_t>(count));
    // A console takes whole characters; what ends a line is one.
    constexpr std::size_t kEnough = 65536;
    if (waiting_.size() < kEnough) return count;
    const std::size_t end = waiting_.rfind('\n') + 1;
    return writeOut(end == 0 ? waiting_.size() : end) ? count : 0;
}

bool OutputBuffer::writeOut(std::size_t count) {
    const bool done = gone_ || settle(system::write(file_, {waiting_.data(), count}));
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
