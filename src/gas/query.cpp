#include "gas/query.h"

#include <unordered_set>

#include "base/text.h"
#include "services/guard.h"

namespace kestrel {
namespace {

bool matches(const GasTemplate& record, std::wstring_view key, std::wstring_view value) {
    if (record.Name.empty()) return false;
    if (key.empty()) return record.Name == trim(value);
    for (const GasProperty& property : record.Properties) {
        if (property.Name == key && property.Value == value) return true;
    }
    return false;
}

Text valueOf(const GasTemplate& record, std::wstring_view name) {
    if (record.Name.empty()) return {};
    for (const GasProperty& property : record.Properties) {
        if (property.Name == name) return property.Value;
    }
    return {};
}

std::wstring labelOf(const GasTemplate& record, std::wstring_view name) {
    const Text doc = valueOf(record, L"doc");
    return doc.empty() ? std::wstring(name) : doc.wide();
}

const GasTemplate* findStart(const std::vector<GasTemplate>& templates, std::wstring_view name) {
    for (const wchar_t* key : {L"name", L"doc", L"template_name"}) {
        if (const GasTemplate* record = findTemplate(templates, key, name)) return record;
    }
    return nullptr;
}

std::wstring templateHistory(const std::vector<GasTemplate>& templates, std::wstring_view name) {
    static const GasTemplate kNone;
    const TemplateIndex index(templates);
    const GasTemplate* record = findStart(templates, name);
    if (record == nullptr) record = &kNone;
    std::wstring history = labelOf(*record, name);
    // A chain that comes back to a record ends there, whatever it calls it.
    std::unordered_set<const GasTemplate*> seen;
    for (bool more = !name.empty(); more;) {
        seen.insert(record);
        const std::wstring parent = valueOf(*record, L"specializes").wide();
        const GasTemplate* found = index.byName(parent);
        if (found == nullptr && !parent.empty()) found = index.byDoc(parent);
        if (seen.contains(found)) break;
        record = found == nullptr ? &kNone : found;
        history += L'|';
        history += labelOf(*record, parent);
        more = !record->Name.empty();
    }
    return history.empty() ? L"|" : history;
}

}  // namespace

const GasTemplate* findTemplate(const std::vector<GasTemplate>& templates, std::wstring_view key,
                                std::wstring_view value) {
    for (const GasTemplate& record : templates) {
        if (matches(record, key, value)) return &record;
    }
    return nullptr;
}

const GasTemplate* findSource(const std::vector<GasTemplate>& templates, std::wstring_view name) {
    const GasTemplate* record = findTemplate(templates, L"doc", name);
    return record != nullptr ? record : findTemplate(templates, L"name", name);
}

TemplateIndex::TemplateIndex(const std::vector<GasTemplate>& templates) {
    for (const GasTemplate& record : templates) {
        if (record.Name.empty()) continue;
        for (const GasProperty& property : record.Properties) {
            if (property.Name == "name") names_.try_emplace(property.Value.bytes(), &record);
            if (property.Name == "doc") docs_.try_emplace(property.Value.bytes(), &record);
            page_ = &property.Name.page();
        }
    }
}

const GasTemplate* TemplateIndex::find(const Records& records, std::wstring_view value) const {
    if (page_ == nullptr || !page_->has(value)) return nullptr;
    const auto found = records.find(page_->bytes(value));
    return found == records.end() ? nullptr : found->second;
}

GasTemplate gudtSearchForTemplate(const std::vector<GasTemplate>& templates, std::wstring_view key,
                                  std::wstring_view value) {
    return guarded(L"gudtSearchForTemplate", [&] {
        const GasTemplate* record = findTemplate(templates, key, value);
        return record == nullptr ? GasTemplate{} : *record;
    });
}

std::wstring gstrFindPropertyVal(const GasTemplate& record, std::wstring_view name) {
    return guarded(L"gstrFindPropertyVal", [&] { return valueOf(record, name).wide(); });
}

std::wstring gstrGetTemplateHistory(const std::vector<GasTemplate>& templates,
                                    std::wstring_view name) {
    return guarded(L"gstrGetTemplateHistory", [&] { return templateHistory(templates, name); });
}

}  // namespace kestrel
