#include "system/process.h"

#include <algorithm>

#include "base/paths.h"
#include "base/text.h"
#include "system/filesystem.h"

namespace kestrel {

CommandParts splitCommandLine(std::wstring_view commandLine, std::wstring_view configured) {
    const std::wstring_view line = trim(commandLine);
    const std::wstring_view chosen = configured.empty() ? line : trim(configured);
    const std::wstring_view word = chosen.substr(0, chosen.find(L' '));
    const bool isPath = std::ranges::any_of(word, isSeparator);
    const std::wstring_view program = isPath ? chosen : word;
    return {std::wstring(program),
            std::wstring(trim(line.substr(std::min(program.size(), line.size()))))};
}

std::vector<std::wstring> splitArguments(std::wstring_view arguments,
                                         const std::function<bool(std::wstring_view)>& isFile) {
    std::vector<std::wstring> words;
    for (std::wstring_view rest = trim(arguments); !rest.empty();) {
        const std::size_t end = isFile(rest) ? rest.size() : std::min(rest.find(L' '), rest.size());
        words.emplace_back(rest.substr(0, end));
        rest = trim(rest.substr(end));
    }
    return words;
}

}  // namespace kestrel
