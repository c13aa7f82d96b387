#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "services/program.h"
#include "system/codepage.h"
#include "system/filestamp.h"

// What the windows that show a text do with it, as far as no window is needed:
// read-outs, search, saving and handing it over.
//
// A text pane holds its text as UTF-8; offsets that users see count the
// characters of the wide text, where a CR LF is two.
namespace kestrel {

// The number of wide characters of the valid UTF-8 `text`.
std::size_t characterCount(std::string_view text) noexcept;

// A part of a line that is not shown, and the words that stand in its place.
struct HiddenPart {
    std::size_t at = 0;     // in the shown text, in characters
    std::size_t words = 0;  // so many characters tell of it
    std::size_t hidden = 0;
};

// What a pane shows in place of a text.
struct StandIn {
    std::wstring text;
    std::vector<HiddenPart> cuts;

    // Where a place of the shown text is in the other one, and the other way round; all
    // of a cut is at its begin.
    std::size_t toWhole(std::size_t shown) const noexcept;
    std::size_t toShown(std::size_t whole) const noexcept;
};

// What a pane can show in place of `text`: U+FFFD for each code that is no character
// (lone surrogates), and of a line of more than kLongestLine characters its begin,
// since a pane lays out whole lines. Nothing when the text can be shown as it is.
std::optional<StandIn> standIn(std::wstring_view text);
inline constexpr std::size_t kLongestLine = 10'000;

// True when the Enter key adds a bare LF to `text`: all its lines end so. Any
// other text gets CR LF, since a bare LF among those ends no line of a file.
bool endsLinesInLf(std::string_view text) noexcept;

struct TextRange {
    std::size_t begin = 0;  // in bytes
    std::size_t end = 0;

    bool operator==(const TextRange&) const = default;
};

// Finds `what` in the valid UTF-8 `text` without regard to case. The search
// begins at the last character of the selection, which ends at the byte
// `selectionEnd`, and starts once more at the beginning when nothing is found.
// An empty `what` is not found.
std::optional<TextRange> findText(std::string_view text, std::wstring_view what,
                                  std::size_t selectionEnd);

// Where the caret stands; numbers of characters.
struct ReadOuts {
    std::size_t line = 1;
    std::size_t column = 1;
    std::size_t caret = 0;  // 0-based
    std::size_t characters = 0;
    std::size_t lines = 1;
};

// The texts of the panels pnlLine, pnlCol, pnlChar, pnlChars and pnlLines.
std::array<std::wstring, 5> readOutTexts(const ReadOuts& readOuts);

// The caption of a window whose text is `changed`.
std::wstring markedCaption(std::wstring_view base, bool changed);

// The main window's open file, as far as other windows need it; each member may be
// empty.
struct OpenFile {
    std::function<std::wstring()> path;
    std::function<void()> reload;
    // What the file was when it was loaded.
    std::function<std::optional<FileStamp>()> stamp = nullptr;
};

// The block of a `.gas` file that a text is: where the file is, and its place among the
// headers there.
struct FileBlock {
    std::wstring path;
    std::size_t index = 0;
    const CodePage* page = gProgram().sourcePage;  // unless the file tells another

    bool operator==(const FileBlock&) const = default;
};

// A text that a window shows; `text` gives it when it is needed.
struct ViewedText {
    std::function<std::wstring()> text;
    bool canEdit = false;
    bool changed = false;
    std::wstring loaded = {};  // as the file has it
    std::optional<FileBlock> block = {};
};

// Asks whether the changes of a changed editable text may go; true when they may,
// or there are none.
bool mayDiscard(const ViewedText& viewed);

// Opens a temporary file with the text in SkritPad, whose path is asked for when
// it is not known.
void openInScriptEditor(const ViewedText& viewed);

// Asks for the text to search for; empty when cancelled.
std::wstring askForSearchText(std::wstring_view initial, std::wstring_view title = L"Find Text");

// Tells that `what` was not found.
void tellNotFound(std::wstring_view what);

}  // namespace kestrel
