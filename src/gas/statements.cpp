#include "gas/statements.h"

#include <array>
#include <cstring>
#include <limits>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/text.h"

namespace kestrel::loading {
namespace {

// What a statement contains. The last four are told from a single character;
// kSlash and kColon only say that the markers of two characters may be there.
enum Mark : std::uint16_t {
    kComment = 1 << 0,     // "//"
    kNameKey = 1 << 1,     // "n:"
    kTypeKey = 1 << 2,     // "t:"
    kOpen = 1 << 3,        // "["
    kClose = 1 << 4,       // "]"
    kBraceOpen = 1 << 5,   // "{"
    kBraceClose = 1 << 6,  // "}"
    kEquals = 1 << 7,      // "="
    kSlash = 1 << 8,
    kColon = 1 << 9,
    kCut = 1 << 10,     // ";"
    kReturn = 1 << 11,  // CR
};

struct Rule {
    unsigned required;
    unsigned forbidden;
    void (BlockReader::*apply)(const Statement&);
    std::uint8_t entries;  // that it may store
    bool opens;            // a sub-block
};

// The first rule that holds wins.
constexpr Rule kRules[] = {
    {kComment, 0, &BlockReader::comment, 0, false},
    {kOpen | kNameKey | kClose, 0, &BlockReader::namedHeader, 2, true},
    {kNameKey | kClose, kTypeKey, &BlockReader::ownHeader, 1, false},
    {kOpen | kClose, kEquals, &BlockReader::header, 1, true},
    {kOpen | kClose | kBraceOpen | kEquals | kBraceClose, 0, &BlockReader::oneLineBody, 2, true},
    {kOpen | kClose | kBraceOpen | kEquals, kBraceClose, &BlockReader::openingLine, 2, true},
    {kBraceOpen, kEquals, &BlockReader::openingBrace, 0, false},
    {kBraceClose, kEquals, &BlockReader::closingBrace, 0, false},
    // Kept: the test can never hold, so a closing brace on a property's line
    // does not close the group.
    {kBraceClose | kEquals, kBraceClose, &BlockReader::closingBrace, 0, false},
    {kEquals, 0, &BlockReader::property, 1, false},
};
constexpr std::uint8_t kNoRule = std::size(kRules);

constexpr std::uint8_t firstRule(unsigned marks) {
    for (std::uint8_t i = 0; i < kNoRule; ++i) {
        const Rule& rule = kRules[i];
        if ((marks & rule.required) == rule.required && (marks & rule.forbidden) == 0) return i;
    }
    return kNoRule;
}

constexpr auto kRuleOfMarks = [] {
    std::array<std::uint8_t, 256> rules{};
    for (unsigned marks = 0; marks < rules.size(); ++marks) rules[marks] = firstRule(marks);
    return rules;
}();

constexpr auto kMarkOfByte = [] {
    std::array<std::uint16_t, 256> marks{};
    marks['['] = kOpen;
    marks[']'] = kClose;
    marks['{'] = kBraceOpen;
    marks['}'] = kBraceClose;
    marks['='] = kEquals;
    marks['/'] = kSlash;
    marks[':'] = kColon;
    marks[';'] = kCut;
    marks['\r'] = kReturn;
    return marks;
}();

// Characters that cleaning removes, and those it removes from the ends.
enum Junk : std::uint8_t { kRemoved = 1, kBlank = 2 };

constexpr auto kJunkOfByte = [] {
    std::array<std::uint8_t, 256> junk{};
    for (const char c : {'\t', ';', '"', '[', ']', '{', '}'}) {
        junk[static_cast<unsigned char>(c)] = kRemoved;
    }
    junk[' '] = kBlank;
    return junk;
}();

unsigned markOf(char c) {
    return kMarkOfByte[static_cast<unsigned char>(c)];
}
unsigned junkOf(char c) {
    return kJunkOfByte[static_cast<unsigned char>(c)];
}

bool contains(std::string_view text, const char* marker) {
    return text.find(marker) != std::string_view::npos;
}

// The marks of two characters, told from the single ones found in `text`.
unsigned pairMarks(std::string_view text, unsigned marks) {
    unsigned pairs = 0;
    if ((marks & kSlash) != 0 && contains(text, "//")) pairs |= kComment;
    if ((marks & kColon) != 0 && contains(text, "n:")) pairs |= kNameKey;
    if ((marks & kColon) != 0 && contains(text, "t:")) pairs |= kTypeKey;
    return pairs;
}

std::string_view trimStart(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

std::string_view trimSpaces(std::string_view text) {
    text = trimStart(text);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

// `text` without the characters that cleaning removes at its ends. What is left
// inside is for cleaned() to remove.
std::string_view trimJunk(std::string_view text) {
    while (!text.empty() && junkOf(text.front()) != 0) text.remove_prefix(1);
    while (!text.empty() && junkOf(text.back()) != 0) text.remove_suffix(1);
    return text;
}

// The cleaned form of `text`: a part of `text` itself, or of `buffer` when
// something had to be removed from its middle.
std::string_view cleaned(std::string_view text, std::string& buffer) {
    text = trimJunk(text);
    unsigned junk = 0;
    for (const char c : text) junk |= junkOf(c);
    if ((junk & kRemoved) == 0) return text;
    buffer.clear();
    for (const char c : text) {
        if (junkOf(c) != kRemoved) buffer += c;
    }
    return buffer;
}

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

// The part of `text` before the first `mark`, and the piece between it and the
// next one.
struct Pair {
    std::string_view first;
    std::string_view second;
    bool whole = false;  // there is a mark
};

Pair splitPair(std::string_view text, char mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos) return {text, {}, false};
    const std::string_view rest = text.substr(at + 1);
    return {text.substr(0, at), rest.substr(0, rest.find(mark)), true};
}

void addStatement(StatementList& list, std::string_view text, unsigned marks, bool cut) {
    const std::size_t index = list.count++;
    if ((marks & (kSlash | kColon)) != 0) marks |= pairMarks(text, marks);
    const std::uint8_t rule = kRuleOfMarks[marks & 0xFF];
    if (rule == kNoRule) return;
    list.entries += kRules[rule].entries;
    list.headers += kRules[rule].opens ? 1 : 0;
    list.statements.push_back({text, static_cast<std::uint32_t>(index), rule, cut});
}

}  // namespace

std::wstring Widener::operator()(std::string_view bytes) const {
    return utf8_ ? fromUtf8(bytes) : widen(bytes);
}

void Widener::append(std::wstring& text, std::string_view bytes) const {
    if (utf8_) {
        text += fromUtf8(bytes);
    } else {
        appendWide(text, bytes);
    }
}

void cutStatements(std::string_view block, StatementList& list) {
    list.statements.clear();
    list.count = list.entries = list.headers = 0;
    const char* const end = block.data() + block.size();
    const char* start = block.data();  // of the statement
    bool cut = false;                  // whether its line has been cut before
    unsigned marks = 0;
    for (const char* at = start; at != end; ++at) {
        const unsigned mark = markOf(*at);
        if (mark == 0) continue;
        const bool lineEnd = mark == kReturn && at + 1 != end && at[1] == '\n';
        if (mark != kCut && !lineEnd) {
            marks |= mark;
            continue;
        }
        cut = cut || mark == kCut;
        addStatement(list, {start, at}, marks, cut);
        marks = 0;
        cut = cut && !lineEnd;
        if (lineEnd) ++at;
        start = at + 1;
    }
    addStatement(list, {start, end}, marks, cut);
}

BlockReader::BlockReader(GasTemplate& record, Braces& braces, const Widener& widen, bool docNames)
    : record_(record), braces_(braces), widen_(widen), docNames_(docNames) {}

void BlockReader::read(const StatementList& list) {
    if (list.headers > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        throw RunTimeError(kOverflow, L"Overflow");
    }
    record_.Properties.reserve(list.entries);
    for (const Statement& statement : list.statements) {
        (this->*kRules[statement.rule].apply)(statement);
    }
    if (record_.Properties.empty()) record_.Properties.resize(list.count);
}

void BlockReader::comment(const Statement& statement) {
    std::string text;
    for (std::string_view rest = statement.cut ? trimStart(statement.text)
                                               : trimSpaces(statement.text);
         !rest.empty();) {
        const std::size_t at = rest.find("//");
        text += rest.substr(0, at);
        rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 2);
    }
    if (statement.cut) text += ';';
    record_.Comments += L"Line " + std::to_wstring(statement.index) + L":\t";
    widen_.append(record_.Comments, text);
    record_.Comments += L"\r\n";
}

void BlockReader::namedHeader(const Statement& statement) {
    if (statement.text.find(',') == std::string_view::npos) return;
    openSubBlock();
    // The name is part of the group before anything is stored, so the header's
    // own entries stand inside the sub-block that they open.
    const auto eachPart = [&](auto&& visit) {
        for (std::string_view rest = statement.text;;) {
            const std::size_t comma = rest.find(',');
            visit(rest.substr(0, comma));
            if (comma == std::string_view::npos) return;
            rest.remove_prefix(comma + 1);
        }
    };
    std::string buffer;
    eachPart([&](std::string_view part) {
        const Pair pair = splitPair(part, ':');
        if (pair.whole && equalsWithoutCase(cleaned(pair.first, buffer), "n")) {
            extendGroup(pair.second);
        }
    });
    eachPart([&](std::string_view part) { storeHeaderPart(part); });
}

void BlockReader::ownHeader(const Statement& statement) {
    storeHeaderPart(statement.text);
}

void BlockReader::header(const Statement& statement) {
    const std::string_view name = statement.text.substr(0, statement.text.find(']'));
    openSubBlock();
    extendGroup(name);
    store(name, {}).IsBlock = true;
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
    storeProperty(statement.text);
}

void BlockReader::openSubBlock() {
    braces_.mark = braces_.open + 1;
    ++level_;
}

void BlockReader::extendGroup(std::string_view name) {
    std::string buffer;
    std::wstring path(group_.text());
    if (!path.empty()) path += L'\\';
    widen_.append(path, cleaned(name, buffer));
    group_ = std::move(path);
}

void BlockReader::closeBrace() {
    if (--braces_.open >= braces_.mark) return;
    // The mark stays where it is: every further closing brace drops one more.
    const std::wstring_view path = group_;
    const std::size_t last = path.rfind(L'\\');
    group_ = std::wstring(path.substr(0, last == path.npos ? 0 : last));
}

void BlockReader::storeProperty(std::string_view text) {
    const Pair pair = splitPair(text, '=');
    if (!pair.whole) return;
    const GasProperty& entry = store(pair.first, pair.second);
    // A record without a name is no record, so an empty `doc` names nothing.
    if (!docNames_ || entry.Value.empty()) return;
    if (entry.Name.size() != 3 || lowerCase(entry.Name) != L"doc") return;
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
    store(key, pair.second);
}

GasProperty& BlockReader::store(std::string_view name, std::string_view value) {
    std::string buffer;
    GasProperty& entry = record_.Properties.emplace_back();
    entry.Name = widen_(cleaned(name, buffer));
    entry.Value = widen_(cleaned(value, buffer));
    entry.Group = group_;
    entry.Level = level_;
    return entry;
}

}  // namespace kestrel::loading
