#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "gas/leftout.h"
#include "gas/template.h"

// How the loader reads the statements of one block. Private to the loader.
//
// Everything here works on the bytes of the text, of which records are slices. All
// characters that structure a `.gas` text are ASCII, so the bytes may be of an 8-bit code
// page or UTF-8 alike.
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
    bool brackets;          // it has brackets or braces
};

// All statements of a normalised block, those that no rule wants too. They point into it.
std::vector<Statement> statementsOf(std::string_view block);

bool isComment(const Statement& statement) noexcept;

// True for a header that raises the Level.
bool opensSubBlock(const Statement& statement);

// Tells what the rule of `statement` leaves out of it.
LeftOutList leftOut(const Statement& statement);

// Applies the rules to the statements of one block and fills its record.
class BlockReader {
  public:
    // The record's texts are slices of `file`, its properties the entries that this adds.
    BlockReader(GasFile& file, GasTemplate& record, Braces& braces, bool docNames);

    // Reads the block. A run of line ends counts as one when `squeeze`. Gives the number of
    // its statements.
    std::uint32_t read(std::string_view block, bool squeeze);

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
    void storePair(std::string_view text);
    void storeProperty(std::string_view name, std::string_view value);  // cleaned
    void storeHeaderPart(std::string_view part);
    void store(std::string_view name, GasFile::Slice value, bool isBlock = false);

    GasFile& file_;
    GasTemplate& record_;
    Braces& braces_;
    bool docNames_;
    const GasGroup* group_ = nullptr;
    std::int16_t level_ = 0;
    std::string comments_;
    std::string nameBuffer_;
    std::string valueBuffer_;
};

}  // namespace kestrel::loading
