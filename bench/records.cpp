#include "records.h"

namespace kestrel::bench {

RecordBuilder::RecordBuilder(std::size_t bytes)
    : file_(std::make_shared<GasFile>(std::string(), CodePage::utf8())) {
    file_->reserve(bytes);
}

void RecordBuilder::beginTemplate() {
    GasTemplate& record = templates_.emplace_back();
    record.Kind = "Template";
    first_ = file_->entries();
    groups_.assign(1, nullptr);
    level_ = 0;
}

void RecordBuilder::add(std::string_view name, std::string_view value, bool isBlock) {
    file_->add({file_->append(name), file_->append(value),
                groups_.back() == nullptr ? 0 : groups_.back()->id, level_, isBlock});
}

void RecordBuilder::property(std::string_view name, std::string_view value) {
    add(name, value, false);
    if (name == "doc") {
        templates_.back().Name = file_->property(file_->entries() - 1).Value;
    }
}

void RecordBuilder::openBlock(std::string_view name) {
    ++level_;
    groups_.push_back(file_->inside(groups_.back(), name));
    add(name, {}, true);
}

void RecordBuilder::closeBlock() {
    groups_.pop_back();
}

void RecordBuilder::endTemplate() {
    GasTemplate& record = templates_.back();
    if (record.Name.empty()) {
        const std::string name = "Template" + std::to_string(templates_.size() - 1);
        record.Name = Text(file_->keep(name), file_->page());
    }
    record.Properties = {file_, first_, file_->entries() - first_};
}

}  // namespace kestrel::bench
