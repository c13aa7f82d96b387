#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "gas/recordtext.h"

// How a file's text becomes blocks. Private to the loader.
namespace kestrel::loading {

// The bytes of a file as they are cut into blocks: line ends are CR LF, and the last line has
// one. A text without any CR LF has its lines end in LF alone; in any other one a lone LF is
// part of its line.
std::string prepared(std::string bytes);

// `text` from its first line on that is not empty.
std::string_view withoutEmptyStart(std::string_view text);

// A block with the prefix of its header, as it stands in the text, and without. Where there
// is no such place, `whole` is empty.
struct Block {
    std::string_view whole;
    std::string_view body;

    std::string_view header() const { return whole.substr(0, whole.size() - body.size()); }
};

// How a text is cut. What its first header is decides for all of it.
class Cut {
  public:
    // Not found when the text has no header of any kind. Texts are of `page`.
    Cut(std::string_view text, const CodePage& page);

    bool found() const noexcept { return found_; }
    const Text& kind() const noexcept { return kind_; }
    // Of every block's header.
    std::string_view prefix() const noexcept { return prefix_; }
    // What no block holds: it precedes the first header.
    std::string_view dropped() const noexcept { return dropped_; }

    // Empty blocks, which are no records, count.
    std::size_t size() const noexcept { return places_.size() + (known_ ? 1 : 0); }
    Block operator[](std::size_t index) const;
    // The place of a block among the headers of its text.
    std::size_t placeOf(std::size_t index) const noexcept { return known_ ? index - 1 : index; }

    // True when the raw text does not cut as the normalised one would: a header may be
    // written in several ways that become one, and the line ends where parties are joined
    // must stay.
    bool needsNormalText() const;

    // The two first sections of a party are loaded once more, joined, as the first block.
    bool isJoined() const noexcept { return isParty_ && size() >= 3; }
    std::string joined() const;

  private:
    void cutOnKnownKind(std::string_view first);
    void cutOnUnknownKind(const CodePage& page);

    std::string_view text_;
    std::string_view prefix_;
    Text kind_;
    std::string_view dropped_;
    std::vector<std::uint32_t> places_;  // of the headers in the text
    bool found_ = false;
    bool known_ = false;  // of a kind of the table
    bool isParty_ = false;
};

}  // namespace kestrel::loading
