#include "gas/losses.h"

#include <algorithm>

#include "base/bytes.h"
#include "base/text.h"
#include "gas/blocks.h"
#include "gas/statements.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/codepage.h"

namespace kestrel {
namespace {

using loading::LeftOut;
using loading::Statement;

std::string_view trimmed(std::string_view text) {
    return trim(text, " \t\r\n");
}

// Tells the lines of the file that the places of its normalised text come from.
// The two differ in tabs, and in the number of CR LF where lines end.
class LineCounter {
  public:
    LineCounter(std::string_view raw, std::string_view normal) : raw_(raw), at_(normal.data()) {
        skipLineEnds();
    }

    // The line of the character at `place`, which is no earlier one than last time.
    std::size_t lineOf(const char* place) {
        while (at_ < place) {
            const char c = *at_++;
            if (c == '\r' && *at_ == '\n') {
                ++at_;
                raw_.remove_prefix(raw_.find("\r\n"));
                skipLineEnds();
            } else if (c == '\r' || c == '\n') {
                ++line_;
            }
        }
        return line_;
    }

  private:
    void skipLineEnds() {
        for (; raw_.starts_with("\r\n"); raw_.remove_prefix(2)) ++line_;
    }

    std::string_view raw_;
    const char* at_;
    std::size_t line_ = 1;
};

// True when `next` stands behind the ";" that ends `statement`.
bool isBehind(const Statement& next, const Statement& statement) {
    return next.text.data() == statement.text.data() + statement.text.size() + 1;
}

class Checker {
  public:
    Checker(std::string_view raw, std::string_view normal, const CodePage& page)
        : lines_(raw, normal), page_(page) {}

    // Text that no block holds.
    void checkDropped(std::string_view text, std::wstring_view why) {
        for (const Statement& statement : loading::statementsOf(text)) {
            if (!trimmed(statement.text).empty()) add(statement.text, {why, true});
        }
    }

    void checkBlock(const loading::Block& block) {
        const std::string_view header = block.header();
        if (block.body.empty() && !header.empty()) add(header, {L"the block is empty", true});
        list_ = loading::statementsOf(block.body);
        bool inQuotes = false;
        std::size_t headers = 0;
        for (std::size_t i = 0; i < list_.size(); ++i) {
            const Statement& statement = list_[i];
            if (i == 0 || !isBehind(statement, list_[i - 1])) inQuotes = false;
            if (std::ranges::count(statement.text, '"') % 2 != 0) inQuotes = !inQuotes;
            if (isComment(statement)) inQuotes = false;
            // What is left of a header that the prefix has all but the end of.
            if (i == 0 && !header.ends_with(']') && trimmed(statement.text) == "]") continue;
            check(i, inQuotes);
            if (opensSubBlock(statement) && headers++ == loading::kMostLevel) {
                add(statement.text, {L"levels count 32767 sub-blocks; this one and those behind it "
                                     L"have the level of the last"});
            }
        }
    }

    std::vector<Loss> take() { return std::move(losses_); }

  private:
    void check(std::size_t index, bool inQuotes) {
        const Statement& statement = list_[index];
        const loading::LeftOutList leftOut = loading::leftOut(statement);
        for (const LeftOut& one : leftOut) add(statement.text, one);
        if (!leftOut.empty() && leftOut.front().all) return;
        if (trimmed(statement.text).empty() || !goesOn(index)) return;
        if (isComment(statement)) {
            add(statement.text, {L"a \";\" ends a comment: the rest of the line is none"});
        } else if (inQuotes) {
            add(statement.text, {L"a \";\" ends a value, in quotes too"});
        }
    }

    // True when something stands behind the ";" of the statement, or behind more of
    // them.
    bool goesOn(std::size_t index) const {
        const auto& all = list_;
        for (++index; index < all.size() && isBehind(all[index], all[index - 1]); ++index) {
            if (loading::hasContent(all[index].text)) return true;
        }
        return false;
    }

    void add(std::string_view text, const LeftOut& loss) {
        text = trimmed(text);
        losses_.push_back(
            {lines_.lineOf(text.data()), loss.all, std::wstring(loss.why), page_.wide(text)});
    }

    LineCounter lines_;
    const CodePage& page_;
    std::vector<Statement> list_;
    std::vector<Loss> losses_;
};

std::vector<Loss> lossesIn(std::string_view bytes) {
    const CodePage& page = pageOf(bytes, *gProgram().sourcePage);
    if (page.isUtf8()) bytes.remove_prefix(kUtf8Mark.size());
    const std::string raw = loading::prepared(std::string(bytes));
    const std::string normal = normalised(loading::withoutEmptyStart(raw));
    const loading::Cut cut(normal, page);
    Checker checker(raw, normal, page);
    checker.checkDropped(cut.dropped(), L"it stands before the first header");
    for (std::size_t i = 0; i < cut.size(); ++i) {
        if (i == 0 && cut.isJoined()) {
            checker.checkDropped(cut[0].body, L"the first two sections, joined, take its place");
        } else {
            checker.checkBlock(cut[i]);
        }
    }
    return checker.take();
}

}  // namespace

std::vector<Loss> findLosses(std::string_view bytes) {
    return guarded(L"findLosses", [&] { return lossesIn(bytes); });
}

}  // namespace kestrel
