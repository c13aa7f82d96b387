#include "services/process.h"

#include <algorithm>

#include "services/text.h"

namespace kestrel {

CommandParts splitCommandLine(std::wstring_view commandLine, std::wstring_view configured,
                              const std::function<bool(std::wstring_view)>& isFile) {
    const std::wstring_view line = trim(commandLine);
    const auto cutAt = [line](std::size_t end) {
        return CommandParts{std::wstring(line.substr(0, end)),
                            std::wstring(trim(line.substr(end)))};
    };
    const std::wstring_view chosen = trim(configured);
    if (!chosen.empty() && line.starts_with(chosen) && isFile(chosen)) return cutAt(chosen.size());
    for (std::size_t end = line.size();;) {
        if (isFile(line.substr(0, end))) return cutAt(end);
        const std::size_t blank = end == 0 ? line.npos : line.rfind(L' ', end - 1);
        if (blank == line.npos) break;
        end = blank;
    }
    return cutAt(std::min(line.find(L' '), line.size()));
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
