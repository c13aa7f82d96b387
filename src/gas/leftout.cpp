#include "gas/leftout.h"

#include "gas/pieces.h"
#include "gas/statements.h"

namespace kestrel::loading {
namespace {

constexpr std::wstring_view kBesideBrace = L"what stands beside the brace is left out";
constexpr std::wstring_view kSecondEquals = L"what stands behind the second \"=\" is left out";

// What `text` has behind its first `mark`; empty without one.
std::string_view behind(std::string_view text, char mark) {
    const std::size_t at = text.find(mark);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
}

std::string_view before(std::string_view text, char mark) {
    return text.substr(0, text.find(mark));
}

void loseInPart(std::string_view part, LeftOutList& list) {
    if (!splitPair(part, ':').whole) {
        if (hasContent(part)) list.push_back({L"a part of a header without \":\" is left out"});
    } else if (hasContent(behind(behind(part, ':'), ':'))) {
        list.push_back({L"what stands behind the second \":\" is left out"});
    }
}

// The property that stands behind the brace of a header's line.
void loseInBodyProperty(std::string_view body, LeftOutList& list) {
    if (!splitPair(body, '=').whole) {
        if (hasContent(body)) list.push_back({L"what stands behind \"{\" has no \"=\""});
    } else if (hasContent(behind(behind(body, '='), '='))) {
        list.push_back({kSecondEquals});
    }
}

void loseBehindName(std::string_view text, LeftOutList& list) {
    if (hasContent(text)) list.push_back({L"what stands behind \"]\" is left out"});
}

}  // namespace

bool hasContent(std::string_view text) {
    return text.find_first_not_of(" \t\r\n\"[]{};") != std::string_view::npos;
}

void loseInComment(const Statement& statement, LeftOutList& list) {
    const std::string_view text = statement.text.substr(0, statement.text.find("//"));
    if (hasContent(text)) {
        list.push_back({L"what stands before \"//\" becomes a part of the comment"});
    }
}

void loseInNamedHeader(const Statement& statement, LeftOutList& list) {
    if (hasParts(statement.text)) {
        forEachPart(statement.text, [&](std::string_view part) { loseInPart(part, list); });
    } else {
        list.push_back({L"a header with \"n:\" needs a \",\", as in [t:kind,n:name]", true});
    }
}

void loseInOwnHeader(const Statement& statement, LeftOutList& list) {
    loseInPart(statement.text, list);
}

void loseInHeader(const Statement& statement, LeftOutList& list) {
    loseBehindName(behind(statement.text, ']'), list);
}

void loseInBody(const Statement& statement, LeftOutList& list) {
    const std::string_view body = behind(statement.text, '{');
    loseBehindName(behind(before(statement.text, '{'), ']'), list);
    loseInBodyProperty(before(body, '}'), list);
    if (hasContent(behind(body, '}'))) list.push_back({L"what stands behind \"}\" is left out"});
}

void loseInOpeningLine(const Statement& statement, LeftOutList& list) {
    loseBehindName(behind(before(statement.text, '{'), ']'), list);
    loseInBodyProperty(behind(statement.text, '{'), list);
}

void loseBesideBrace(const Statement& statement, LeftOutList& list) {
    if (hasContent(statement.text)) list.push_back({kBesideBrace});
}

void loseInProperty(const Statement& statement, LeftOutList& list) {
    const std::string_view text = statement.text;
    if (hasContent(behind(behind(text, '='), '='))) list.push_back({kSecondEquals});
    if (text.find_first_of("[]") != std::string_view::npos) {
        list.push_back({L"brackets are taken out of a property"});
    }
}

void loseAll(const Statement& statement, LeftOutList& list) {
    if (statement.text.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
    list.push_back({L"this is no property, header, brace or comment", true});
}

}  // namespace kestrel::loading
