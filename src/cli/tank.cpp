#include <ostream>

#include "base/error.h"
#include "base/text.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "cli/run.h"
#include "services/progress.h"
#include "system/filesystem.h"
#include "tank/extract.h"
#include "tank/wrappers.h"

namespace kestrel::cli {
namespace {

using Numbers = TankContents::Numbers;

// Runs `look` on what the archive of the call holds. It fails where that could not all be listed.
template <class Look>
int withContents(const Call& call, Look look) {
    call.terminal.catchInterrupts();
    call.terminal.about(call.operands[0]);
    try {
        const ProgressScope scope(nullptr, nullptr, L"Listing " + call.operands[0]);
        TankContents contents(call.operands[0], scope.dialog());
        const int code = look(contents);
        if (!contents.isWhole()) call.terminal.error(L"the archive was not read to its end");
        return call.terminal.errors() == 0 ? code : kFailed;
    } catch (const RunTimeError& error) {
        call.terminal.error(error.description());
        return kFailed;
    }
}

void writeLine(std::ostream& out, const TankContents& contents, std::uint32_t number) {
    const TankItem& item = contents.items()[number];
    out << oneLine(contents.pathOf(number));
    if (item.isFolder) {
        out << "\\\n";
        return;
    }
    out << '\t' << item.size << '\t' << item.packed << '\t' << oneLine(gstrFormatName(item.format))
        << '\t' << item.crc << '\n';
}

void writeObject(std::ostream& out, const TankContents& contents, std::uint32_t number) {
    const TankItem& item = contents.items()[number];
    out << R"({"Path":)" << jsonText(contents.pathOf(number)) << R"(,"IsFolder":)"
        << (item.isFolder ? "true" : "false") << R"(,"Size":)" << item.size << R"(,"Packed":)"
        << item.packed << R"(,"Format":)" << jsonText(gstrFormatName(item.format)) << R"(,"CRC":)"
        << item.crc << "}\n";
}

void write(const Call& call, const TankContents& contents, std::uint32_t number) {
    (call.arguments.has(L"--json") ? writeObject : writeLine)(call.out, contents, number);
}

Existing existingOf(const Arguments& arguments) {
    const std::wstring value = arguments.value(L"--existing").value_or(L"stop");
    if (value == L"skip") return Existing::skip;
    if (value == L"replace") return Existing::replace;
    if (value == L"stop") return Existing::stop;
    throw WrongUsage(L"\"--existing\" takes skip, replace or stop");
}

// What the operands behind the archive name; all without one. Those that name nothing are told.
Numbers numbersOf(const Call& call, const TankContents& contents) {
    if (call.operands.size() == 1) return {0};
    Numbers numbers;
    for (std::size_t i = 1; i < call.operands.size(); ++i) {
        const Numbers found = contents.at(call.operands[i]);
        if (found.empty()) {
            call.terminal.error(L"there is no \"" + call.operands[i] + L"\" in the archive");
        }
        numbers.insert(numbers.end(), found.begin(), found.end());
    }
    return numbers;
}

}  // namespace

int tankList(const Call& call) {
    return withContents(call, [&](const TankContents& contents) {
        for (std::uint32_t i = 1; i < contents.items().size() && call.out; ++i) {
            write(call, contents, i);
        }
        return kFine;
    });
}

int tankFind(const Call& call) {
    return withContents(call, [&](const TankContents& contents) {
        Numbers all(contents.items().size());
        for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
        const Numbers hits = contents.inFolder(0, call.operands[1], all);
        for (const std::uint32_t number : hits) write(call, contents, number);
        return hits.empty() ? kFailed : kFine;
    });
}

int tankTest(const Call& call) {
    return withContents(call, [&](TankContents& contents) {
        ProgressScope scope(nullptr, nullptr, L"Testing " + call.operands[0]);
        const std::size_t count = contents.items().size();
        for (std::uint32_t i = 1; i < count && scope.goesOn(); ++i) {
            scope.show(percentage(i, count), {});
            if (contents.items()[i].isFolder) continue;
            try {
                contents.read(i);
            } catch (const RunTimeError& error) {
                call.terminal.error(contents.shownPath(i) + L": " + error.description());
            }
        }
        if (scope.didCancel()) {
            call.terminal.error(L"the test was stopped");
            return kFailed;
        }
        call.out << oneLine(textOf(contents.totals(0))) << '\n';
        return kFine;
    });
}

int tankExtract(const Call& call) {
    const Existing existing = existingOf(call.arguments);
    return withContents(call, [&](TankContents& contents) {
        const std::wstring folder = call.arguments.value(L"--to").value_or(L".");
        const Numbers numbers = numbersOf(call, contents);
        if (call.terminal.errors() > 0 || !contents.isWhole()) return kFailed;
        filesystem::makeFolder(folder);
        const ExtractOutcome outcome = extract(
            contents, {folder, numbers, !call.arguments.has(L"--flat")},
            [&](std::size_t count) {
                if (existing == Existing::stop) {
                    call.terminal.error(L"there already: " + std::to_wstring(count) +
                                        L" of the files; say --existing skip or "
                                        L"--existing replace");
                }
                return existing;
            },
            nullptr);
        const std::wstring summary = summaryOf(outcome, folder);
        for (const std::wstring_view line : split(summary, kLineEnd)) {
            call.out << oneLine(line) << '\n';
        }
        return outcome.stopped || outcome.failed > 0 ? kFailed : kFine;
    });
}

}  // namespace kestrel::cli
