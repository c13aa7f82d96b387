#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "gas/fields.h"
#include "gas/leftout.h"
#include "gas/template.h"

// How the loader reads the statements of one block. Private to the loader.
//
// Everything here works on the bytes of the text; they become wide text where a
// field is stored. All characters that structure a `.gas` text are ASCII, so the
// bytes may be of the 8-bit code page or UTF-8 alike.
namespace kestrel::loading {

// The part of the block's state that runs on over all blocks of a file: the
// braces open, and the depth of the body of the sub-block opened last.
struct Braces {
    std::int64_t open = 0;
    std::int64_t mark = 0;
};

// The sub-blocks of a block that its levels count; they stay there behind it.
inline constexpr std::int16_t kMostLevel = std::numeric_limits<std::int16_t>::max();

struct Statement {
    std::string_view text;  // without the ";" that it was cut at; blanks not trimmed
    const char* equals;     // its first "="; null without one
    const char* more;       // its second one
    std::uint32_t index;    // among all statements of the block
    std::uint8_t rule;      // row of the rule table
    bool cut;               // was cut at a ";", so that one belongs to its end
};

struct StatementList {
    std::vector<Statement> statements;
    std::size_t count = 0;     // of all statements, those that no rule wants too
    std::size_t entries = 0;   // properties that the rules will store, at a guess
    std::size_t comments = 0;  // characters of the comment lines, at a guess
};

// Cuts `block` into statements and finds the rule of each. A run of line ends
// counts as one when `squeeze`. The list is overwritten; it points into `block`.
// It holds the statements that some rule does something with.
void cutStatements(std::string_view block, bool squeeze, StatementList& list);

// As above, for all statements of a normalised block.
void cutAllStatements(std::string_view block, StatementList& list);

bool isComment(const Statement& statement) noexcept;

// True for a header that raises the Level.
bool opensSubBlock(const Statement& statement);

// Tells what the rule of `statement` leaves out of it.
LeftOutList leftOut(const Statement& statement);

// Applies the rules to the statements of one block and fills `record`'s
// Properties and Comments.
class BlockReader {
  public:
    BlockReader(GasTemplate& record, Braces& braces, FieldMaker& fields, bool docNames);

    void read(const StatementList& list);

    // True when a `doc` property has given the record another Name.
    bool renamed() const noexcept { return renamed_; }

    // The rules, one function each; statements.cpp holds their ordered table.
    void comment(const Statement& statement);
    void namedHeader(const Statement& statement);
    void ownHeader(const Statement& statement);
    void header(const Statement& statement);
    void oneLineBody(const Statement& statement);
    void openingLine(const Statement& statement);
    void openingBrace(const Statement& statement);
    void closingBrace(const Statement& statement);
    void property(const Statement& statement);

  private:
    void openSubBlock();
    void closeBrace();
    void storeProperty(std::string_view text);
    void storeProperty(std::string_view name, std::string_view value);
    void storeHeaderPart(std::string_view part);
    GasProperty& store(SharedText name);

    GasTemplate& record_;
    Braces& braces_;
    FieldMaker& fields_;
    bool docNames_;
    bool renamed_ = false;
    SharedGroup group_;
    std::int16_t level_ = 0;
};

}  // namespace kestrel::loading
