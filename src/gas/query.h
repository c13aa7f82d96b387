#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "gas/template.h"

// Questions about a loaded file. All comparisons are exact, with case.
namespace kestrel {

// A copy of the first record with a property `key` of the value `value`; with an
// empty `key`, of the first record whose Name is the trimmed `value`. An empty
// record when there is none.
GasTemplate gudtSearchForTemplate(const std::vector<GasTemplate>& templates, std::wstring_view key,
                                  std::wstring_view value);

// As gudtSearchForTemplate, without the copy; null when there is none.
const GasTemplate* findTemplate(const std::vector<GasTemplate>& templates, std::wstring_view key,
                                std::wstring_view value);

// The template that `name` names: by its `doc`, or else by its `name`; null when
// there is none.
const GasTemplate* findSource(const std::vector<GasTemplate>& templates, std::wstring_view name);

// The records by their `doc` and `name` values, for many questions about one array: each
// takes no walk over it. It points into the array.
class TemplateIndex {
  public:
    explicit TemplateIndex(const std::vector<GasTemplate>& templates);

    // As findTemplate with the key "name", and with "doc".
    const GasTemplate* byName(std::wstring_view value) const { return find(names_, value); }
    const GasTemplate* byDoc(std::wstring_view value) const { return find(docs_, value); }

  private:
    // By the bytes of the value.
    using Records = std::unordered_map<std::string_view, const GasTemplate*>;
    const GasTemplate* find(const Records& records, std::wstring_view value) const;

    const CodePage* page_ = nullptr;  // of all of them; null without any
    Records names_;
    Records docs_;
};

// The value of the first property called `name`; empty when there is none.
std::wstring gstrFindPropertyVal(const GasTemplate& record, std::wstring_view name);

// The chain from the template called `name` up through its ancestors in this
// file, as display names joined by "|"; it ends in "|" when the last ancestor
// specializes nothing. An ancestor is found by its `name`, or else by its `doc`. A chain
// that comes back to a record ends there.
std::wstring gstrGetTemplateHistory(const std::vector<GasTemplate>& templates,
                                    std::wstring_view name);

}  // namespace kestrel
