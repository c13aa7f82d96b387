#include "gas/sharedgroup.h"

#include <algorithm>

namespace kestrel {

SharedGroup::SharedGroup(std::wstring_view text) {
    *this = SharedGroup().inside(std::wstring(text));
}

// One after the other: destructors would call each other as deep as sub-blocks nest.
void SharedGroup::release(Shared* shared) noexcept {
    while (shared != nullptr) {
        Shared* around = shared->around;
        delete shared;
        shared = around != nullptr && --around->owners == 0 ? around : nullptr;
    }
}

SharedGroup SharedGroup::with(SharedText name) const {
    const std::size_t size = name.text().size() + (shared_ == nullptr ? 0 : shared_->size + 1);
    auto* made = new Shared{shared_, std::move(name), nullptr, size};
    if (shared_ != nullptr) ++shared_->owners;
    made->start = size <= kStart ? made : shared_ == nullptr ? nullptr : shared_->start;
    return SharedGroup(made);
}

SharedGroup SharedGroup::inside(const SharedText& name) const {
    std::wstring_view rest = name;
    if (shared_ == nullptr && rest.empty()) return {};
    std::size_t end = rest.find(L'\\');
    if (end == rest.npos) return with(name);
    SharedGroup group = *this;
    for (; end != rest.npos; end = rest.find(L'\\')) {
        group = group.with(std::wstring(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    return group.with(std::wstring(rest));
}

SharedGroup SharedGroup::around() const noexcept {
    // What a first name that is empty leaves is no text, so no group.
    if (shared_ == nullptr || shared_->around == nullptr || shared_->around->size == 0) return {};
    return share(shared_->around);
}

void SharedGroup::appendTo(std::wstring& text) const {
    text.resize(text.size() + size());
    auto end = text.end();
    for (const Shared* at = shared_; at != nullptr; at = at->around) {
        const std::wstring& name = at->name;
        end = std::copy_backward(name.begin(), name.end(), end);
        if (at->around != nullptr) *--end = L'\\';
    }
}

std::wstring SharedGroup::text() const {
    std::wstring text;
    appendTo(text);
    return text;
}

std::wstring_view SharedGroup::name() const noexcept {
    return shared_ == nullptr ? std::wstring_view() : std::wstring_view(shared_->name);
}

bool SharedGroup::operator==(const SharedGroup& other) const noexcept {
    if (size() != other.size()) return false;
    const Shared* a = shared_;
    const Shared* b = other.shared_;
    for (; a != b; a = a->around, b = b->around) {
        if (a == nullptr || b == nullptr || !(a->name == b->name)) return false;
    }
    return true;
}

SharedGroup GroupPool::inside(const SharedGroup& around, const SharedText& name) {
    const std::uint64_t key = (std::rotl(around.id(), 29) ^ name.id()) * 0x9E3779B97F4A7C15U;
    SharedGroup& slot = slots_[static_cast<std::size_t>(key >> (64 - kSlotBits))];
    if (!slot.isInside(around, name)) slot = around.inside(name);
    return slot;
}

}  // namespace kestrel
