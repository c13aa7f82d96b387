#include "base/commandfile.h"

#include <algorithm>

#include "base/text.h"

namespace kestrel {

namespace {

std::optional<std::wstring> unlessBlank(std::wstring_view text) {
    if (trim(text).empty()) return std::nullopt;
    return std::wstring(text);
}

// A word that stands in quotes when it is written in a line.
bool needsQuotes(const std::wstring& argument) {
    return argument.empty() || argument.find(L' ') != std::wstring::npos;
}

std::wstring joined(const std::vector<std::wstring>& words) {
    std::wstring line;
    for (const std::wstring& word : words) line.append(line.empty() ? L"" : L" ").append(word);
    return line;
}

}  // namespace

std::optional<std::wstring> gvarCommandFile(std::wstring_view line) {
    const auto pieces = split(line, L"\"");
    if (pieces.empty()) return std::nullopt;
    return unlessBlank(trim(pieces[pieces.size() == 1 ? 0 : 1]));
}

std::optional<std::wstring> gvarCommandFile(const std::vector<std::wstring>& arguments) {
    const auto quoted = std::find_if(arguments.begin(), arguments.end(), needsQuotes);
    return unlessBlank(quoted == arguments.end() ? joined(arguments) : *quoted);
}

}  // namespace kestrel
