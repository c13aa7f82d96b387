#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "system/codepage.h"

namespace kestrel {

// `text` with four spaces for each tab and a single CR LF for each run of them.
std::string normalised(std::string_view text);

// The source text of a block. It is a part of its file's bytes, which all blocks
// of the file share: as wide text they would take four times the file, for a
// text that is seldom looked at. It becomes that text when it is asked for.
class SourceText {
  public:
    struct Form {
        const CodePage* page;
        bool raw;  // still to be normalised
    };

    SourceText() = default;
    SourceText(const std::wstring& text);
    SourceText(const wchar_t* text) : SourceText(std::wstring(text)) {}

    // The text of `bytes`, which `owner` keeps alive.
    SourceText(std::shared_ptr<const std::string> owner, std::string_view bytes, Form form) noexcept
        : owner_(std::move(owner)), bytes_(bytes), form_(form) {}

    // Made anew by each call.
    std::wstring wide() const;
    operator std::wstring() const { return wide(); }
    const CodePage& page() const noexcept { return *form_.page; }
    bool empty() const noexcept { return bytes_.empty(); }

    bool operator==(const SourceText& other) const { return wide() == other.wide(); }
    bool operator==(const std::wstring& other) const { return wide() == other; }
    bool operator==(const wchar_t* other) const { return wide() == other; }

  private:
    std::shared_ptr<const std::string> owner_;
    std::string_view bytes_;
    Form form_{&CodePage::utf8(), false};
};

}  // namespace kestrel
