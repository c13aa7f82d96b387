#include "cli/commands.h"

#include <ostream>

#include "base/bytes.h"
#include "cli/json.h"
#include "cli/run.h"
#include "gas/load.h"
#include "gas/losses.h"
#include "gas/query.h"
#include "services/files.h"
#include "system/filesystem.h"
#include "text/render.h"

namespace kestrel::cli {
namespace {

// The templates of the file that the first operand names.
std::optional<std::vector<GasTemplate>> loadFirst(const Call& call) {
    return load(call.terminal, call.operands[0]);
}

std::string shortened(std::wstring_view text) {
    constexpr std::size_t kLongest = 120;
    return text.size() <= kLongest ? oneLine(text) : oneLine(text.substr(0, kLongest)) + "...";
}

}  // namespace

bool isThere(Terminal& terminal, const std::wstring& path) {
    terminal.about(path);
    if (fileExists(path)) return true;
    terminal.error(filesystem::isFolder(path) ? L"this is a folder; name a .gas file in it"
                                              : L"there is no such file");
    return false;
}

std::optional<std::vector<GasTemplate>> load(Terminal& terminal, const std::wstring& path) {
    if (!isThere(terminal, path)) return std::nullopt;
    std::vector<GasTemplate> templates;
    std::wstring source = path;
    if (!gblnLoadGas(source, templates, nullptr)) return std::nullopt;
    return templates;
}

const GasTemplate* find(Terminal& terminal, const std::vector<GasTemplate>& templates,
                        std::wstring_view name) {
    const GasTemplate* record = findSource(templates, name);
    if (record == nullptr) record = findTemplate(templates, {}, name);
    if (record != nullptr) return record;
    terminal.error(L"there is no template \"" + std::wstring(name) +
                   L"\"; \"kestrel-cli list\" shows those of a file");
    return nullptr;
}

int list(const Call& call) {
    const auto templates = loadFirst(call);
    if (!templates) return kFailed;
    for (const GasTemplate& record : *templates) {
        call.out << oneLine(record.Name.wide()) << '\t' << oneLine(record.Kind.wide()) << '\n';
    }
    return kFine;
}

int show(const Call& call) {
    const auto templates = loadFirst(call);
    if (!templates) return kFailed;
    const GasTemplate* record = find(call.terminal, *templates, call.operands[1]);
    if (record == nullptr) return kFailed;
    if (call.arguments.has(L"--listed")) {
        call.out << toUtf8(record->Text.wide());
    } else {
        makeText(*record, [&](const Text& part) { call.out << toUtf8(part.wide()); });
    }
    return call.terminal.errors() == 0 ? kFine : kFailed;
}

int check(const Call& call) {
    int code = kFine;
    for (const std::wstring& file : call.operands) {
        if (!load(call.terminal, file)) {
            code = kFailed;
            continue;
        }
        for (const Loss& loss : findLosses(readFileBytes(file))) {
            call.out << oneLine(file) << ':' << loss.line << ": "
                     << (loss.ignored ? "ignored (" : "cut (") << oneLine(loss.why)
                     << "): " << shortened(loss.text) << '\n';
            code = kFailed;
        }
    }
    return call.terminal.errors() == 0 ? code : kFailed;
}

int dump(const Call& call) {
    const auto templates = loadFirst(call);
    if (!templates) return kFailed;
    for (const GasTemplate& record : *templates) {
        writeJson(call.out, record);
        if (!(call.out << '\n')) break;
    }
    return kFine;
}

}  // namespace kestrel::cli
