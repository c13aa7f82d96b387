#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

// What bytes mean as text.
namespace kestrel {

// An encoding: one of the 8-bit code pages of Windows, or UTF-8. In a page an unassigned
// byte stands for the control character of its number, so that all 256 bytes survive a
// round trip. The tables are the system's own; each is made when it is first asked for.
class CodePage {
  public:
    // The 8-bit pages, by their numbers.
    static constexpr std::array<unsigned, 10> kNumbers{874,  1250, 1251, 1252, 1253,
                                                       1254, 1255, 1256, 1257, 1258};

    // Null for a number that is none of those. UTF-8 is not among them: a file tells by
    // its mark that it is UTF-8.
    static const CodePage* find(unsigned number);
    static const CodePage& utf8();

    // A small number that stands for the page in this run, and the page of one.
    static constexpr std::uint8_t kUtf8Index = kNumbers.size();
    std::uint8_t index() const noexcept { return index_; }
    static const CodePage& at(std::uint8_t index) noexcept;

    // The page that the system's programs use: of the locale's language, or 1252 where
    // that has more than one byte a character.
    static const CodePage& ofSystem();

    // 65001 is UTF-8.
    unsigned number() const noexcept { return number_; }
    bool isUtf8() const noexcept { return number_ == kUtf8; }

    // The text of `bytes`: one character a byte, unless this is UTF-8.
    std::wstring wide(std::string_view bytes) const;
    void appendWide(std::wstring& text, std::string_view bytes) const;
    wchar_t wideOf(unsigned char byte) const noexcept { return wide_[byte]; }

    // The bytes of `text`. Throws RunTimeError (error 5) when a character has none; its
    // description names the first such character and the 1-based line that it stands in.
    std::string bytes(std::wstring_view text) const;

    // True when every character of `text` has bytes.
    bool has(std::wstring_view text) const noexcept;

    ~CodePage() = default;
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;

  private:
    static constexpr unsigned kUtf8 = 65001;
    static constexpr std::size_t kHigh = 128;  // the bytes below are ASCII in every page

    CodePage(unsigned number, std::size_t index);
    static std::array<std::unique_ptr<const CodePage>, kNumbers.size()>& made();

    // The byte of a character beyond ASCII, or -1.
    int byteOf(wchar_t c) const noexcept;

    unsigned number_;
    std::uint8_t index_;
    std::array<wchar_t, 256> wide_{};
    std::array<std::pair<wchar_t, unsigned char>, kHigh> high_{};  // by character
};

// The encoding of a file that holds `bytes`: UTF-8 behind its mark, else `page`.
const CodePage& pageOf(std::string_view bytes, const CodePage& page) noexcept;

}  // namespace kestrel
