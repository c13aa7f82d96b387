#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "gas/fields.h"
#include "gas/sourcetext.h"

// How a file's text becomes blocks. Private to the loader.
namespace kestrel::loading {

// The text that is cut into blocks. Its line ends are CR LF, the last line has
// one, and the first line is not empty.
struct Source {
    std::shared_ptr<const std::string> bytes;
    std::string_view text;  // of `bytes`
    SourceText::Form form;  // raw: it still has tabs, and lines without any character
};

// A text without any CR LF has its lines end in LF alone; in any other one a
// lone LF is part of its line.
Source prepare(std::string bytes, const CodePage& page);
void normalise(Source& source);

struct Block {
    std::string_view body;  // behind the prefix of its header
    // With its prefix, as it stands in the text; empty where there is no such place.
    std::string_view whole;

    std::string_view header() const { return whole.substr(0, whole.size() - body.size()); }
};

// What a file's first header decides for the whole file.
struct Cut {
    std::string_view prefix;  // of every block's header
    std::wstring kind;
    std::vector<Block> blocks;
    bool found = false;        // there is a header
    bool known = false;        // of a kind of the table
    std::string_view dropped;  // what no block holds: it precedes the first header
};

// Not found when the text has no header of any kind.
Cut cutBlocks(std::string_view text, const FieldMaker& fields);

// True when the raw text does not cut as the normalised one would: a header may
// be written in several ways that become one, and the line ends where parties
// are joined must stay.
bool needsNormalText(const Cut& cut);

// The two first sections of a party are loaded once more, joined, as the first
// block. True for such a cut.
bool isJoined(const Cut& cut);

// Joins them; `joined` keeps the text of that block.
void joinParties(Cut& cut, std::string& joined);

}  // namespace kestrel::loading
