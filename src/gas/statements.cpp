#include "gas/statements.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "gas/fields.h"
#include "gas/marks.h"
#include "gas/pieces.h"

namespace kestrel::loading {
namespace {

// What a statement contains, as far as the rules ask for it.
constexpr std::string_view kContents = "/nt[]{}=";  // "//", "n:", "t:"; the others as they are
enum Content : std::uint8_t {
    kComment = 1 << 0,
    kNameKey = 1 << 1,
    kTypeKey = 1 << 2,
    kOpen = 1 << 3,
    kClose = 1 << 4,
    kBraceOpen = 1 << 5,
    kBraceClose = 1 << 6,
    kEquals = 1 << 7,
};
constexpr unsigned kBrackets = kOpen | kClose | kBraceOpen | kBraceClose;

constexpr std::uint8_t kAnyBraces = 255;

struct Rule {
    std::string_view has;  // of kContents
    std::string_view lacks = {};
    std::uint8_t braces = 0;  // that it counts
    bool opens = false;       // a sub-block
    void (BlockReader::*apply)(const Statement&);
    void (*lose)(const Statement&, LeftOutList&);
};

// The first rule that holds wins.
using Reader = BlockReader;
constexpr Rule kRules[] = {
    {.has = "/", .braces = kAnyBraces, .apply = &Reader::comment, .lose = loseInComment},
    {.has = "[n]", .opens = true, .apply = &Reader::namedHeader, .lose = loseInNamedHeader},
    {.has = "n]", .lacks = "t", .apply = &Reader::ownHeader, .lose = loseInOwnHeader},
    {.has = "[]", .lacks = "=", .opens = true, .apply = &Reader::header, .lose = loseInHeader},
    {.has = "[]{=}", .braces = 2, .opens = true, .apply = &Reader::oneLineBody, .lose = loseInBody},
    {.has = "[]{=",
     .braces = 1,
     .opens = true,
     .apply = &Reader::openingLine,
     .lose = loseInOpeningLine},
    {.has = "{",
     .lacks = "=",
     .braces = 1,
     .apply = &Reader::openingBrace,
     .lose = loseBesideBrace},
    {.has = "}",
     .lacks = "=",
     .braces = 1,
     .apply = &Reader::closingBrace,
     .lose = loseBesideBrace},
    // Kept: a closing brace on a property's line does not close the group.
    {.has = "=", .apply = &Reader::property, .lose = loseInProperty},
};
constexpr std::uint8_t kNoRule = std::size(kRules);
constexpr std::uint8_t kCommentRule = 0;
constexpr std::uint8_t kNamedHeaderRule = 1;
constexpr std::uint8_t kPropertyRule = kNoRule - 1;

constexpr unsigned contentOf(std::string_view marks) {
    unsigned content = 0;
    for (const char mark : marks) content |= 1U << kContents.find(mark);
    return content;
}

constexpr std::uint8_t firstRule(unsigned content) {
    for (std::uint8_t i = 0; i < kNoRule; ++i) {
        const unsigned has = contentOf(kRules[i].has);
        if ((content & has) == has && (content & contentOf(kRules[i].lacks)) == 0) return i;
    }
    return kNoRule;
}

constexpr std::array<std::uint8_t, 256> rulesOfContents() {
    std::array<std::uint8_t, 256> rules{};
    for (unsigned content = 0; content < rules.size(); ++content) {
        rules[content] = firstRule(content);
    }
    return rules;
}
constexpr std::array<std::uint8_t, 256> kRuleOfContent = rulesOfContents();

bool equalsWithoutCase(std::string_view text, std::string_view lower) {
    if (text.size() != lower.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c) != lower[i]) {
            return false;
        }
    }
    return true;
}

// Cuts one block, from mark to mark, into statements, which `sink` takes: `all` of them, or
// those that some rule wants.
template <bool all, class Sink>
class Cutter {
  public:
    Cutter(std::string_view block, bool squeeze, Sink& sink)
        : start_(block.data()), end_(start_ + block.size()), squeeze_(squeeze), sink_(sink) {}

    // Gives the number of the statements.
    std::uint32_t cut() {
        forEachMark({start_, end_}, [this](const char* at) { take(at); });
        // The end of the block ends its last statement.
        addStatement(end_);
        return count_;
    }

  private:
    void take(const char* at) {
        switch (*at) {
            case '\r':
                if (at >= start_ && isLineEnd(at)) endLine(at);
                return;
            case ';':
                cut_ = true;
                addStatement(at);
                start_ = at + 1;
                return;
            case '=':
                if (equals_ == nullptr) {
                    equals_ = at;
                } else if (more_ == nullptr) {
                    more_ = at;
                }
                content_ |= kEquals;
                return;
            case '[':
                content_ |= kOpen;
                return;
            case ']':
                content_ |= kClose;
                return;
            case '{':
                content_ |= kBraceOpen;
                return;
            case '}':
                content_ |= kBraceClose;
                return;
            default:
                content_ |= pairAt(at);
        }
    }

    void addStatement(const char* end) {
        const std::uint8_t rule = kRuleOfContent[content_];
        if (all || rule != kNoRule) {
            sink_({{start_, end}, equals_, more_, count_, rule, cut_, (content_ & kBrackets) != 0});
        }
        ++count_;
        content_ = 0;
        equals_ = more_ = nullptr;
    }

    // The marker of two characters that "/" or ":" is a part of.
    std::uint8_t pairAt(const char* at) const {
        if (*at == '/') return at + 1 != end_ && at[1] == '/' ? kComment : 0;
        if (at == start_) return 0;
        return at[-1] == 'n' ? kNameKey : at[-1] == 't' ? kTypeKey : 0;
    }

    void endLine(const char* at) {
        addStatement(at);
        cut_ = false;
        start_ = at + 2;
        while (squeeze_ && start_ != end_ && isLineEnd(start_)) start_ += 2;
    }

    bool isLineEnd(const char* at) const { return *at == '\r' && at + 1 != end_ && at[1] == '\n'; }

    const char* start_;  // of the statement
    const char* end_;
    bool squeeze_;
    Sink& sink_;
    std::uint32_t count_ = 0;
    const char* equals_ = nullptr;
    const char* more_ = nullptr;
    std::uint8_t content_ = 0;
    bool cut_ = false;  // its line has been cut before
};

template <bool all, class Sink>
std::uint32_t cutStatements(std::string_view block, bool squeeze, Sink&& sink) {
    return Cutter<all, Sink>(block, squeeze, sink).cut();
}

}  // namespace

std::vector<Statement> statementsOf(std::string_view block) {
    std::vector<Statement> list;
    cutStatements<true>(block, false,
                        [&](const Statement& statement) { list.push_back(statement); });
    return list;
}

bool isComment(const Statement& statement) noexcept {
    return statement.rule == kCommentRule;
}

bool opensSubBlock(const Statement& statement) {
    if (statement.rule == kNamedHeaderRule) return hasParts(statement.text);
    return statement.rule != kNoRule && kRules[statement.rule].opens;
}

LeftOutList leftOut(const Statement& statement) {
    LeftOutList list;
    if (statement.rule == kNoRule) {
        loseAll(statement, list);
        return list;
    }
    const Rule& rule = kRules[statement.rule];
    rule.lose(statement, list);
    if (rule.braces == kAnyBraces || (!list.empty() && list.front().all)) return list;
    const auto isBrace = [](char c) { return c == '{' || c == '}'; };
    if (std::ranges::count_if(statement.text, isBrace) > rule.braces) {
        list.push_back({L"a brace here is not counted"});
    }
    return list;
}

BlockReader::BlockReader(GasFile& file, GasTemplate& record, Braces& braces, bool docNames)
    : file_(file), record_(record), braces_(braces), docNames_(docNames) {}

std::uint32_t BlockReader::read(std::string_view block, bool squeeze) {
    const std::uint32_t count =
        cutStatements<false>(block, squeeze, [this](const Statement& statement) {
            // Nearly all of them.
            if (statement.rule == kPropertyRule) return property(statement);
            (this->*kRules[statement.rule].apply)(statement);
        });
    record_.Comments = Text(file_.keep(comments_), file_.page());
    return count;
}

void BlockReader::comment(const Statement& statement) {
    comments_.append("Line ").append(std::to_string(statement.index)).append(":\t");
    for (std::string_view rest = statement.cut ? trimStart(statement.text, kBlanks)
                                               : trim(statement.text, kBlanks);
         !rest.empty();) {
        const std::size_t at = rest.find("//");
        appendNormalised(comments_, rest.substr(0, at));
        rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 2);
    }
    comments_ += statement.cut ? ";\r\n" : "\r\n";
}

void BlockReader::namedHeader(const Statement& statement) {
    if (!opensSubBlock(statement)) return;
    openSubBlock();
    // The name is part of the group before anything is stored, so the header's
    // own entries stand inside the sub-block that they open.
    forEachPart(statement.text, [&](std::string_view part) {
        const Pair pair = splitPair(part, ':');
        if (pair.whole && equalsWithoutCase(cleaned(pair.first, nameBuffer_), "n")) {
            group_ = file_.inside(group_, cleaned(pair.second, nameBuffer_));
        }
    });
    forEachPart(statement.text, [&](std::string_view part) { storeHeaderPart(part); });
}

void BlockReader::ownHeader(const Statement& statement) {
    storeHeaderPart(statement.text);
}

void BlockReader::header(const Statement& statement) {
    const std::string_view name =
        cleaned(statement.text.substr(0, statement.text.find(']')), nameBuffer_);
    openSubBlock();
    group_ = file_.inside(group_, name);
    store(name, {}, true);
}

void BlockReader::oneLineBody(const Statement& statement) {
    header(statement);
    ++braces_.open;
    const std::string_view body = statement.text.substr(statement.text.find('{') + 1);
    storePair(body.substr(0, body.find('}')));
    closeBrace();
}

void BlockReader::openingLine(const Statement& statement) {
    header(statement);
    ++braces_.open;
    storePair(statement.text.substr(statement.text.find('{') + 1));
}

void BlockReader::openingBrace(const Statement&) {
    ++braces_.open;
}

void BlockReader::closingBrace(const Statement&) {
    closeBrace();
}

void BlockReader::property(const Statement& statement) {
    const char* const begin = statement.text.data();
    const char* const end =
        statement.more != nullptr ? statement.more : begin + statement.text.size();
    const std::string_view name(begin, statement.equals);
    const std::string_view value(statement.equals + 1, end);
    if (statement.brackets) {
        storeProperty(cleaned(name, nameBuffer_), cleaned(value, valueBuffer_));
    } else {
        storeProperty(cleaned<kNoBrackets>(name, nameBuffer_),
                      cleaned<kNoBrackets>(value, valueBuffer_));
    }
}

void BlockReader::openSubBlock() {
    braces_.mark = braces_.open + 1;
    if (level_ < kMostLevel) ++level_;
}

void BlockReader::closeBrace() {
    if (--braces_.open >= braces_.mark) return;
    // The mark stays where it is: every further closing brace drops one more.
    if (group_ != nullptr) group_ = group_->outer();
}

void BlockReader::storePair(std::string_view text) {
    const Pair pair = splitPair(text, '=');
    if (!pair.whole) return;
    storeProperty(cleaned(pair.first, nameBuffer_), cleaned(pair.second, valueBuffer_));
}

void BlockReader::storeProperty(std::string_view name, std::string_view value) {
    const GasFile::Slice kept = file_.slice(value);
    store(name, kept);
    // A record without a name is no record, so an empty `doc` names nothing.
    if (!docNames_ || value.empty() || !equalsWithoutCase(name, "doc")) return;
    record_.Name = Text(file_.view(kept), file_.page());
}

void BlockReader::storeHeaderPart(std::string_view part) {
    const Pair pair = splitPair(part, ':');
    if (!pair.whole) return;
    std::string_view key = cleaned(pair.first, nameBuffer_);
    if (equalsWithoutCase(key, "t")) key = "type";
    if (equalsWithoutCase(key, "n")) key = "name";
    store(key, file_.slice(cleaned(pair.second, valueBuffer_)));
}

void BlockReader::store(std::string_view name, GasFile::Slice value, bool isBlock) {
    file_.add({file_.slice(name), value, group_ == nullptr ? 0 : group_->id, level_, isBlock});
}

}  // namespace kestrel::loading
