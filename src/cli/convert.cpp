#include <algorithm>
#include <ostream>

#include "base/text.h"
#include "cli/commands.h"
#include "cli/run.h"
#include "gas/gasnames.h"
#include "system/filesystem.h"
#include "text/convert.h"

namespace kestrel::cli {
namespace {

// What stands at the top of every output file: always in a single one, in others
// where the user gave something for it.
std::wstring header(const Arguments& arguments) {
    constexpr const wchar_t* kLines[] = {L"--title", L"--author", L"--build", L"--copyright"};
    const bool given =
        std::ranges::any_of(kLines, [&](const wchar_t* option) { return arguments.has(option); });
    if (!given && !arguments.has(L"--single")) return {};
    const auto value = [&](const wchar_t* option) { return arguments.value(option).value_or(L""); };
    return conversionHeader(value(L"--title"), value(L"--author"), value(L"--build"),
                            value(L"--copyright"));
}

// The lines up to an empty one: those behind it have been told.
void showSummary(std::wstring_view summary, std::ostream& out) {
    for (const std::wstring_view line : split(summary, kLineEnd)) {
        if (line.empty()) return;
        out << oneLine(line) << '\n';
    }
}

}  // namespace

int convert(const Call& call) {
    std::wstring folder = call.operands[0];
    call.terminal.about(folder);
    if (!filesystem::isFolder(folder)) {
        call.terminal.error(L"there is no such folder");
        return kFailed;
    }
    call.terminal.about({});
    call.terminal.catchInterrupts();
    const std::optional<std::wstring> single = call.arguments.value(L"--single");
    ConversionOutcome outcome;
    outcome.tell = [&](const LeftOut& one) {
        call.terminal.about(one.name);
        call.terminal.error(one.reason);
        call.terminal.about({});
    };
    std::wstring summary;
    Progress* progress = nullptr;
    const bool done = gblnConvertFolder(folder, summary, single.value_or(L""),
                                        single ? kSingleFile : std::int16_t{0},
                                        header(call.arguments), nullptr, progress, &outcome);
    if (outcome.cancelled) call.terminal.error(L"File conversion cancelled.");
    showSummary(summary, call.out);
    if (!done && call.terminal.errors() == 0) {
        call.terminal.about(call.operands[0]);
        call.terminal.error(L"there is no .gas file in this folder");
    }
    return done && call.terminal.errors() == 0 ? kFine : kFailed;
}

}  // namespace kestrel::cli
