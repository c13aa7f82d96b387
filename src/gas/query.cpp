#include "gas/query.h"

#include <unordered_map>
#include <unordered_set>

#include "services/errors.h"
#include "services/text.h"

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

std::wstring_view valueOf(const GasTemplate& record, std::wstring_view name) {
    if (record.Name.empty()) return {};
    for (const GasProperty& property : record.Properties) {
        if (property.Name == name) return property.Value;
    }
    return {};
}

// The records by the values of their `name` properties, so that a chain of any
// length takes one walk over the file.
using NameIndex = std::unordered_map<std::wstring_view, const GasTemplate*>;

NameIndex indexNames(const std::vector<GasTemplate>& templates) {
    NameIndex index;
    for (const GasTemplate& record : templates) {
        if (record.Name.empty()) continue;
        for (const GasProperty& property : record.Properties) {
            if (property.Name == L"name") index.try_emplace(property.Value, &record);
        }
    }
    return index;
}

std::wstring_view labelOf(const GasTemplate& record, std::wstring_view name) {
    const std::wstring_view doc = valueOf(record, L"doc");
    return doc.empty() ? name : doc;
}

const GasTemplate* findStart(const std::vector<GasTemplate>& templates, std::wstring_view name) {
    for (const wchar_t* key : {L"name", L"doc", L"template_name"}) {
        if (const GasTemplate* record = findTemplate(templates, key, name)) return record;
    }
    return nullptr;
}

std::wstring templateHistory(const std::vector<GasTemplate>& templates, std::wstring_view name) {
    static const GasTemplate kNone;
    const NameIndex names = indexNames(templates);
    const GasTemplate* record = findStart(templates, name);
    if (record == nullptr) record = &kNone;
    std::wstring history(labelOf(*record, name));
    // A chain that comes back to a record ends there, whatever it calls it.
    std::unordered_set<const GasTemplate*> seen;
    std::unordered_set<std::wstring_view> docs;
    for (bool more = !name.empty(); more;) {
        seen.insert(record);
        docs.insert(labelOf(*record, {}));
        const std::wstring_view parent = valueOf(*record, L"specializes");
        const auto found = names.find(parent);
        const bool missing = found == names.end();
        if (missing ? !parent.empty() && docs.contains(parent) : seen.contains(found->second))
            break;
        record = missing ? &kNone : found->second;
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

GasTemplate gudtSearchForTemplate(const std::vector<GasTemplate>& templates, std::wstring_view key,
                                  std::wstring_view value) {
    return guarded(L"gudtSearchForTemplate", [&] {
        const GasTemplate* record = findTemplate(templates, key, value);
        return record == nullptr ? GasTemplate{} : *record;
    });
}

std::wstring gstrFindPropertyVal(const GasTemplate& record, std::wstring_view name) {
    return guarded(L"gstrFindPropertyVal", [&] { return std::wstring(valueOf(record, name)); });
}

std::wstring gstrGetTemplateHistory(const std::vector<GasTemplate>& templates,
                                    std::wstring_view name) {
    return guarded(L"gstrGetTemplateHistory", [&] { return templateHistory(templates, name); });
}

}  // namespace kestrel
