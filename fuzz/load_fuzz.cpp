// Feeds any bytes to the loader, the tree, the queries and the renderer, and
// holds what they give against what the document model promises.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gas/modGas.h"
#include "services/bytes.h"
#include "services/program.h"
#include "text/render.h"

namespace {

using namespace kestrel;

void require(bool holds) {
    if (!holds) std::abort();
}

void checkRecord(const GasTemplate& record) {
    require(!record.Name.empty() && !record.Kind.empty() && !record.Text.empty());
    const std::wstring text = record.Text;
    require(text.ends_with(L"}") || text.ends_with(L"}\r\n"));
    int level = 0;
    for (const GasProperty& property : record.Properties) {
        require(property.Level >= level || property == GasProperty{});
        level = property.Level;
    }
    const std::vector<BlockNode> nodes = blockTree(record);
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        require(nodes[i].parent < i && nodes[i].tag.starts_with(record.Name));
    }
}

// The plain reading of what the loader does to a text before it cuts it.
std::wstring normalised(std::wstring text) {
    const auto replaceAll = [&text](std::wstring_view what, std::wstring_view with) {
        std::wstring result;
        std::size_t start = 0;
        for (std::size_t at; (at = text.find(what, start)) != text.npos; start = at + what.size()) {
            result.append(text, start, at - start).append(with);
        }
        text = result.append(text, start);
    };
    if (text.find(L"\r\n") == text.npos) replaceAll(L"\n", L"\r\n");
    replaceAll(L"\t", L"    ");
    text += L"\r\n";
    while (text.starts_with(L"\r\n")) text.erase(0, 2);
    while (text.find(L"\r\n\r\n") != text.npos) replaceAll(L"\r\n\r\n", L"\r\n");
    return text;
}

// Behind the first, the records' texts stand in the normalised text one after
// the other, but for a brace that closes them.
void checkTexts(const std::wstring& text, const std::vector<GasTemplate>& templates) {
    if (templates.front().Kind == L"Party") return;
    const std::wstring source = normalised(text);
    std::size_t at = 0;
    for (std::size_t i = 1; i < templates.size(); ++i) {
        const std::wstring whole = templates[i].Text;
        std::wstring_view body = whole;
        if (body.ends_with(L'}')) body.remove_suffix(1);
        at = source.find(body, at);
        require(at != source.npos);
        at += body.size();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ProgramScope program;
    const std::wstring text = widen({reinterpret_cast<const char*>(data), size});
    std::vector<GasTemplate> templates;
    if (!loadGasText(text, templates)) {
        require(templates == std::vector<GasTemplate>(1));
        return 0;
    }
    for (const GasTemplate& record : templates) checkRecord(record);
    checkTexts(text, templates);
    gstrGetTemplateHistory(templates, templates.front().Name);
    require(!gstrMakeFileText(L"x.gas", templates, nullptr, 0, nullptr).empty());
    return 0;
}
