// A `.gas` file: what the loader makes of any bytes is sound and does not depend on the
// way that the text takes, and so is what is told and written of it.
#include <numeric>
#include <span>

#include "base/text.h"
#include "fuzz/fuzz.h"
#include "gas/load.h"
#include "gas/losses.h"
#include "gas/query.h"
#include "gas/template.h"
#include "services/pagetext.h"
#include "system/letters.h"
#include "text/render.h"
#include "view/browse.h"
#include "view/chain.h"
#include "view/tree.h"

namespace kestrel::fuzz {
namespace {

// Enough of them for every shape, and few enough for many inputs a second.
constexpr std::size_t kMostRecords = 16;
constexpr std::size_t kMostNodes = 4;
// Groups in groups without end make texts that only take time.
constexpr std::size_t kMostGroups = 10'000'000;

using Templates = std::vector<GasTemplate>;

Templates fromText(std::wstring_view text) {
    // The text may begin with the character of the mark, too.
    const std::string bytes = std::string(kUtf8Mark) + toUtf8(text);
    Templates templates = readRecords(bytes, CodePage::utf8()).templates;
    if (templates.empty()) templates.resize(1);
    return templates;
}

Templates fromFile(std::string_view bytes) {
    Templates templates;
    const std::wstring path = workFolder().put(L"a.gas", bytes);
    std::wstring after = path;
    gblnLoadGas(after, templates, nullptr);
    require(after == path || (after.empty() && bytes.find(']') == bytes.npos));
    return templates;
}

std::wstring rendered(const Templates& templates) {
    return gstrMakeFileText(L"a.gas", templates, nullptr, 0, nullptr);
}

// The texts of the records, one behind the other.
std::wstring sources(const Templates& templates) {
    std::wstring text;
    for (const GasTemplate& record : templates) text += record.Text.wide();
    return text;
}

// Each character beyond ASCII as another one, which only UTF-8 has.
std::wstring shifted(std::wstring text) {
    for (wchar_t& c : text) {
        if (c >= 0x80 && c < 0x10000) c = static_cast<wchar_t>(c + 0x4E00);
    }
    return text;
}

std::wstring withoutBlanks(std::wstring text) {
    std::erase_if(text, [](wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); });
    return text;
}

std::size_t countOf(std::wstring_view text, std::wstring_view what) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += what.size()) ++count;
    return count;
}

// Behind the first, the records' texts stand in the file one after the other, but for a
// brace that closes them. Loaded as a file they give every property again.
void checkTexts(const std::wstring& text, const Templates& templates) {
    const std::wstring source = withoutBlanks(text);
    std::size_t at = 0;
    for (const GasTemplate& record : std::span(templates).subspan(1)) {
        std::wstring body = withoutBlanks(record.Text.wide());
        if (body.ends_with(L'}')) body.pop_back();
        at = source.find(body, at);
        require(at != source.npos);
        at += body.size();
    }
    const std::wstring header = text.substr(std::min(text.find(L'['), text.size()));
    const auto isKnown = [&](const BlockKind& kind) {
        return header.starts_with(widen(kind.prefix));
    };
    if (std::ranges::none_of(kBlockKinds, isKnown)) return;
    const Templates again = fromText(sources(templates));
    require(again.size() == templates.size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        require(again[i].Name == templates[i].Name && again[i].Kind == templates[i].Kind);
        require(std::ranges::equal(ownProperties(again[i]), ownProperties(templates[i])));
    }
}

// Each loss stands in the line that is told; CR LF, LF and CR each end one.
void checkLosses(std::string_view bytes) {
    const std::vector<Loss> losses = findLosses(bytes);
    const std::wstring text = fileText(bytes);
    std::vector<std::wstring> lines(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        lines.back() += text[i];
        if (text[i] == L'\n' || (text[i] == L'\r' && text[i + 1] != L'\n')) lines.emplace_back();
    }
    std::size_t last = 1;
    for (const Loss& loss : losses) {
        require(!loss.why.empty() && loss.line >= last && loss.line <= lines.size());
        last = loss.line;
        const std::wstring start = loss.text.substr(0, loss.text.find_first_of(L"\r\n"));
        require(!loss.text.empty() &&
                withoutBlanks(lines[last - 1]).find(withoutBlanks(start)) != text.npos);
    }
}

// The rows of a branch are those that the property list shows of it.
void checkBranch(const GasTemplate& record, const std::wstring& branch, const RowOrder& all) {
    std::wstring filter = branch;
    const std::wstring text = gstrMakeText(record, nullptr, filter, true, nullptr);
    const RowOrder rows = propertyRows(record, branchFilter(branch, true), all);
    std::size_t ends = 6 + countOf(record.Name.wide(), kLineEnd);
    for (const std::uint32_t row : rows) {
        const GasProperty property = record.Properties[row];
        const std::wstring line = propertyText(record, row, PropertyColumn::property) + L'\t' +
                                  property.Value.wide() + L'\t' + groupPath(record, property);
        ends += 1 + countOf(line, kLineEnd);
        require(text.find(line + std::wstring(kLineEnd)) != text.npos);
    }
    require(filter == branch && countOf(text, kLineEnd) == ends);
    screenNameText(record, rows);
}

void checkRecord(const Templates& templates, const GasTemplate& record) {
    const std::wstring text = record.Text.wide();
    require(!record.Name.empty() && !record.Kind.empty());
    require(text.ends_with(L"}") || text.ends_with(L"}\r\n"));
    const auto own = ownProperties(record);
    require(std::ranges::is_sorted(own, {}, &GasProperty::Level));
    RowOrder all(own.size());
    std::iota(all.begin(), all.end(), 0U);
    const std::vector<BlockNode> nodes = blockTree(record);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const std::wstring branch = branchPath(record, nodes[i]);
        require((i == 0 || nodes[i].parent < i) && branch.starts_with(record.Name.wide()));
        if (i < kMostNodes) checkBranch(record, branch, all);
    }
    const std::wstring name = record.Name.wide();
    const GasTemplate* found = findTemplate(templates, {}, name);
    require(found == nullptr || found->Name == record.Name);
    require(!gstrGetTemplateHistory(templates, name).empty());
}

// A file's text is that of its templates; a cancel leaves nothing of it.
void checkRendered(const Templates& templates, test::RecordingHost& host, std::size_t choice) {
    std::wstring texts;
    for (const GasTemplate& record : templates) {
        std::wstring filter;
        texts += gstrMakeText(record, nullptr, filter, false, nullptr);
    }
    host.progressSteps = 0;
    require(rendered(templates).ends_with(texts));
    host.cancelAt = choice % (host.progressSteps + 1);
    const bool cancelled = host.cancelAt < host.progressSteps;
    host.progressSteps = 0;
    require(rendered(templates).empty() == cancelled && gProgram().progress == nullptr);
}

void checkLoaded(const std::wstring& text, const Templates& templates, test::RecordingHost& host) {
    // The first record of a party with several sections is made of two of them.
    const bool joins = templates.front().Kind == "Party" &&
                       (templates.size() > 1 || countOf(text, L"[party]") > 1);
    if (!joins) checkTexts(text, templates);
    for (std::size_t i = 0; i < std::min(templates.size(), kMostRecords); ++i) {
        checkRecord(templates, templates[i]);
    }
    checkRendered(templates, host, text.size());
}

}  // namespace

void run(Input input, test::RecordingHost& host) {
    checkLosses(input.rest());
    require(host.log.empty());
    const std::wstring text = fileText(input.rest());
    const Templates templates = fromText(text);
    std::size_t groups = 0;
    for (const GasTemplate& record : templates) {
        for (const GasProperty property : record.Properties) {
            if (const GasGroup* group = property.Group.group()) groups += group->size;
        }
    }
    if (groups > kMostGroups) return;
    require(fromFile(input.rest()) == templates);
    const Templates others = fromText(shifted(text));
    require(rendered(others) == shifted(rendered(templates)));
    require(sources(others) == shifted(sources(templates)));
    const bool done = !templates.front().Name.empty();
    if (done) checkLoaded(text, templates, host);
    require(host.logged("ask").empty() == done);
}

}  // namespace kestrel::fuzz
