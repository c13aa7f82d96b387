// Command lines: ours, those of the programs that are started, and the console
// program's.
#include <functional>
#include <vector>

#include "cli/arguments.h"
#include "fuzz/fuzz.h"
#include "services/commandfile.h"
#include "services/process.h"
#include "services/text.h"

namespace kestrel::fuzz {
namespace {

// Some texts name files, the same ones each time.
bool isFile(std::wstring_view path) {
    return !path.empty() && std::hash<std::wstring_view>()(path) % 4 == 0;
}

std::wstring withoutBlanks(std::wstring_view text) {
    std::wstring rest(text);
    std::erase(rest, L' ');
    return rest;
}

void checkOwn(const std::wstring& line, const std::vector<std::wstring>& words) {
    if (const auto file = gvarCommandFile(line)) {
        require(!trim(*file).empty() && line.find(*file) != line.npos);
        require(file->find(L'"') == file->npos);
    }
    if (const auto file = gvarCommandFile(words)) require(!trim(*file).empty());
    // One argument is the file, whatever it holds.
    if (!trim(line).empty()) require(gvarCommandFile(std::vector{line}) == line);
}

void checkStart(const std::wstring& line, const std::wstring& configured) {
    const CommandParts parts = splitCommandLine(line, configured);
    const std::wstring_view whole = trim(line);
    const std::wstring_view chosen = configured.empty() ? whole : trim(configured);
    require(chosen.starts_with(parts.program) && whole.ends_with(parts.arguments));
    require(parts.program.empty() == chosen.empty());
    if (parts.program == chosen) return;
    // Only a bare name is less than what was chosen.
    require(chosen[parts.program.size()] == L' ');
    require(parts.program.find(L'/') == std::wstring::npos);
}

void checkWords(const std::wstring& line) {
    const std::vector<std::wstring> words = splitArguments(line, isFile);
    std::wstring joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        require(!words[i].empty());
        const bool hasBlank = words[i].find(L' ') != std::wstring::npos;
        require(!hasBlank || (i + 1 == words.size() && isFile(words[i])));
        joined += words[i];
    }
    require(withoutBlanks(joined) == withoutBlanks(line));
}

void checkConsole(const std::vector<std::wstring>& words) {
    try {
        const cli::Arguments arguments(words);
        require(arguments.operands().size() + arguments.options().size() <= words.size());
        for (const std::wstring& operand : arguments.operands()) {
            require(std::ranges::count(words, operand) > 0);
        }
        for (const auto& [option, value] : arguments.options()) {
            require(option.starts_with(L"--") && arguments.has(option));
            require(arguments.value(option) == value);
        }
    } catch (const cli::WrongUsage& wrong) {
        require(!wrong.text().empty());
    }
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    const std::wstring configured = input.text();
    const std::wstring line = input.text();
    std::vector<std::wstring> words;
    while (!input.empty()) words.push_back(input.text());
    checkOwn(line, words);
    checkStart(line, configured);
    checkStart(configured + L' ' + line, configured);
    checkWords(line);
    checkConsole(words);
}

}  // namespace kestrel::fuzz
