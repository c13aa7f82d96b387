#include "gas/blocks.h"

#include <algorithm>

#include "base/text.h"
#include "gas/template.h"

namespace kestrel::loading {
namespace {

std::string withCrLf(std::string_view text) {
    std::string out;
    out.reserve(text.size() + static_cast<std::size_t>(std::ranges::count(text, '\n')));
    for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
        out.append(text.substr(0, end)).append(kCrLf);
    }
    return out.append(text);
}

using Places = std::vector<std::uint32_t>;

void add(Places& places, std::size_t at) {
    places.push_back(static_cast<std::uint32_t>(at));
}

Places placesOf(std::string_view prefix, std::string_view text) {
    Places places;
    for (std::size_t at = text.find(prefix); at != text.npos;
         at = text.find(prefix, at + prefix.size())) {
        add(places, at);
    }
    return places;
}

// As placesOf, for a header that ends in its only "]": looking at the text from
// one "]" to the next keeps a header of any length linear.
Places placesOfHeader(std::string_view header, std::string_view text) {
    Places places;
    for (std::size_t at = text.find(']'), gap = 0; at != text.npos; at = text.find(']', gap)) {
        const bool roomy = at + 1 - gap >= header.size();
        gap = at + 1;
        if (roomy && text.substr(0, gap).ends_with(header)) add(places, gap - header.size());
    }
    return places;
}

}  // namespace

std::string prepared(std::string bytes) {
    if (bytes.find(kCrLf) == bytes.npos) bytes = withCrLf(bytes);
    if (!bytes.ends_with(kCrLf)) bytes += kCrLf;
    return bytes;
}

std::string_view withoutEmptyStart(std::string_view text) {
    while (text.starts_with(kCrLf)) text.remove_prefix(kCrLf.size());
    return text;
}

Cut::Cut(std::string_view text, const CodePage& page) : text_(text) {
    const std::size_t bracket = text.find('[');
    cutOnKnownKind(bracket == text.npos ? text : text.substr(bracket));
    if (!known_) cutOnUnknownKind(page);
}

void Cut::cutOnKnownKind(std::string_view first) {
    const auto* row = std::ranges::find_if(
        kBlockKinds, [&](const BlockKind& kind) { return first.starts_with(kind.prefix); });
    if (row == kBlockKinds.end()) return;
    found_ = known_ = true;
    prefix_ = row->prefix;
    kind_ = row->name;
    isParty_ = kind_ == "Party";
    places_ = placesOf(prefix_, text_);
}

// The first header itself names the kind.
void Cut::cutOnUnknownKind(const CodePage& page) {
    const std::size_t end = text_.find(']');
    if (end == text_.npos) return;
    std::string_view header = text_.substr(0, end + 1);
    std::string_view name = header.substr(0, end);
    if (const std::size_t bracket = header.find('['); bracket != header.npos) {
        dropped_ = header.substr(0, bracket);
        header.remove_prefix(bracket);
        name.remove_prefix(bracket + 1);
    }
    found_ = true;
    prefix_ = header;
    kind_ = name.empty() ? Text(kBlockKinds.back().name) : Text(name, page);
    text_.remove_prefix(dropped_.size());
    places_ = placesOfHeader(header, text_);
}

Block Cut::operator[](std::size_t index) const {
    // What precedes the first header of a known kind is a block of its own.
    if (known_ && index == 0) return {{}, text_.substr(0, places_.front())};
    const std::size_t place = placeOf(index);
    const std::size_t end = place + 1 < places_.size() ? places_[place + 1] : text_.size();
    const std::string_view whole = text_.substr(places_[place], end - places_[place]);
    return {whole, whole.substr(prefix_.size())};
}

bool Cut::needsNormalText() const {
    const auto has = [&](std::string_view some) { return prefix_.find(some) != prefix_.npos; };
    // A blank at its begin may be the end of a tab.
    return isJoined() || prefix_.starts_with(' ') || has("\t") || has("    ") || has(kCrLf);
}

std::string Cut::joined() const {
    std::string text((*this)[1].body);
    return text.append(prefix_).append(kCrLf).append((*this)[2].body);
}

}  // namespace kestrel::loading
