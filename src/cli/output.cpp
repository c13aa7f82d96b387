#include "cli/output.h"

#include "cli/system.h"

namespace kestrel::cli {

OutputBuffer::int_type OutputBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
}

std::streamsize OutputBuffer::xsputn(const char* bytes, std::streamsize count) {
    const auto size = static_cast<std::size_t>(count);
    return gone_ || settle(std::fwrite(bytes, 1, size, file_) == size) ? count : 0;
}

int OutputBuffer::sync() {
    return gone_ || settle(std::fflush(file_) == 0) ? 0 : -1;
}

bool OutputBuffer::settle(bool done) {
    gone_ = !done && system::readerIsGone();
    return done || gone_;
}

}  // namespace kestrel::cli
