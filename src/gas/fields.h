#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "gas/sharedtext.h"

// How the bytes of statements become the texts of records. Private to the
// loader. Tabs stand for four spaces.
namespace kestrel::loading {

std::string_view trimStart(std::string_view text);
std::string_view trimBlanks(std::string_view text);

// The cleaned form of `text`, which holds no ";": without quotes and brackets,
// then without blanks at its ends. It is a part of `text` itself, or of `buffer`
// when its middle had to change.
std::string_view cleaned(std::string_view text, std::string& buffer);

// Makes the texts of one load.
class FieldMaker {
  public:
    // `size` is that of the whole text, in bytes.
    FieldMaker(bool utf8, std::size_t size) noexcept
        : utf8_(utf8), pathRoom_(kPathRoom + kPathsPerByte * size) {}
    bool utf8() const noexcept { return utf8_; }

    // All of `bytes`, as they are.
    std::wstring wide(std::string_view bytes) const;

    // A group. Throws RunTimeError (overflow) when the groups take far more room
    // than those of real files: sub-blocks that never close would take the square
    // of the text's size.
    SharedText path(std::string_view bytes);

    // All of `bytes`, a part of a line, with four spaces for each tab.
    void append(std::wstring& text, std::string_view bytes) const;

    // The cleaned form of `bytes`.
    std::wstring value(std::string_view bytes) const;
    SharedText name(std::string_view bytes);

  private:
    static constexpr std::size_t kPathRoom = std::size_t{16} << 20;
    static constexpr std::size_t kPathsPerByte = 16;

    bool utf8_;
    std::size_t pathRoom_;  // bytes that are left for groups
    TextPool paths_;
    TextPool names_;  // by their bytes before cleaning
};

}  // namespace kestrel::loading
