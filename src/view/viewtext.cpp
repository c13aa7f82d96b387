#include "view/viewtext.h"

#include <algorithm>
#include <cstdint>

#include "base/bytes.h"
#include "services/files.h"
#include "services/pickers.h"
#include "services/tools.h"
#include "system/letters.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kFindTitle = L"Find Text";

bool isContinuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// How many wide characters begin with `byte`.
std::size_t charactersAt(char byte) noexcept {
    if (isContinuation(byte)) return 0;
    return sizeof(wchar_t) == 2 && static_cast<unsigned char>(byte) >= 0xF0 ? 2 : 1;
}

std::uint32_t codeOf(wchar_t c) noexcept {
    return static_cast<std::uint32_t>(c);
}

bool isCharacter(std::wstring_view text, std::size_t index) noexcept {
    const std::uint32_t code = codeOf(text[index]);
    if (code < 0xD800) return true;
    if (code > 0xDFFF) return sizeof(wchar_t) == 2 || code <= 0x10FFFF;
    if (sizeof(wchar_t) != 2) return false;
    const auto isHalf = [&](std::size_t at, std::uint32_t first) {
        return at < text.size() && (codeOf(text[at]) & 0xFC00U) == first;
    };
    return code < 0xDC00 ? isHalf(index + 1, 0xDC00) : index > 0 && isHalf(index - 1, 0xD800);
}

constexpr std::size_t kShortestCut = 100;

bool isLineEnd(wchar_t c) noexcept {
    return c == L'\r' || c == L'\n';
}

std::size_t lineLength(std::wstring_view text) noexcept {
    return std::min(text.find_first_of(L"\r\n"), text.size());
}

// A character to be found, in both cases; the two take the same number of bytes.
struct Letter {
    std::string one;
    std::string other;
};

std::vector<Letter> lettersOf(std::string_view what) {
    std::vector<Letter> letters;
    for (std::size_t at = 0; at < what.size();) {
        const std::size_t start = at++;
        while (at < what.size() && isContinuation(what[at])) ++at;
        const std::string_view bytes = what.substr(start, at - start);
        std::wstring wide = fromUtf8(bytes);
        if (wide.size() == 1) wide[0] = otherCase(wide[0]);
        letters.push_back({std::string(bytes), toUtf8(wide)});
    }
    return letters;
}

bool standsAt(std::string_view text, const std::vector<Letter>& letters) {
    for (const Letter& letter : letters) {
        if (!text.starts_with(letter.one) && !text.starts_with(letter.other)) return false;
        text.remove_prefix(letter.one.size());
    }
    return true;
}

// The first place at `from` or behind it.
std::size_t findFrom(std::string_view text, const std::vector<Letter>& letters, std::size_t from) {
    const char one = letters.front().one.front();
    const char other = letters.front().other.front();
    for (std::size_t at = from; at < text.size(); ++at) {
        if (text[at] != one && text[at] != other) continue;
        if (standsAt(text.substr(at), letters)) return at;
    }
    return text.npos;
}

}  // namespace

std::size_t characterCount(std::string_view text) noexcept {
    std::size_t count = 0;
    for (const char byte : text) count += charactersAt(byte);
    return count;
}

std::size_t StandIn::toWhole(std::size_t shown) const noexcept {
    std::size_t more = 0;
    for (const HiddenPart& cut : cuts) {
        if (shown <= cut.at) break;
        if (shown < cut.at + cut.words) return cut.at + more;
        more += cut.hidden - cut.words;
    }
    return shown + more;
}

std::size_t StandIn::toShown(std::size_t whole) const noexcept {
    std::size_t more = 0;
    for (const HiddenPart& cut : cuts) {
        if (whole <= cut.at + more) break;
        if (whole < cut.at + more + cut.hidden) return cut.at;
        more += cut.hidden - cut.words;
    }
    return whole - more;
}

std::optional<StandIn> standIn(std::wstring_view text) {
    StandIn shown;
    bool differs = false;
    std::size_t column = 0;
    for (std::size_t i = 0; i < text.size();) {
        const bool whole = isCharacter(text, i);
        differs |= !whole;
        shown.text += whole ? text[i] : L'\xFFFD';
        column = isLineEnd(text[i++]) ? 0 : column + 1;
        const std::size_t rest = column < kLongestLine ? 0 : lineLength(text.substr(i));
        // Not for the sake of a few, nor between the halves of a character.
        if (rest < kShortestCut || !isCharacter(text.substr(0, i), i - 1)) continue;
        const std::wstring words =
            L" \x2026 [" + std::to_wstring(rest) + L" more characters of this line are not shown]";
        shown.cuts.push_back({shown.text.size(), words.size(), rest});
        shown.text += words;
        i += rest;
        differs = true;
    }
    return differs ? std::optional(std::move(shown)) : std::nullopt;
}

bool endsLinesInLf(std::string_view text) noexcept {
    return text.find('\n') != text.npos && text.find("\r\n") == text.npos;
}

std::optional<TextRange> findText(std::string_view text, std::wstring_view what,
                                  std::size_t selectionEnd) {
    const std::vector<Letter> letters = lettersOf(toUtf8(what));
    if (letters.empty()) return std::nullopt;
    std::size_t start = std::min(selectionEnd, text.size());
    // Kept: the selection's last character is searched again, so that a find
    // right after a match of one character stays at it.
    if (start > 0) --start;
    while (start > 0 && isContinuation(text[start])) --start;
    std::size_t found = findFrom(text, letters, start);
    if (found == text.npos) found = findFrom(text, letters, 0);
    if (found == text.npos) return std::nullopt;
    std::size_t length = 0;
    for (const Letter& letter : letters) length += letter.one.size();
    return TextRange{found, found + length};
}

std::array<std::wstring, 5> readOutTexts(const ReadOuts& readOuts) {
    return {L"Line: " + std::to_wstring(readOuts.line), L"Col: " + std::to_wstring(readOuts.column),
            L"Char: " + std::to_wstring(readOuts.caret),
            L"Chars: " + std::to_wstring(readOuts.characters),
            L"Lines: " + std::to_wstring(readOuts.lines)};
}

std::wstring markedCaption(std::wstring_view base, bool changed) {
    return std::wstring(base).append(changed ? L" *" : L"");
}

bool mayDiscard(const ViewedText& viewed) {
    if (!viewed.canEdit || !viewed.changed) return true;
    return askUser(L"Source has been changed. Exit anyway and discard changes?", Icon::question,
                   Buttons::noYes) == Answer::yes;
}

void openInScriptEditor(const ViewedText& viewed) {
    if (viewed.canEdit && viewed.changed &&
        askUser(L"Source has been changed. ScritPad will open with the original file loaded.",
                Icon::question, Buttons::okCancel) != Answer::ok) {
        return;
    }
    if (skritPadPath().empty()) return;
    const std::wstring file = gstrTempFile();
    if (writeFile(file, viewed.text())) openInSkritPad(file);
}

std::wstring askForSearchText(std::wstring_view initial, std::wstring_view title) {
    return promptUser(
        L"Please enter the text to search for:\r\n\r\n"
        L"Note: This sub-string search is not case sensitive and does not "
        L"support regular expressions or wildcards.",
        title, initial);
}

void tellNotFound(std::wstring_view what) {
    Messages* messages = gProgram().host.messages;
    if (messages == nullptr) return;
    messages->tell(std::wstring(L"Substring not found: ").append(what), kFindTitle,
                   Icon::exclamation);
}

}  // namespace kestrel
