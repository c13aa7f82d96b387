#include "gas/blocks.h"

#include <algorithm>

#include "gas/template.h"

namespace kestrel::loading {
namespace {

constexpr std::string_view kCrLf = "\r\n";

std::string withCrLf(std::string_view text) {
    std::string out;
    out.reserve(text.size() + static_cast<std::size_t>(std::ranges::count(text, '\n')));
    for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
        out.append(text.substr(0, end)).append(kCrLf);
    }
    return out.append(text);
}

// The text is cut at each of `places`, where the prefix stands.
std::vector<Block> blocksAt(std::string_view text, const std::vector<std::size_t>& places,
                            std::size_t prefix) {
    std::vector<Block> blocks;
    blocks.reserve(places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::size_t end = i + 1 < places.size() ? places[i + 1] : text.size();
        const std::string_view whole = text.substr(places[i], end - places[i]);
        blocks.push_back({whole.substr(prefix), whole});
    }
    return blocks;
}

std::vector<std::size_t> placesOf(std::string_view prefix, std::string_view text) {
    std::vector<std::size_t> places;
    for (std::size_t at = text.find(prefix); at != text.npos;
         at = text.find(prefix, at + prefix.size())) {
        places.push_back(at);
    }
    return places;
}

// As placesOf, for a header that ends in its only "]": looking at the text from
// one "]" to the next keeps a header of any length linear.
std::vector<std::size_t> placesOfHeader(std::string_view header, std::string_view text) {
    std::vector<std::size_t> places;
    for (std::size_t at = text.find(']'), gap = 0; at != text.npos; at = text.find(']', gap)) {
        const bool roomy = at + 1 - gap >= header.size();
        gap = at + 1;
        if (roomy && text.substr(0, gap).ends_with(header)) places.push_back(gap - header.size());
    }
    return places;
}

bool cutOnKnownKind(std::string_view text, Cut& cut) {
    const std::size_t bracket = text.find('[');
    const std::string_view first = bracket == text.npos ? text : text.substr(bracket);
    for (const BlockKind& row : kBlockKinds) {
        if (!first.starts_with(row.prefix)) continue;
        const auto places = placesOf(row.prefix, text);
        cut = {row.prefix,
               std::wstring(row.name),
               blocksAt(text, places, row.prefix.size()),
               true,
               true,
               {}};
        // What precedes the first header is a block of its own.
        cut.blocks.insert(cut.blocks.begin(), Block{text.substr(0, places.front()), {}});
        return true;
    }
    return false;
}

// The first header itself names the kind.
void cutOnUnknownKind(std::string_view text, const FieldMaker& fields, Cut& cut) {
    const std::size_t end = text.find(']');
    if (end == text.npos) return;
    std::string_view header = text.substr(0, end + 1);
    std::string_view name = header.substr(0, end);
    if (const std::size_t bracket = header.find('['); bracket != header.npos) {
        cut.dropped = header.substr(0, bracket);
        header.remove_prefix(bracket);
        name.remove_prefix(bracket + 1);
    }
    cut.prefix = header;
    cut.kind = name.empty() ? std::wstring(kBlockKinds.back().name) : fields.page().wide(name);
    const std::string_view from = text.substr(cut.dropped.size());
    cut.blocks = blocksAt(from, placesOfHeader(header, from), header.size());
    cut.found = true;
}

}  // namespace

Source prepare(std::string bytes, const CodePage& page) {
    if (bytes.find(kCrLf) == bytes.npos) bytes = withCrLf(bytes);
    if (!bytes.ends_with(kCrLf)) bytes += kCrLf;
    auto owner = std::make_shared<const std::string>(std::move(bytes));
    std::string_view text = *owner;
    while (text.starts_with(kCrLf)) text.remove_prefix(kCrLf.size());
    return {std::move(owner), text, {&page, true}};
}

void normalise(Source& source) {
    source.bytes = std::make_shared<const std::string>(normalised(source.text));
    source.text = *source.bytes;
    source.form.raw = false;
}

Cut cutBlocks(std::string_view text, const FieldMaker& fields) {
    Cut cut;
    if (!cutOnKnownKind(text, cut)) cutOnUnknownKind(text, fields, cut);
    return cut;
}

bool isJoined(const Cut& cut) {
    return cut.known && cut.kind == L"Party" && cut.blocks.size() >= 3;
}

bool needsNormalText(const Cut& cut) {
    const auto has = [&](std::string_view some) {
        return cut.prefix.find(some) != cut.prefix.npos;
    };
    // A blank at its begin may be the end of a tab.
    return isJoined(cut) || cut.prefix.starts_with(' ') || has("\t") || has("    ") || has(kCrLf);
}

void joinParties(Cut& cut, std::string& joined) {
    if (!isJoined(cut)) return;
    joined = cut.blocks[1].body;
    joined.append(cut.prefix).append(kCrLf).append(cut.blocks[2].body);
    cut.blocks[0] = {joined, {}};
}

}  // namespace kestrel::loading
