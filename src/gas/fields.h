#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "gas/sharedgroup.h"
#include "gas/sharedtext.h"
#include "system/codepage.h"

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
    explicit FieldMaker(const CodePage& page) noexcept : page_(page) {}
    const CodePage& page() const noexcept { return page_; }

    // The group of the sub-block `name` in `around`.
    SharedGroup group(const SharedGroup& around, const SharedText& name) {
        return groups_.inside(around, name);
    }

    // All of `bytes`, a part of a line, with four spaces for each tab.
    void append(std::wstring& text, std::string_view bytes) const;

    // The cleaned form of `bytes`.
    std::wstring value(std::string_view bytes) const;
    SharedText name(std::string_view bytes);

  private:
    const CodePage& page_;
    GroupPool groups_;
    TextPool names_;  // by their bytes before cleaning
};

}  // namespace kestrel::loading
