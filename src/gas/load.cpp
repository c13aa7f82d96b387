#include "gas/load.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "gas/statements.h"
#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/keys.h"

namespace kestrel {
namespace {

using loading::Widener;

constexpr std::string_view kCrLf = "\r\n";

// The text of a file after normalisation. The memory is not cleared first: all
// of it is written.
class Normalised {
  public:
    explicit Normalised(std::string_view text);
    std::string_view view() const noexcept { return {text_.get(), size_}; }

  private:
    void appendLine(std::string_view line, bool tabs);

    std::unique_ptr<char[]> text_;
    std::size_t size_ = 0;
};

std::size_t countOf(std::string_view text, char c) {
    std::size_t count = 0;
    for (std::size_t at = text.find(c); at != text.npos; at = text.find(c, at + 1)) ++count;
    return count;
}

// The end of the line that begins at `start`: the next line end, or the end of
// the text. A text without any CR LF has its lines end in LF alone; in any other
// one a lone LF is part of its line.
std::size_t findLineEnd(std::string_view text, std::size_t start, bool bare) {
    for (std::size_t at = text.find('\n', start); at != text.npos; at = text.find('\n', at + 1)) {
        if (bare) return at;
        if (at > start && text[at - 1] == '\r') return at - 1;
    }
    return text.size();
}

// Line ends become CR LF, tabs four spaces; lines without any character are left
// out; the last line gets a line end.
Normalised::Normalised(std::string_view text) {
    const bool bare = text.find(kCrLf) == text.npos;
    const std::size_t tabs = countOf(text, '\t');
    const std::size_t lineFeeds = bare ? countOf(text, '\n') : 0;
    text_ = std::make_unique_for_overwrite<char[]>(text.size() + 3 * tabs + lineFeeds + 2);
    const std::size_t endLength = bare ? 1 : kCrLf.size();
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = findLineEnd(text, start, bare);
        if (end > start) appendLine(text.substr(start, end - start), tabs > 0);
        start = end + endLength;
    }
}

void Normalised::appendLine(std::string_view line, bool tabs) {
    char* out = text_.get() + size_;
    while (tabs) {
        const std::size_t tab = line.find('\t');
        if (tab == line.npos) break;
        out = std::copy_n(line.data(), tab, out);
        out = std::fill_n(out, 4, ' ');
        line.remove_prefix(tab + 1);
    }
    std::memcpy(out, line.data(), line.size());
    out += line.size();
    *out++ = '\r';
    *out++ = '\n';
    size_ = static_cast<std::size_t>(out - text_.get());
}

// What a file's first header decides for the whole file.
struct Cut {
    std::string_view prefix;  // of every block's header
    std::wstring kind;
    std::vector<std::string_view> blocks;
    bool found = false;  // there is a header
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
        cut = {row.prefix, std::wstring(row.name), splitOn(text, row.prefix), true};
        return true;
    }
    return false;
}

// The first header itself names the kind. What precedes it is dropped.
void cutOnUnknownKind(std::string_view text, const Widener& widen, Cut& cut) {
    const std::size_t end = text.find(']');
    if (end == text.npos) return;
    std::string_view header = text.substr(0, end + 1);
    std::string_view name = header.substr(0, end);
    if (const std::size_t bracket = header.find('['); bracket != header.npos) {
        header.remove_prefix(bracket);
        name.remove_prefix(bracket + 1);
    }
    cut.prefix = header;
    cut.kind = name.empty() ? std::wstring(kBlockKinds.back().name) : widen(name);
    cut.blocks = splitOnHeader(text.substr(end + 1), header);
    cut.found = true;
}

// The two first sections of a party are loaded once more, joined, as the first
// block. `joined` keeps the text of that block.
void joinParties(Cut& cut, std::string& joined) {
    if (cut.kind != L"Party" || cut.blocks.size() < 3) return;
    joined = cut.blocks[1];
    joined.append(cut.prefix).append(kCrLf).append(cut.blocks[2]);
    cut.blocks[0] = joined;
}

// Reads the blocks of one file, one record each.
class BlockLoader {
  public:
    BlockLoader(const Cut& cut, const Widener& widen, TemplateList* list)
        : cut_(cut), widen_(widen), list_(list), docNames_(cut.prefix.starts_with("[t:")) {}

    void load(std::string_view block, std::size_t index, GasTemplate& record);

  private:
    std::wstring sourceText(std::string_view block) const;

    const Cut& cut_;
    const Widener& widen_;
    TemplateList* list_;
    bool docNames_;
    // Never reset between the blocks of a file.
    loading::Braces braces_;
    loading::StatementList statements_;
};

void BlockLoader::load(std::string_view block, std::size_t index, GasTemplate& record) {
    record.Name = cut_.kind + std::to_wstring(index);
    if (list_ != nullptr) list_->add(makeKey(index), record.Name);
    record.Text = sourceText(block);
    record.Kind = cut_.kind;
    cutStatements(block, statements_);
    loading::BlockReader reader(record, braces_, widen_, docNames_);
    reader.read(statements_);
    if (list_ != nullptr && reader.renamed()) list_->setText(makeKey(index), record.Name);
}

std::wstring BlockLoader::sourceText(std::string_view block) const {
    std::wstring text;
    text.reserve(cut_.prefix.size() + block.size() + 1);
    widen_.append(text, cut_.prefix);
    widen_.append(text, block);
    if (!text.ends_with(L"}\r\n")) text += L'}';
    return text;
}

bool loadBlocks(const Cut& cut, const Widener& widen, std::vector<GasTemplate>& templates,
                TemplateList* list) {
    if (!cut.found) return false;
    templates.clear();
    templates.reserve(cut.blocks.size());
    BlockLoader loader(cut, widen, list);
    for (const std::string_view block : cut.blocks) {
        if (block.empty()) continue;
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
bool loadBytes(std::string bytes, const Widener& widen, std::vector<GasTemplate>& templates,
               TemplateList* list, bool& hasHeader) {
    const Normalised normalised(bytes);
    std::string().swap(bytes);
    const std::string_view text = normalised.view();
    Cut cut;
    if (!cutOnKnownKind(text, cut)) cutOnUnknownKind(text, widen, cut);
    hasHeader = cut.found;
    std::string joined;
    joinParties(cut, joined);
    const bool loaded = loadBlocks(cut, widen, templates, list);
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
        const bool loaded =
            loadBytes(readFileBytes(path), Widener(false), templates, list, hasHeader);
        if (!hasHeader) path.clear();
        return loaded;
    });
}

bool loadGasText(std::wstring_view text, std::vector<GasTemplate>& templates, TemplateList* list) {
    return guardedLoad(templates, list, [&] {
        bool hasHeader = true;
        const bool utf8 = !isNarrow(text);
        return loadBytes(utf8 ? toUtf8(text) : narrow(text), Widener(utf8), templates, list,
                         hasHeader);
    });
}

}  // namespace kestrel
