#include "gas/load.h"

#include <algorithm>
#include <memory>

#include "gas/statements.h"
#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/keys.h"
#include "services/text.h"

namespace kestrel {
namespace {

using loading::FieldMaker;

constexpr std::string_view kCrLf = "\r\n";

// The text that is cut into blocks. Its line ends are CR LF, the last line has
// one, and the first line is not empty.
struct Source {
    std::shared_ptr<const std::string> bytes;
    std::string_view text;    // of `bytes`
    SourceText::Form form{};  // raw: it still has tabs, and lines without any character
};

std::string withCrLf(std::string_view text) {
    std::string out;
    out.reserve(text.size() + static_cast<std::size_t>(std::ranges::count(text, '\n')));
    for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
        out.append(text.substr(0, end)).append(kCrLf);
    }
    return out.append(text);
}

// A text without any CR LF has its lines end in LF alone; in any other one a
// lone LF is part of its line.
Source prepare(std::string bytes, bool utf8) {
    if (bytes.find(kCrLf) == bytes.npos) bytes = withCrLf(bytes);
    if (!bytes.ends_with(kCrLf)) bytes += kCrLf;
    auto owner = std::make_shared<const std::string>(std::move(bytes));
    std::string_view text = *owner;
    while (text.starts_with(kCrLf)) text.remove_prefix(kCrLf.size());
    return {std::move(owner), text, {utf8, true}};
}

void normalise(Source& source) {
    source.bytes = std::make_shared<const std::string>(normalised(source.text));
    source.text = *source.bytes;
    source.form.raw = false;
}

// What a file's first header decides for the whole file.
struct Cut {
    std::string_view prefix;  // of every block's header
    std::wstring kind;
    std::vector<std::string_view> blocks;
    bool found = false;      // there is a header
    std::size_t headed = 0;  // the first block that the prefix stands before
};

std::vector<std::string_view> splitOn(std::string_view text, std::string_view prefix) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(prefix, start)) != text.npos; start = at + prefix.size()) {
        pieces.push_back(text.substr(start, at - start));
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

// As splitOn, for a header that ends in its only "]": looking at the text from
// one "]" to the next keeps a header of any length linear.
std::vector<std::string_view> splitOnHeader(std::string_view text, std::string_view header) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t at = text.find(']'), gap = 0; at != text.npos; at = text.find(']', gap)) {
        const bool roomy = at + 1 - gap >= header.size();
        gap = at + 1;
        if (!roomy || !text.substr(0, gap).ends_with(header)) continue;
        pieces.push_back(text.substr(start, gap - header.size() - start));
        start = gap;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

bool cutOnKnownKind(std::string_view text, Cut& cut) {
    const std::size_t bracket = text.find('[');
    const std::string_view first = bracket == text.npos ? text : text.substr(bracket);
    for (const BlockKind& row : kBlockKinds) {
        if (!first.starts_with(row.prefix)) continue;
        cut = {row.prefix, std::wstring(row.name), splitOn(text, row.prefix), true, 1};
        return true;
    }
    return false;
}

// The first header itself names the kind. What precedes it is dropped.
void cutOnUnknownKind(std::string_view text, const FieldMaker& fields, Cut& cut) {
    const std::size_t end = text.find(']');
    if (end == text.npos) return;
    std::string_view header = text.substr(0, end + 1);
    std::string_view name = header.substr(0, end);
    if (const std::size_t bracket = header.find('['); bracket != header.npos) {
        header.remove_prefix(bracket);
        name.remove_prefix(bracket + 1);
    }
    cut.prefix = header;
    cut.kind = name.empty() ? std::wstring(kBlockKinds.back().name) : fields.wide(name);
    cut.blocks = splitOnHeader(text.substr(end + 1), header);
    cut.found = true;
}

Cut cutBlocks(std::string_view text, const FieldMaker& fields) {
    Cut cut;
    if (!cutOnKnownKind(text, cut)) cutOnUnknownKind(text, fields, cut);
    return cut;
}

bool isJoined(const Cut& cut) {
    return cut.kind == L"Party" && cut.blocks.size() >= 3;
}

// True when the raw text does not cut as the normalised one would: a header may
// be written in several ways that become one, and the line ends where parties
// are joined must stay.
bool needsNormalText(const Cut& cut) {
    const auto has = [&](std::string_view some) {
        return cut.prefix.find(some) != cut.prefix.npos;
    };
    return isJoined(cut) || has("\t") || has("    ") || has(kCrLf);
}

// The two first sections of a party are loaded once more, joined, as the first
// block. `joined` keeps the text of that block.
void joinParties(Cut& cut, std::string& joined) {
    if (!isJoined(cut)) return;
    joined = cut.blocks[1];
    joined.append(cut.prefix).append(kCrLf).append(cut.blocks[2]);
    cut.blocks[0] = joined;
}

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
    cutStatements(cut_.blocks[block], source_.form.raw, statements_);
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
    const std::string_view text = cut_.blocks[block];
    const bool closed = isClosed(text, source_.form.raw);
    if (closed && block >= cut_.headed) {
        const char* start = text.data() - cut_.prefix.size();
        return {source_.bytes, {start, text.data() + text.size()}, source_.form};
    }
    auto own = std::make_shared<std::string>(cut_.prefix);
    own->append(text);
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
        if (cut.blocks[block].empty()) continue;
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
bool loadBytes(std::string bytes, bool utf8, std::vector<GasTemplate>& templates,
               TemplateList* list, bool& hasHeader) {
    Source source = prepare(std::move(bytes), utf8);
    FieldMaker fields(utf8);
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
        const bool loaded = loadBytes(readFileBytes(path), false, templates, list, hasHeader);
        if (!hasHeader) path.clear();
        return loaded;
    });
}

bool loadGasText(std::wstring_view text, std::vector<GasTemplate>& templates, TemplateList* list) {
    return guardedLoad(templates, list, [&] {
        bool hasHeader = true;
        const bool utf8 = !isNarrow(text);
        return loadBytes(utf8 ? toUtf8(text) : narrow(text), utf8, templates, list, hasHeader);
    });
}

}  // namespace kestrel
