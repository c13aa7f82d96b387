#include "cli/run.h"

#include <algorithm>
#include <ostream>

#include "cli/commands.h"
#include "cli/help.h"
#include "services/guard.h"
#include "services/program.h"

namespace kestrel::cli {
namespace {

constexpr std::wstring_view kCodePage = L"--codepage";

struct Command {
    std::wstring_view name;
    std::wstring_view operands;  // as messages show them
    std::size_t least;
    std::size_t most;
    std::vector<std::wstring_view> options;
    int (*run)(const Call&);
};

const Command& findCommand(const Arguments& arguments) {
    static const Command kCommands[] = {
        {L"list", L"FILE", 1, 1, {}, list},
        {L"show", L"FILE NAME", 2, 2, {L"--listed"}, show},
        {L"chain", L"FILE NAME", 2, 2, {L"--in"}, chain},
        {L"convert",
         L"FOLDER",
         1,
         1,
         {L"--single", L"--title", L"--author", L"--build", L"--copyright"},
         convert},
        {L"check", L"FILE...", 1, static_cast<std::size_t>(-1), {}, check},
        {L"dump", L"FILE", 1, 1, {}, dump},
        {L"tank list", L"ARCHIVE", 1, 1, {L"--json"}, tankList},
        {L"tank find", L"ARCHIVE TEXT", 2, 2, {L"--json"}, tankFind},
        {L"tank test", L"ARCHIVE", 1, 1, {}, tankTest},
        {L"tank extract",
         L"ARCHIVE [NAME...]",
         1,
         static_cast<std::size_t>(-1),
         {L"--to", L"--flat", L"--existing"},
         tankExtract},
    };
    if (arguments.operands().empty()) throw WrongUsage(L"name a command");
    std::wstring name = arguments.operands()[0];
    if (name == L"tank" && arguments.operands().size() > 1) name += L" " + arguments.operands()[1];
    const auto* command = std::ranges::find(kCommands, name, &Command::name);
    if (command == std::end(kCommands)) throw WrongUsage(L"there is no command \"" + name + L"\"");
    return *command;
}

// How many operands are the command's own name.
std::size_t wordsOf(const Command& command) {
    return command.name.find(L' ') == command.name.npos ? 1 : 2;
}

void checkUsage(const Command& command, const Arguments& arguments) {
    const std::size_t count = arguments.operands().size() - wordsOf(command);
    if (count < command.least || count > command.most) {
        std::wstring text = L"write \"";
        text.append(command.name).append(L" ").append(command.operands).append(L"\"");
        throw WrongUsage(text);
    }
    for (const auto& [option, value] : arguments.options()) {
        if (option == kCodePage) continue;  // any command's
        if (std::ranges::find(command.options, option) != command.options.end()) continue;
        std::wstring text = L"\"";
        text.append(command.name).append(L"\" has no option \"").append(option).append(L"\"");
        throw WrongUsage(text);
    }
}

// The option goes before the environment variable.
void settlePage(const Arguments& arguments) {
    const auto chosen = arguments.value(std::wstring(kCodePage));
    const std::wstring problem = chosen ? useCodePage(*chosen) : settleCodePage();
    if (!problem.empty()) throw WrongUsage(problem);
}

void showVersion(std::ostream& out) {
    const Version& version = gProgram().version;
    out << "kestrel-cli " << version.major << '.' << version.minor << '.' << version.revision
        << '\n';
}

int runWords(const std::vector<std::wstring>& words, std::ostream& out, Terminal& terminal) {
    const Arguments arguments(words);
    if (arguments.has(L"--help")) {
        out << kHelp;
        return kFine;
    }
    if (arguments.has(L"--version")) {
        showVersion(out);
        return kFine;
    }
    const Command& command = findCommand(arguments);
    checkUsage(command, arguments);
    settlePage(arguments);
    const auto own = static_cast<std::ptrdiff_t>(wordsOf(command));
    const std::vector<std::wstring> operands(arguments.operands().begin() + own,
                                             arguments.operands().end());
    return command.run({operands, arguments, out, terminal});
}

int runGuarded(const std::vector<std::wstring>& words, std::ostream& out, Terminal& terminal) {
    const std::optional<int> code = guarded(L"kestrel-cli", [&]() -> std::optional<int> {
        try {
            return runWords(words, out, terminal);
        } catch (const WrongUsage& wrong) {
            terminal.error(wrong.text() + L"; \"kestrel-cli --help\" shows the usage");
            return kWrongUsage;
        }
    });
    return code.value_or(kFailed);
}

}  // namespace

int run(const std::vector<std::wstring>& words, std::ostream& out, std::ostream& err,
        bool showsProgress) noexcept {
    try {
        Terminal terminal(err, showsProgress);
        const int code = runGuarded(words, out, terminal);
        if (out.flush()) return code;
        terminal.about({});
        terminal.error(L"the output could not be written whole; is the disk full?");
    } catch (...) {
        // Not even a message could be made.
    }
    return kFailed;
}

}  // namespace kestrel::cli
