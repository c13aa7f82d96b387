#include "gas/statements.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/text.h"
#include "gas/marks.h"
#include "gas/pieces.h"
#include "system/letters.h"

namespace kestrel::loading {
namespace {

// What a statement contains, as far as the rules ask for it.
enum Content : std::uint8_t {
    kComment = 1 << 0,     // "//"
    kNameKey = 1 << 1,     // "n:"
    kTypeKey = 1 << 2,     // "t:"
    kOpen = 1 << 3,        // "["
    kClose = 1 << 4,       // "]"
    kBraceOpen = 1 << 5,   // "{"
    kBraceClose = 1 << 6,  // "}"
    kEquals = 1 << 7,      // "="
};

struct Rule {
    std::uint8_t required;
    std::uint8_t forbidden;
    std::uint8_t entries;  // that it may store
    std::uint8_t braces;   // that it counts
    bool opens;            // a sub-block
    void (BlockReader::*apply)(const Statement&);
    void (*lose)(const Statement&, LeftOutList&);
};

constexpr std::uint8_t kAnyBraces = 255;

// The first rule that holds wins.
constexpr Rule kRules[] = {
    {kComment, 0, 0, kAnyBraces, false, &BlockReader::comment, loseInComment},
    {kOpen | kNameKey | kClose, 0, 2, 0, true, &BlockReader::namedHeader, loseInNamedHeader},
    {kNameKey | kClose, kTypeKey, 1, 0, false, &BlockReader::ownHeader, loseInOwnHeader},
    {kOpen | kClose, kEquals, 1, 0, true, &BlockReader::header, loseInHeader},
    {kOpen | kClose | kBraceOpen | kEquals | kBraceClose, 0, 2, 2, true, &BlockReader::oneLineBody,
     loseInBody},
    {kOpen | kClose | kBraceOpen | kEquals, kBraceClose, 2, 1, true, &BlockReader::openingLine,
     loseInOpeningLine},
    {kBraceOpen, kEquals, 0, 1, false, &BlockReader::openingBrace, loseBesideBrace},
    {kBraceClose, kEquals, 0, 1, false, &BlockReader::closingBrace, loseBesideBrace},
    // Kept: the test can never hold, so a closing brace on a property's line
    // does not close the group.
    {kBraceClose | kEquals, kBraceClose, 0, 1, false, &BlockReader::closingBrace, loseBesideBrace},
    {kEquals, 0, 1, 0, false, &BlockReader::property, loseInProperty},
};
constexpr std::uint8_t kNoRule = std::size(kRules);
constexpr std::uint8_t kCommentRule = 0;
constexpr std::uint8_t kNamedHeaderRule = 1;

// Room for what a comment's line holds beside the comment.
constexpr std::size_t kCommentFrame = 16;

constexpr std::uint8_t firstRule(unsigned content) {
    for (std::uint8_t i = 0; i < kNoRule; ++i) {
        const Rule& rule = kRules[i];
        if ((content & rule.required) == rule.required && (content & rule.forbidden) == 0) return i;
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

// Which statements a list gets: those that some rule does something with, or all.
enum class Keep : std::uint8_t { wanted, all };

// Cuts one block, from mark to mark.
template <Keep keep>
class Cutter {
  public:
    Cutter(std::string_view block, bool squeeze, StatementList& list)
        : start_(block.data()), end_(start_ + block.size()), squeeze_(squeeze), list_(list) {}

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

    // The end of the block ends its last statement.
    void addStatement(const char* end) {
        const std::uint8_t rule = kRuleOfContent[content_];
        const Statement statement{
            {start_, end}, equals_, more_, static_cast<std::uint32_t>(list_.count++), rule, cut_};
        content_ = 0;
        equals_ = more_ = nullptr;
        if (rule == kNoRule) {
            if constexpr (keep == Keep::all) list_.statements.push_back(statement);
            return;
        }
        list_.entries += kRules[rule].entries;
        if (rule == kCommentRule) list_.comments += statement.text.size() + kCommentFrame;
        list_.statements.push_back(statement);
    }

  private:
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
    StatementList& list_;
    const char* equals_ = nullptr;
    const char* more_ = nullptr;
    std::uint8_t content_ = 0;
    bool cut_ = false;  // its line has been cut before
};

template <Keep keep>
void cut(std::string_view block, bool squeeze, StatementList& list) {
    list.statements.clear();
    list.count = list.entries = list.comments = 0;
    Cutter<keep> cutter(block, squeeze, list);
    forEachMark(block, [&](const char* at) { cutter.take(at); });
    cutter.addStatement(block.data() + block.size());
}

}  // namespace

void cutStatements(std::string_view block, bool squeeze, StatementList& list) {
    cut<Keep::wanted>(block, squeeze, list);
}

void cutAllStatements(std::string_view block, StatementList& list) {
    cut<Keep::all>(block, false, list);
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

BlockReader::BlockReader(GasTemplate& record, Braces& braces, FieldMaker& fields, bool docNames)
    : record_(record), braces_(braces), fields_(fields), docNames_(docNames) {}

void BlockReader::read(const StatementList& list) {
    record_.Properties.reserve(list.entries);
    record_.Comments.reserve(list.comments);
    for (const Statement& statement : list.statements) {
        (this->*kRules[statement.rule].apply)(statement);
    }
    if (record_.Properties.empty()) record_.Properties.resize(list.count);
}

void BlockReader::comment(const Statement& statement) {
    std::wstring& comments = record_.Comments;
    appendNumber(comments += L"Line ", statement.index);
    comments += L":\t";
    for (std::string_view rest = statement.cut ? trimStart(statement.text)
                                               : trimBlanks(statement.text);
         !rest.empty();) {
        const std::size_t at = rest.find("//");
        fields_.append(comments, rest.substr(0, at));
        rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 2);
    }
    if (statement.cut) comments += L';';
    comments += kLineEnd;
}

void BlockReader::namedHeader(const Statement& statement) {
    if (!opensSubBlock(statement)) return;
    openSubBlock();
    // The name is part of the group before anything is stored, so the header's
    // own entries stand inside the sub-block that they open.
    std::string buffer;
    forEachPart(statement.text, [&](std::string_view part) {
        const Pair pair = splitPair(part, ':');
        if (pair.whole && equalsWithoutCase(cleaned(pair.first, buffer), "n")) {
            group_ = fields_.group(group_, fields_.name(pair.second));
        }
    });
    forEachPart(statement.text, [&](std::string_view part) { storeHeaderPart(part); });
}

void BlockReader::ownHeader(const Statement& statement) {
    storeHeaderPart(statement.text);
}

void BlockReader::header(const Statement& statement) {
    const SharedText name = fields_.name(statement.text.substr(0, statement.text.find(']')));
    openSubBlock();
    group_ = fields_.group(group_, name);
    store(name).IsBlock = true;
}

void BlockReader::oneLineBody(const Statement& statement) {
    header(statement);
    ++braces_.open;
    const std::string_view body = statement.text.substr(statement.text.find('{') + 1);
    storeProperty(body.substr(0, body.find('}')));
    closeBrace();
}

void BlockReader::openingLine(const Statement& statement) {
    header(statement);
    ++braces_.open;
    storeProperty(statement.text.substr(statement.text.find('{') + 1));
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
    storeProperty({begin, statement.equals}, {statement.equals + 1, end});
}

void BlockReader::openSubBlock() {
    braces_.mark = braces_.open + 1;
    if (level_ < kMostLevel) ++level_;
}

void BlockReader::closeBrace() {
    if (--braces_.open >= braces_.mark) return;
    // The mark stays where it is: every further closing brace drops one more.
    group_ = group_.around();
}

void BlockReader::storeProperty(std::string_view text) {
    const Pair pair = splitPair(text, '=');
    if (pair.whole) storeProperty(pair.first, pair.second);
}

void BlockReader::storeProperty(std::string_view name, std::string_view value) {
    GasProperty& entry = store(fields_.name(name));
    entry.Value = fields_.value(value);
    // A record without a name is no record, so an empty `doc` names nothing.
    if (!docNames_ || entry.Value.empty()) return;
    if (entry.Name.text().size() != 3 || lowerCase(entry.Name) != L"doc") return;
    record_.Name = entry.Value;
    renamed_ = true;
}

void BlockReader::storeHeaderPart(std::string_view part) {
    const Pair pair = splitPair(part, ':');
    if (!pair.whole) return;
    std::string buffer;
    std::string_view key = cleaned(pair.first, buffer);
    if (equalsWithoutCase(key, "t")) key = "type";
    if (equalsWithoutCase(key, "n")) key = "name";
    store(fields_.name(key)).Value = fields_.value(pair.second);
}

GasProperty& BlockReader::store(SharedText name) {
    GasProperty& entry = record_.Properties.emplace_back();
    entry.Name = std::move(name);
    entry.Group = group_;
    entry.Level = level_;
    return entry;
}

}  // namespace kestrel::loading
