// The loader: what it makes of any bytes is sound, does not depend on the way
// that the text takes, and stands in the records' own texts.
#include <vector>

#include "fuzz/fuzz.h"
#include "gas/modGas.h"
#include "services/keys.h"

namespace kestrel::fuzz {
namespace {

constexpr wchar_t kShift = 0x4E00;

// The rows that the loader gives to a window.
class Rows final : public TemplateList {
  public:
    void add(std::wstring_view key, std::wstring_view text) override {
        require(key == makeKey(texts.size()));
        texts.emplace_back(text);
    }
    void setText(std::wstring_view key, std::wstring_view text) override {
        texts.at(static_cast<std::size_t>(gintKeyIndex(key))) = text;
    }
    void clear() override { texts.clear(); }

    std::vector<std::wstring> texts;
};

struct Loaded {
    bool done = false;
    std::vector<GasTemplate> templates;

    bool operator==(const Loaded&) const = default;
};

Loaded checked(bool done, std::vector<GasTemplate> templates, const Rows& rows) {
    if (!done) {
        require(templates == std::vector<GasTemplate>(1) && rows.texts.empty());
    } else {
        require(!templates.empty() && rows.texts.size() == templates.size());
        for (std::size_t i = 0; i < templates.size(); ++i) {
            require(rows.texts[i] == templates[i].Name);
        }
    }
    return {done, std::move(templates)};
}

Loaded fromText(const std::wstring& text) {
    Rows rows;
    std::vector<GasTemplate> templates;
    const bool done = loadGasText(text, templates, &rows);
    return checked(done, std::move(templates), rows);
}

Loaded fromFile(std::string_view bytes) {
    Rows rows;
    std::vector<GasTemplate> templates;
    std::wstring path = workFolder().put(L"a.gas", bytes);
    const std::wstring before = path;
    const bool done = gblnLoadGas(path, templates, &rows);
    require(path == before || (path.empty() && bytes.find(']') == bytes.npos));
    return checked(done, std::move(templates), rows);
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
        require(nodes[i].parent < i && branchPath(record, nodes[i]).starts_with(record.Name));
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

// The prefix of the file's kind; empty for a file of no known kind.
std::string_view prefixOf(std::string_view bytes) {
    bytes.remove_prefix(std::min(bytes.find('['), bytes.size()));
    for (const BlockKind& kind : kBlockKinds) {
        if (bytes.starts_with(kind.prefix)) return kind.prefix;
    }
    return {};
}

std::size_t countOf(std::wstring_view text, std::wstring_view what) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += what.size()) ++count;
    return count;
}

// The records of a party that can be loaded as a file like any begin here: with two
// sections the first record is made of both of them, and the others must be closed.
// None can where something stands before the first section, or a section is empty.
std::optional<std::size_t> firstOfParty(const std::vector<GasTemplate>& templates,
                                        std::size_t sections) {
    const std::size_t first = sections >= 2 ? 1 : 0;
    if (templates.size() != sections + first) return {};
    const auto isClosed = [](const GasTemplate& t) { return t.Text.wide().ends_with(L"}\r\n"); };
    if (first == 1 && !std::all_of(templates.begin() + 1, templates.end(), isClosed)) return {};
    return first;
}

// A record without any property has empty ones in their place.
std::vector<GasProperty> stored(std::vector<GasProperty> properties) {
    std::erase(properties, GasProperty{});
    return properties;
}

// Loading the records' own texts, one behind the other, gives every property again.
void checkReload(std::string_view bytes, const std::vector<GasTemplate>& templates) {
    const std::string_view prefix = prefixOf(bytes);
    if (prefix.empty()) return;
    std::size_t first = 0;
    if (prefix == "[party]") {
        const auto start = firstOfParty(templates, countOf(widen(bytes), widen(prefix)));
        if (!start) return;
        first = *start;
    }
    std::wstring text;
    for (std::size_t i = first; i < templates.size(); ++i) text += templates[i].Text.wide();
    const std::vector<GasTemplate> again = fromText(text).templates;
    require(again.size() == templates.size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        require(again[i].Name == templates[i].Name && again[i].Kind == templates[i].Kind);
        require(stored(again[i].Properties) == stored(templates[i].Properties));
    }
}

// Each character beyond ASCII as another one.
std::wstring shifted(std::wstring text) {
    for (wchar_t& c : text) {
        if (c >= 0x80 && c < 0x10000) c = static_cast<wchar_t>(c + kShift);
    }
    return text;
}

void shift(GasTemplate& record) {
    record.Name = shifted(record.Name);
    record.Kind = shifted(record.Kind);
    record.Text = shifted(record.Text);
    record.Comments = shifted(record.Comments);
    for (GasProperty& property : record.Properties) {
        property.Name = shifted(property.Name);
        property.Value = shifted(property.Value);
        property.Group = shifted(property.Group.text());
    }
}

void checkAsUtf8(const std::wstring& text, Loaded loaded) {
    const std::wstring other = shifted(text);
    if (other == text) return;
    if (loaded.done) std::ranges::for_each(loaded.templates, shift);
    require(fromText(other) == loaded);
}

void checkQueries(const std::vector<GasTemplate>& templates) {
    for (const GasTemplate& record : templates) {
        const GasTemplate* found = findTemplate(templates, {}, record.Name);
        require(found == nullptr || found->Name == record.Name);
        if (&record - templates.data() == 8) break;
        require(!gstrGetTemplateHistory(templates, record.Name).empty());
    }
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    const std::wstring text = fileText(input.rest());
    const Loaded loaded = fromText(text);
    require((host.told == 0) == loaded.done);
    require(fromFile(input.rest()) == loaded);
    checkAsUtf8(text, loaded);
    if (!loaded.done) return;
    for (const GasTemplate& record : loaded.templates) checkRecord(record);
    checkTexts(text, loaded.templates);
    checkReload(input.rest(), loaded.templates);
    checkQueries(loaded.templates);
}

}  // namespace kestrel::fuzz
