#pragma once

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

// Texts and numbers packed into bytes, each behind its length and a colon.
namespace kestrel {

class PackedWriter {
  public:
    void add(std::string_view bytes);
    // As UTF-8.
    void add(std::wstring_view text);
    template <class Number>
    void addNumber(Number number) {
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        add(std::string_view(digits, end));
    }
    std::size_t size() const noexcept { return bytes_.size(); }
    const std::string& bytes() const noexcept { return bytes_; }

  private:
    std::string bytes_;
};

// What a PackedWriter wrote; after the first thing that is none of that everything is empty.
// The bytes are its caller's.
class PackedReader {
  public:
    explicit PackedReader(std::string_view bytes) : rest_(bytes) {}

    std::string_view nextBytes();
    std::wstring next();
    template <class Number>
    Number nextNumber() {
        return number<Number>(nextBytes());
    }
    bool atEnd() const noexcept { return rest_.empty(); }
    // True when all that was asked for was there and nothing is left.
    bool isWhole() const noexcept { return whole_ && rest_.empty(); }

  private:
    template <class Number>
    Number number(std::string_view digits) {
        Number result{};
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, result);
        if (error != std::errc() || stop != end) fail();
        return result;
    }
    std::string_view fail();

    std::string_view rest_;
    bool whole_ = true;
};

// Packed texts that come in pieces.
class PackedStream {
  public:
    // A text may have `most` bytes.
    explicit PackedStream(std::size_t most) : most_(most) {}

    void add(std::string_view bytes) { bytes_.append(bytes); }
    // The next text; nothing as long as it is not whole.
    std::optional<std::string> next();
    bool isEmpty() const noexcept { return bytes_.empty(); }
    // True from the first thing on that is no packed text.
    bool isWrong() const noexcept { return wrong_; }

  private:
    std::size_t most_;
    std::string bytes_;
    bool wrong_ = false;
};

}  // namespace kestrel
