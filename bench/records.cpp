#include <algorithm>
#include <iterator>

#include "base/bytes.h"
#include "records.h"

namespace kestrel::bench {
namespace {

// Nearly every text is ASCII, which needs no decoding.
bool isAscii(std::string_view utf8) {
    unsigned all = 0;
    for (const char c : utf8) all |= static_cast<unsigned char>(c);
    return all < 0x80;
}

std::wstring wide(std::string_view utf8) {
    return isAscii(utf8) ? std::wstring(utf8.begin(), utf8.end()) : fromUtf8(utf8);
}

}  // namespace

void RecordBuilder::beginTemplate() {
    GasTemplate& record = templates_.emplace_back();
    record.Kind = L"Template";
    record.Name = L"Template" + std::to_wstring(templates_.size() - 1);
    groups_.assign(1, {});
    level_ = 0;
}

void RecordBuilder::property(std::string_view name, std::string_view value) {
    properties_.push_back({pool_.share(name, wide), wide(value), groups_.back(), false, level_});
    if (name == "doc") templates_.back().Name = properties_.back().Value;
}

void RecordBuilder::openBlock(std::string_view name) {
    ++level_;
    GasProperty& header = properties_.emplace_back();
    header.Name = pool_.share(name, wide);
    groups_.push_back(groupPool_.inside(groups_.back(), header.Name));
    header.Group = groups_.back();
    header.IsBlock = true;
    header.Level = level_;
}

void RecordBuilder::closeBlock() {
    groups_.pop_back();
}

void RecordBuilder::endTemplate() {
    templates_.back().Properties.assign(std::make_move_iterator(properties_.begin()),
                                        std::make_move_iterator(properties_.end()));
    properties_.clear();
}

}  // namespace kestrel::bench
