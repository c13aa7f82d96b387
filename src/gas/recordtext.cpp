#include "gas/recordtext.h"

#include <algorithm>

#include "base/text.h"

namespace kestrel {
namespace {

void appendExpanded(std::string& out, std::string_view line) {
    for (std::size_t tab; (tab = line.find('\t')) != line.npos; line.remove_prefix(tab + 1)) {
        out.append(line.substr(0, tab)).append(4, ' ');
    }
    out += line;
}

}  // namespace

void appendNormalised(std::string& out, std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find(kCrLf);
        appendExpanded(out, text.substr(0, end));
        if (end == text.npos) break;
        out += kCrLf;
        text.remove_prefix(end);
        while (text.starts_with(kCrLf)) text.remove_prefix(kCrLf.size());
    }
}

std::string normalised(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 3 * static_cast<std::size_t>(std::ranges::count(text, '\t')));
    appendNormalised(out, text);
    return out;
}

// Its size tells only whether it is empty.
Text::Text(const GasGroup* group) noexcept
    : data_(group), size_(group != nullptr && group->size > 0 ? 1 : 0), form_(kGroup) {
    if (group != nullptr) page_ = group->name.page_;
}

const GasGroup* Text::group() const noexcept {
    return form_ == kGroup ? static_cast<const GasGroup*>(data_) : nullptr;
}

void Text::appendTo(std::string& bytes) const {
    if (const GasGroup* group = this->group()) return group->appendTo(bytes);
    if ((form_ & kRaw) != 0) {
        appendNormalised(bytes, this->bytes());
    } else {
        bytes += this->bytes();
    }
    if ((form_ & kOpen) != 0) bytes += '}';
}

std::wstring Text::wide() const {
    if (isPlain()) return page().wide(bytes());
    std::string all;
    appendTo(all);
    return page().wide(all);
}

bool Text::operator==(const Text& other) const {
    // The same bytes are another text in another page.
    if (page_ != other.page_) return wide() == other.wide();
    const GasGroup* own = group();
    const GasGroup* others = other.group();
    if (own != nullptr && others != nullptr) return *own == *others;
    return isPlain() && other.isPlain() ? bytes() == other.bytes() : wide() == other.wide();
}

bool Text::operator==(std::wstring_view other) const {
    if (isPlain() && (size_ < other.size() || (size_ > other.size() && !page().isUtf8()))) {
        return false;
    }
    return wide() == other;
}

const GasGroup* GasGroup::outer() const noexcept {
    // What a first name that is empty leaves is no text, so no group.
    return around == nullptr || around->size == 0 ? nullptr : around;
}

void GasGroup::appendTo(std::string& bytes) const {
    bytes.resize(bytes.size() + size);
    auto end = bytes.end();
    for (const GasGroup* at = this; at != nullptr; at = at->around) {
        const std::string_view last = at->name.bytes();
        end = std::copy_backward(last.begin(), last.end(), end);
        if (at->around != nullptr) *--end = '\\';
    }
}

bool GasGroup::operator==(const GasGroup& other) const noexcept {
    if (size != other.size) return false;
    const GasGroup* a = this;
    const GasGroup* b = &other;
    for (; a != b; a = a->around, b = b->around) {
        if (a == nullptr || b == nullptr || !(a->name == b->name)) return false;
    }
    return true;
}

}  // namespace kestrel
