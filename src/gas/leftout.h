#pragma once

#include <string_view>
#include <vector>

// What each rule leaves out of a statement, beside what it stores. Private to
// the loader, whose rule table names these functions.
namespace kestrel::loading {

struct Statement;

struct LeftOut {
    std::wstring_view why;
    bool all = false;  // of the statement
};
using LeftOutList = std::vector<LeftOut>;

// True when there is more in `text` than blanks, line ends, and the marks that
// cleaning removes.
bool hasContent(std::string_view text);

void loseInComment(const Statement& statement, LeftOutList& list);
void loseInNamedHeader(const Statement& statement, LeftOutList& list);
void loseInOwnHeader(const Statement& statement, LeftOutList& list);
void loseInHeader(const Statement& statement, LeftOutList& list);
void loseInBody(const Statement& statement, LeftOutList& list);
void loseInOpeningLine(const Statement& statement, LeftOutList& list);
void loseBesideBrace(const Statement& statement, LeftOutList& list);
void loseInProperty(const Statement& statement, LeftOutList& list);
void loseAll(const Statement& statement, LeftOutList& list);

}  // namespace kestrel::loading
