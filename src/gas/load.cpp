#include "gas/load.h"

#include <memory>

#include "base/bytes.h"
#include "base/keys.h"
#include "base/text.h"
#include "gas/blocks.h"
#include "gas/statements.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/codepage.h"
#include "system/filesystem.h"

namespace kestrel {
namespace {

using loading::Cut;
using loading::FieldMaker;
using loading::Source;

constexpr std::string_view kCrLf = "\r\n";

// Reads the blocks of one file, one record each.
class BlockLoader {
  public:
    BlockLoader(const Cut& cut, const Source& source, FieldMaker& fields, TemplateList* list)
        : cut_(cut),
          source_(source),
          fields_(fields),
          list_(list),
          docNames_(cut.prefix.starts_with("[t:")) {}

    void load(std::size_t block, std::size_t index, GasTemplate& record);

  private:
    SourceText sourceText(std::size_t block) const;

    const Cut& cut_;
    const Source& source_;
    FieldMaker& fields_;
    TemplateList* list_;
    bool docNames_;
    // Never reset between the blocks of a file.
    loading::Braces braces_;
    loading::StatementList statements_;
};

void BlockLoader::load(std::size_t block, std::size_t index, GasTemplate& record) {
    record.Name = cut_.kind;
    appendNumber(record.Name, static_cast<long long>(index));
    if (list_ != nullptr) list_->add(makeKey(index), record.Name);
    record.Text = sourceText(block);
    record.Kind = cut_.kind;
    // A known kind's first block is what precedes the headers.
    if (!cut_.blocks[block].whole.empty()) record.Place = cut_.known ? block - 1 : block;
    cutStatements(cut_.blocks[block].body, source_.form.raw, statements_);
    loading::BlockReader reader(record, braces_, fields_, docNames_);
    reader.read(statements_);
    if (list_ != nullptr && reader.renamed()) list_->setText(makeKey(index), record.Name);
}

// True when a closing brace and a line end are the last of `block`.
bool isClosed(std::string_view block, bool raw) {
    if (!block.ends_with(kCrLf)) return false;
    do block.remove_suffix(kCrLf.size());
    while (raw && block.ends_with(kCrLf));
    return block.ends_with('}');
}

// The prefix, the block and, unless a closing brace ends it, one. Mostly that is
// a part of the file as it stands.
SourceText BlockLoader::sourceText(std::size_t block) const {
    const auto& [body, whole] = cut_.blocks[block];
    const bool closed = isClosed(body, source_.form.raw);
    if (closed && !whole.empty()) return {source_.bytes, whole, source_.form};
    auto own = std::make_shared<std::string>(cut_.prefix);
    own->append(body);
    if (!closed) *own += '}';
    const std::string_view view = *own;
    return {std::move(own), view, source_.form};
}

bool loadBlocks(const Cut& cut, const Source& source, FieldMaker& fields,
                std::vector<GasTemplate>& templates, TemplateList* list) {
    if (!cut.found) return false;
    templates.clear();
    templates.reserve(cut.blocks.size());
    BlockLoader loader(cut, source, fields, list);
    for (std::size_t block = 0; block < cut.blocks.size(); ++block) {
        if (cut.blocks[block].body.empty()) continue;
        const std::size_t index = templates.size();
        loader.load(block, index, templates.emplace_back());
    }
    return !templates.empty();
}

void reportNoData(std::vector<GasTemplate>& templates, TemplateList* list) {
    templates.resize(1);
    if (list != nullptr) list->clear();
    tellUser(L"File loading error: Either no data found or unsupported file type.",
             Icon::exclamation);
}

// True when a block was loaded. `hasHeader` is false when the text holds no
// header of any kind.
bool loadBytes(std::string bytes, const CodePage& page, std::vector<GasTemplate>& templates,
               TemplateList* list, bool& hasHeader) {
    Source source = loading::prepare(std::move(bytes), page);
    FieldMaker fields(page);
    Cut cut = cutBlocks(source.text, fields);
    if (needsNormalText(cut)) {
        normalise(source);
        cut = cutBlocks(source.text, fields);
    }
    hasHeader = cut.found;
    std::string joined;
    joinParties(cut, joined);
    const bool loaded = loadBlocks(cut, source, fields, templates, list);
    if (!loaded) reportNoData(templates, list);
    return loaded;
}

// Runs a load under the guard. After a run-time error nothing half-loaded stays.
template <class Body>
bool guardedLoad(std::vector<GasTemplate>& templates, TemplateList* list, Body&& body) {
    bool loaded = false;
    const bool ended = guarded(L"gblnLoadGas", [&] {
        loaded = body();
        return true;
    });
    if (!ended) {
        templates.assign(1, {});
        if (list != nullptr) list->clear();
    }
    return loaded;
}

}  // namespace

bool gblnLoadGas(std::wstring& path, std::vector<GasTemplate>& templates, TemplateList* list) {
    return guardedLoad(templates, list, [&] {
        bool hasHeader = true;
        // Not by readFileBytes, which reports what this does.
        std::string bytes = filesystem::read(path).value_or(std::string());
        const CodePage& page = pageOf(bytes, *gProgram().sourcePage);
        if (page.isUtf8()) bytes.erase(0, kUtf8Mark.size());
        const bool loaded = loadBytes(std::move(bytes), page, templates, list, hasHeader);
        if (!hasHeader) path.clear();
        return loaded;
    });
}

bool loadGasText(std::wstring_view text, std::vector<GasTemplate>& templates, TemplateList* list) {
    return guardedLoad(templates, list, [&] {
        bool hasHeader = true;
        return loadBytes(toUtf8(text), CodePage::utf8(), templates, list, hasHeader);
    });
}

}  // namespace kestrel
