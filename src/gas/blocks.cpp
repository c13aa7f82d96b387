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
        cut = {row.prefix, std::wstring(row.name), splitOn(text, row.prefix), true, 1, {}};
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
    cut.kind = name.empty() ? std::wstring(kBlockKinds.back().name) : fields.wide(name);
    cut.blocks = splitOnHeader(text.substr(end + 1), header);
    cut.found = true;
}

}  // namespace

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

Cut cutBlocks(std::string_view text, const FieldMaker& fields) {
    Cut cut;
    if (!cutOnKnownKind(text, cut)) cutOnUnknownKind(text, fields, cut);
    return cut;
}

bool isJoined(const Cut& cut) {
    return cut.kind == L"Party" && cut.blocks.size() >= 3;
}

bool needsNormalText(const Cut& cut) {
    const auto has = [&](std::string_view some) {
        return cut.prefix.find(some) != cut.prefix.npos;
    };
    return isJoined(cut) || has("\t") || has("    ") || has(kCrLf);
}

void joinParties(Cut& cut, std::string& joined) {
    if (!isJoined(cut)) return;
    joined = cut.blocks[1];
    joined.append(cut.prefix).append(kCrLf).append(cut.blocks[2]);
    cut.blocks[0] = joined;
}

}  // namespace kestrel::loading
