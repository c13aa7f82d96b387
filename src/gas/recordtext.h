#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "system/codepage.h"

namespace kestrel {

struct GasGroup;

// `text` with four spaces for each tab and a single CR LF for each run of them.
std::string normalised(std::string_view text);
void appendNormalised(std::string& out, std::string_view text);

// A text of a record: bytes of its file, or what the loader has kept beside them. It owns
// nothing and lives as long as a record of that file; it becomes wide text where somebody
// asks for that.
class Text {
  public:
    // What becomes of the bytes when they are asked for; several may be joined.
    enum Form : std::uint8_t {
        kAsTheyAre = 0,
        kRaw = 1,   // still to be normalised
        kOpen = 2,  // a closing brace is missing at their end
    };

    Text() = default;
    // Of ASCII that lives as long as the program.
    Text(const char* ascii) noexcept
        : data_(ascii), size_(static_cast<std::uint32_t>(std::string_view(ascii).size())) {}
    // `bytes` are less than 4 GB.
    Text(std::string_view bytes, const CodePage& page, unsigned form = kAsTheyAre) noexcept
        : data_(bytes.data()),
          size_(static_cast<std::uint32_t>(bytes.size())),
          page_(page.index()),
          form_(static_cast<std::uint8_t>(form)) {}
    // The names of the sub-blocks, joined by "\". None for null.
    explicit Text(const GasGroup* group) noexcept;

    bool empty() const noexcept { return size_ == 0; }
    const CodePage& page() const noexcept { return CodePage::at(page_); }
    // The group that it is the text of, else null.
    const GasGroup* group() const noexcept;
    // Of a text that is no group and of the form kAsTheyAre.
    std::string_view bytes() const noexcept { return {static_cast<const char*>(data_), size_}; }

    // Appends the bytes of the text, in its page.
    void appendTo(std::string& bytes) const;
    // Made anew by each call.
    std::wstring wide() const;

    // By what they are as wide text.
    bool operator==(const Text& other) const;
    bool operator==(std::wstring_view other) const;
    bool operator==(const wchar_t* other) const { return *this == std::wstring_view(other); }
    // `other` is ASCII.
    bool operator==(const char* other) const noexcept { return isPlain() && bytes() == other; }

  private:
    static constexpr std::uint8_t kGroup = 4;

    bool isPlain() const noexcept { return form_ == kAsTheyAre; }

    const void* data_ = "";
    std::uint32_t size_ = 0;
    std::uint8_t page_ = CodePage::kUtf8Index;
    std::uint8_t form_ = kAsTheyAre;
};

// The sub-blocks around a property, outermost first: the last one, in the group around it.
// The texts of 5,000 groups, each in the one before, would take the square of what their
// names take.
struct GasGroup {
    // The sub-blocks that fit into so many bytes are a group's start.
    static constexpr std::size_t kStart = 256;

    const GasGroup* around = nullptr;
    Text name;
    const GasGroup* start = nullptr;  // itself, or around it; null where no name fits
    std::size_t size = 0;             // of the joined names, in bytes
    std::uint32_t id = 0;             // its place among the groups of the file

    // The group around the last name; null for a single name.
    const GasGroup* outer() const noexcept;
    void appendTo(std::string& bytes) const;
    // Of the same page.
    bool operator==(const GasGroup& other) const noexcept;
};

}  // namespace kestrel
