// Texts: bytes and characters, the cleaning of fields, searches and read-outs, and
// what lists, consoles and JSON show.
#include <vector>

#include "cli/json.h"
#include "cli/terminal.h"
#include "fuzz/fuzz.h"
#include "gas/browse.h"
#include "services/errors.h"
#include "services/keys.h"
#include "services/text.h"
#include "services/viewtext.h"

namespace kestrel::fuzz {
namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void checkBytes(std::string_view bytes) {
    const CodePage& page =
        *CodePage::find(CodePage::kNumbers[bytes.size() % CodePage::kNumbers.size()]);
    const std::wstring wide = page.wide(bytes);
    require(wide.size() == bytes.size() && page.has(wide) && page.bytes(wide) == bytes);
    std::wstring twice = wide;
    page.appendWide(twice, bytes);
    require(twice == wide + wide);
    require(toUtf8(fromUtf8(bytes)) == bytes);
}

void checkNarrow(const std::wstring& text) {
    try {
        require(widen(narrow(text)) == text && gProgram().codePage->has(text));
    } catch (const RunTimeError& error) {
        require(!gProgram().codePage->has(text) && error.number() == kInvalidCall);
    }
}

void checkCleaning(const std::wstring& text) {
    std::wstring joined;
    const auto pieces = split(text, kLineEnd);
    for (const std::wstring_view piece : pieces) {
        joined += joined.empty() && piece.data() == pieces.front().data() ? L"" : kLineEnd;
        joined += piece;
        require(piece.find(kLineEnd) == piece.npos);
    }
    require(joined == text);
    const std::wstring clean = cleanValue(text);
    require(cleanValue(clean) == clean && clean.find_first_of(L"\";[]{}\t") == clean.npos);
    const std::wstring squeezed = squeezeBlankLines(text);
    require(squeezed.find(L"\r\n\r\n") == squeezed.npos && !squeezed.starts_with(kLineEnd));
    require(removeCommentMarks(text).find(L"//") == std::wstring::npos);
    std::wstring statements;
    for (const std::wstring& one : splitStatements(text, kLineEnd)) statements += one;
    require(statements.size() <= text.size() + 1 + splitStatements(text, kLineEnd).size());
    require(compareWithoutCase(text, lowerCase(text)) == 0);
    require(lowerCase(lowerCase(text)) == lowerCase(text));
    require(makeKey(static_cast<std::size_t>(gintKeyIndex(text))).starts_with(L"K"));
}

// The search of a pane against the plain one over characters.
void checkSearch(const std::wstring& text, const std::wstring& what, std::size_t caret) {
    const std::string bytes = toUtf8(text);
    caret = std::min(caret, text.size());
    const std::size_t selectionEnd = toUtf8(std::wstring_view(text).substr(0, caret)).size();
    const auto found = findText(bytes, what, selectionEnd);
    const std::wstring folded = lowerCase(text);
    const std::wstring wanted = lowerCase(what);
    std::size_t at = folded.find(wanted, caret > 0 ? caret - 1 : 0);
    if (at == folded.npos) at = folded.find(wanted);
    if (what.empty() || at == folded.npos) return require(!found);
    require(found && found->begin == toUtf8(std::wstring_view(text).substr(0, at)).size());
    require(found->end - found->begin ==
            toUtf8(std::wstring_view(text).substr(at, what.size())).size());
}

void checkPane(const std::wstring& raw, const std::wstring& what, std::size_t caret) {
    const auto stand = standIn(raw);
    const std::wstring text = stand ? stand->text : raw;
    require(!stand || stand->toWhole(text.size()) == raw.size());
    require(fromUtf8(toUtf8(text)) == text && characterCount(toUtf8(text)) == text.size());
    checkSearch(text, standIn(what).value_or(StandIn{what, {}}).text, caret);
}

void checkShown(const std::wstring& text) {
    for (const std::string& line :
         {toUtf8(lineText(text)), cli::visibleLine(text), cli::jsonText(text)}) {
        require(std::ranges::none_of(line, isControl));
    }
    require(cli::oneLine(text).find_first_of("\r\n") == std::string::npos);
    require(lineText(text).size() <= 1001);
    const std::string json = cli::jsonText(text);
    require(json.size() >= 2 && json.front() == '"' && json.back() == '"');
    bool escaped = false;
    for (std::size_t i = 1; i + 1 < json.size(); ++i) {
        require(escaped || json[i] != '"');
        escaped = !escaped && json[i] == '\\';
    }
    require(!escaped && !standIn(fromUtf8(json)));
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    const std::size_t caret = input.byte();
    const std::wstring what = input.text();
    checkBytes(input.rest());
    const std::wstring text = fromUtf8(input.rest());
    checkNarrow(text);
    require(fileText(fileBytes(text)) == text);
    checkCleaning(text);
    checkPane(text, what, caret);
    checkShown(text);
    chainText(text);
}

}  // namespace kestrel::fuzz
