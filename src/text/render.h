#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "gas/template.h"
#include "services/host.h"
#include "services/progress.h"

// Tab-delimited text of templates, with CR LF line ends. It is made of the bytes of the
// records, in their page; whoever shows it asks for wide text.
namespace kestrel {

// The text of one template: its properties with their group paths and, unless
// `filterOnly`, its comments. With `filterOnly` only properties whose group path
// equals `groupFilter` are written. `groupFilter` comes back as the path that
// was used: an empty one is the template's own path, and a "\" ends it. Without
// `progress` a dialog is made and `owner` (may be null) disabled meanwhile.
// Empty after a cancel. A text that no window could show is a run-time error (out of
// memory): sub-blocks in sub-blocks without end have groups of any length.
std::wstring gstrMakeText(const GasTemplate& record, Owner* owner, std::wstring& groupFilter,
                          bool filterOnly, Progress* progress);

// As gstrMakeText, unfiltered and without a dialog, in parts that `take` gets one after the
// other: however long the text is, no more than a part of it is held.
using TakePart = std::function<void(const Text& part)>;
void makeText(const GasTemplate& record, const TakePart& take);

// The text of all templates of the file at `path`, in file order; empty when
// there is none, and after a cancel. `reserved` is not used.
std::wstring gstrMakeFileText(std::wstring_view path, const std::vector<GasTemplate>& templates,
                              Owner* owner, int reserved, Progress* progress);

// The same as its two parts: what stands above the templates, and their texts. The second
// is empty after a cancel. Throws RunTimeError.
std::wstring fileHeading(std::wstring_view path, std::size_t templates);
std::string templateTexts(const std::vector<GasTemplate>& templates, ProgressScope& progress);

}  // namespace kestrel
