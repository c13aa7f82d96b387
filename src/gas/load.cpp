#include "gas/load.h"

#include <memory>

#include "base/bytes.h"
#include "base/keys.h"
#include "base/text.h"
#include "gas/blocks.h"
#include "gas/statements.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "system/largepages.h"

namespace kestrel {
namespace {

using loading::Block;
using loading::Cut;

// Reads the blocks of one file, one record each.
class BlockLoader {
  public:
    // A `raw` text is still to be normalised.
    BlockLoader(const Cut& cut, std::shared_ptr<GasFile> file, bool raw, TemplateList* list)
        : cut_(cut),
          file_(std::move(file)),
          raw_(raw),
          list_(list),
          docNames_(cut.prefix().starts_with("[t:")) {}

    std::vector<GasTemplate> load();

  private:
    GasTemplate load(const Block& block, std::size_t index);
    Text sourceText(const Block& block);

    const Cut& cut_;
    std::shared_ptr<GasFile> file_;
    bool raw_;
    TemplateList* list_;
    bool docNames_;
    // Never reset between the blocks of a file.
    loading::Braces braces_;
};

std::vector<GasTemplate> BlockLoader::load() {
    std::vector<GasTemplate> templates;
    templates.reserve(cut_.size());
    wishForLargePages(templates.data(), cut_.size() * sizeof(GasTemplate));
    for (std::size_t i = 0; i < cut_.size(); ++i) {
        Block block = cut_[i];
        if (i == 0 && cut_.isJoined()) block = {{}, file_->keep(cut_.joined())};
        if (block.body.empty()) continue;
        templates.push_back(load(block, templates.size()));
        if (!block.whole.empty()) templates.back().Place = cut_.placeOf(i);
    }
    return templates;
}

GasTemplate BlockLoader::load(const Block& block, std::size_t index) {
    GasTemplate record;
    record.Kind = cut_.kind();
    record.Text = sourceText(block);
    std::string name;
    record.Kind.appendTo(name);
    name += std::to_string(index);
    if (list_ != nullptr) list_->add(makeKey(index), file_->page().wide(name));
    const std::uint32_t first = file_->entries();
    const std::uint32_t statements =
        loading::BlockReader(*file_, record, braces_, docNames_).read(block.body, raw_);
    const std::uint32_t count = file_->entries() - first;
    record.Properties =
        count == 0 ? GasProperties::none(file_, statements) : GasProperties(file_, first, count);
    if (record.Name.empty()) {
        record.Name = Text(file_->keep(name), file_->page());
    } else if (list_ != nullptr) {
        list_->setText(makeKey(index), record.Name.wide());
    }
    return record;
}

// True when a closing brace and a line end are the last of `block`.
bool isClosed(std::string_view block, bool raw) {
    if (!block.ends_with(kCrLf)) return false;
    do block.remove_suffix(kCrLf.size());
    while (raw && block.ends_with(kCrLf));
    return block.ends_with('}');
}

// The prefix, the block and, unless a closing brace ends it, one.
Text BlockLoader::sourceText(const Block& block) {
    std::string_view whole = block.whole;
    if (whole.empty()) whole = file_->keep(std::string(cut_.prefix()).append(block.body));
    return {whole, file_->page(),
            (raw_ ? unsigned{Text::kRaw} : 0U) |
                (isClosed(block.body, raw_) ? 0U : unsigned{Text::kOpen})};
}

}  // namespace

GasRecords readRecords(std::string bytes, const CodePage& page, TemplateList* list) {
    const CodePage& own = pageOf(bytes, page);
    if (own.isUtf8() && bytes.starts_with(kUtf8Mark)) bytes.erase(0, kUtf8Mark.size());
    auto file = std::make_shared<GasFile>(loading::prepared(std::move(bytes)), own);
    Cut cut(loading::withoutEmptyStart(file->bytes()), own);
    const bool raw = !cut.needsNormalText();
    if (!raw) {
        file =
            std::make_shared<GasFile>(normalised(loading::withoutEmptyStart(file->bytes())), own);
        cut = Cut(file->bytes(), own);
    }
    if (!cut.found()) return {};
    return {BlockLoader(cut, file, raw, list).load(), true};
}

bool gblnLoadGas(std::wstring& path, std::vector<GasTemplate>& templates, TemplateList* list) {
    bool loaded = false;
    const bool ended = guarded(L"gblnLoadGas", [&] {
        // Not by readFileBytes, which reports what this does.
        std::string bytes = filesystem::read(path).value_or(std::string());
        GasRecords records = readRecords(std::move(bytes), *gProgram().sourcePage, list);
        if (!records.hasHeader) path.clear();
        loaded = !records.templates.empty();
        if (loaded) {
            templates = std::move(records.templates);
        } else {
            if (records.hasHeader) templates.clear();
            templates.resize(1);
            if (list != nullptr) list->clear();
            tellUser(kNoGasData, Icon::exclamation);
        }
        return true;
    });
    // After a run-time error nothing half-loaded stays.
    if (!ended) {
        templates.assign(1, {});
        if (list != nullptr) list->clear();
    }
    return loaded;
}

}  // namespace kestrel
