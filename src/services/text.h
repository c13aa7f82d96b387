#pragma once

#include <string>
#include <string_view>
#include <vector>

// Small operations on text that do not depend on the user's locale, and the
// cleaning rules of `.gas` text. Blanks are spaces (U+0020) alone.
namespace kestrel {

inline constexpr std::wstring_view kLineEnd = L"\r\n";

// `text` without leading and trailing spaces.
std::wstring_view trim(std::wstring_view text) noexcept;

// The pieces of `text` between the occurrences of `separator` (not empty). An
// empty text gives no piece. The pieces point into `text`.
std::vector<std::wstring_view> split(std::wstring_view text, std::wstring_view separator);

// The letter without case, for letters of any script whose two cases take as many bytes of
// UTF-8; any other character is returned as it is.
wchar_t foldCase(wchar_t c) noexcept;
// The other letter of the same foldCase(); `c` itself when there is none.
wchar_t otherCase(wchar_t c) noexcept;
std::wstring lowerCase(std::wstring_view text);

// False for a character that shows nothing (a control), turns the direction of what follows
// (so that a name passes for another), or is none.
bool isDrawable(wchar_t c) noexcept;

// Appends `number` in decimal.
void appendNumber(std::wstring& text, long long number);

// Compares without case: negative, 0 or positive, as std::wstring::compare.
int compareWithoutCase(std::wstring_view a, std::wstring_view b) noexcept;

std::wstring removeTabs(std::wstring text);
std::wstring removeSemicolons(std::wstring text);
std::wstring removeQuotes(std::wstring text);
std::wstring removeCommentMarks(std::wstring_view text);
std::wstring removeBrackets(std::wstring text);

// Tabs, semicolons, quotes and brackets removed, then trimmed. Comment marks
// stay.
std::wstring cleanValue(std::wstring text);

// Leading line ends dropped, then every doubled line end made a single one.
std::wstring squeezeBlankLines(std::wstring_view text);

// `text` cut at `separator`; a piece that holds ";" is cut again at every ";"
// and each of its sub-pieces gets a ";" appended, the last one too.
std::vector<std::wstring> splitStatements(std::wstring_view text, std::wstring_view separator);

}  // namespace kestrel
