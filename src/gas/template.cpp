#include "gas/template.h"

#include <algorithm>

namespace kestrel {

bool GasProperties::operator==(const GasProperties& other) const {
    return count_ == other.count_ && areNone() == other.areNone() &&
           std::equal(begin(), end(), other.begin());
}

GasProperties ownProperties(const GasTemplate& record) {
    return record.Properties.areNone() ? GasProperties() : record.Properties;
}

void appendGroupPath(std::string& bytes, const Text& root, const Text& group, int level) {
    root.appendTo(bytes);
    bytes += '\\';
    if (group.empty()) return;
    group.appendTo(bytes);
    bytes += '_';
    bytes.append(std::to_string(level)) += '\\';
}

std::wstring groupPath(const Text& root, const Text& group, int level) {
    std::string bytes;
    appendGroupPath(bytes, root, group, level);
    return root.page().wide(bytes);
}

std::wstring groupPath(const GasTemplate& record, const GasProperty& property) {
    return groupPath(record.Name, property.Group, property.Level);
}

GroupFilter::GroupFilter(const GasTemplate& record, std::wstring_view path)
    : root_(record.Name), mayHave_(root_.page().has(path)) {
    if (mayHave_) path_ = root_.page().bytes(path);
}

bool GroupFilter::has(const GasProperty& property) {
    constexpr std::size_t kLevel = 7;  // with the marks around it
    const GasGroup* group = property.Group.group();
    const std::size_t least = root_.bytes().size() + 1 + (group == nullptr ? 0 : group->size);
    // Groups in groups without end have paths of any length, which are not made for that.
    if (!mayHave_ || path_.size() < least || path_.size() > least + kLevel) return false;
    buffer_.clear();
    appendGroupPath(buffer_, root_, property.Group, property.Level);
    return buffer_ == path_;
}

}  // namespace kestrel
