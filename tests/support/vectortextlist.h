#pragma once

#include "services/host.h"

namespace kestrel::test {

// A combo box's list without the combo box.
class VectorTextList final : public TextList {
  public:
    VectorTextList() = default;
    explicit VectorTextList(std::vector<std::wstring> start) : items(std::move(start)) {}

    std::size_t count() const override { return items.size(); }
    std::wstring at(std::size_t index) const override { return items.at(index); }
    void insert(std::size_t index, std::wstring_view text) override {
        items.emplace(items.begin() + static_cast<std::ptrdiff_t>(index), text);
    }
    void append(std::wstring_view text) override { items.emplace_back(text); }
    void removeAt(std::size_t index) override {
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    }

    std::vector<std::wstring> items;
};

}  // namespace kestrel::test
