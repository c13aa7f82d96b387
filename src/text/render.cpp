#include "text/render.h"

#include <algorithm>

#include "base/error.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "services/progress.h"
#include "text/rulers.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kProcessing = L"Processing: ";

// Characters of a whole text; in parts, of one of them.
constexpr std::size_t kMostText = std::size_t{1} << 29;
constexpr std::size_t kPart = std::size_t{1} << 16;

using TakePart = std::function<void(std::wstring_view part)>;

std::wstring processing(const GasTemplate& record) {
    std::wstring text(kProcessing);
    return text.append(record.Name);
}

// Room enough for a template's text, so that it is built in place.
std::size_t expectedSize(const GasTemplate& record) {
    constexpr std::size_t kFixed = 400;
    constexpr std::size_t kColumnsAndLevel = 12;
    std::size_t size = kFixed + record.Comments.size();
    for (const GasProperty& property : ownProperties(record)) {
        size += property.Name.text().size() + property.Value.size() + record.Name.size() +
                property.Group.size() + kColumnsAndLevel;
    }
    return size;
}

// As above for all templates, told from a sample of them where they are many:
// looking at every property would take as long as a part of the rendering.
std::size_t expectedSize(const std::vector<GasTemplate>& templates) {
    constexpr std::size_t kSample = 256;
    const std::size_t step = templates.size() / kSample + 1;
    std::size_t size = 0;
    std::size_t seen = 0;
    for (std::size_t i = 0; i < templates.size(); i += step, ++seen) {
        size += expectedSize(templates[i]);
    }
    if (step == 1) return size;
    return size / seen * templates.size() / 8 * 9;
}

// Appends the rows of one template's text; false once the dialog was cancelled. What
// `take` (may be null) gets is taken off the text.
class RowWriter {
  public:
    RowWriter(std::wstring& text, const GasTemplate& record, const std::wstring* filter,
              ProgressScope& progress, const TakePart* take)
        : text_(text), record_(record), filter_(filter), progress_(progress), take_(take) {}

    bool writeAll() {
        const std::span<const GasProperty> properties = ownProperties(record_);
        const std::size_t count = properties.size();
        for (std::size_t i = 0; i < count; ++i) {
            const bool written = write(properties[i]);
            if (progress_.dialog() == nullptr) continue;
            if (written) message_.replace(kMessage.size(), message_.npos, properties[i].Name);
            progress_.show(percentage(i, count), message_);
            if (progress_.didCancel()) return false;
        }
        return true;
    }

  private:
    bool write(const GasProperty& property) {
        if (filter_ != nullptr && !mayBeGroupPath(*filter_, record_.Name, property)) return false;
        updateTail(property);
        if (filter_ != nullptr && path() != *filter_) return false;
        text_.append(property.Name.text()) += L'\t';
        text_.append(property.Value).append(tail_);
        if (take_ != nullptr && text_.size() >= kPart) passOn();
        if (text_.size() > kMostText) throw RunTimeError(kOutOfMemory, L"Out of memory");
        return true;
    }

    void passOn() {
        (*take_)(text_);
        text_.clear();
    }

    std::wstring_view path() const {
        return std::wstring_view(tail_).substr(1, tail_.size() - 1 - kLineEnd.size());
    }

    // Neighbours mostly share their group: the end of the row, which holds its
    // path, is made once for all of them.
    void updateTail(const GasProperty& property) {
        if (last_ != nullptr && last_->Level == property.Level && last_->Group == property.Group) {
            return;
        }
        last_ = &property;
        tail_ = L'\t';
        appendGroupPath(tail_, record_.Name, property);
        tail_ += kLineEnd;
    }

    static constexpr std::wstring_view kMessage = L"Property: ";

    std::wstring& text_;
    const GasTemplate& record_;
    const std::wstring* filter_;
    ProgressScope& progress_;
    const TakePart* take_;
    const GasProperty* last_ = nullptr;
    std::wstring tail_;
    std::wstring message_{kMessage};
};

void normaliseFilter(std::wstring& filter, const GasTemplate& record) {
    if (filter.empty()) filter = record.Name + L"\\";
    if (!filter.ends_with(L'\\')) filter += L'\\';
}

// Appends the text of one template; false once the dialog was cancelled.
bool appendTemplate(std::wstring& text, const GasTemplate& record, const std::wstring* filter,
                    ProgressScope& progress, const TakePart* take = nullptr) {
    text.append(kTextHeading).append(record.Name).append(kLineEnd);
    text.append(kFormatLine).append(kTopRuler);
    text.append(L"Name\tValue\tGroup\r\n").append(kColumnRuler);
    if (!RowWriter(text, record, filter, progress, take).writeAll()) return false;
    // A filtered text has no comments: they belong to the template as a whole.
    if (filter == nullptr)
        text.append(kColumnRuler).append(L"Comments:\r\n").append(record.Comments);
    text.append(kClosingRuler);
    return true;
}

std::wstring fileHeading(std::wstring_view path, std::size_t count) {
    const Clock* clock = gProgram().host.clock;
    std::wstring text = L"Filename: ";
    text.append(path).append(kLineEnd);
    text.append(L"Time:").append(clock ? clock->longTime() : L"").append(kLineEnd);
    text.append(L"Date:").append(clock ? clock->longDate() : L"").append(kLineEnd);
    text.append(L"Template count: ").append(std::to_wstring(count)).append(kLineEnd);
    return text.append(kClosingRuler);
}

}  // namespace

std::wstring gstrMakeText(const GasTemplate& record, Owner* owner, std::wstring& groupFilter,
                          bool filterOnly, Progress* progress) {
    return guarded(L"gstrMakeText", [&] {
        normaliseFilter(groupFilter, record);
        ProgressScope scope(progress, owner, processing(record));
        std::wstring text;
        text.reserve(std::min(expectedSize(record), kMostText));
        const std::wstring* filter = filterOnly ? &groupFilter : nullptr;
        return appendTemplate(text, record, filter, scope) ? text : std::wstring();
    });
}

void makeText(const GasTemplate& record, const TakePart& take) {
    guarded(L"gstrMakeText", [&] {
        ProgressScope scope(nullptr, nullptr, processing(record));
        std::wstring text;
        if (appendTemplate(text, record, nullptr, scope, &take)) take(text);
    });
}

std::wstring gstrMakeFileText(std::wstring_view path, const std::vector<GasTemplate>& templates,
                              Owner* owner, int /*reserved*/, Progress* progress) {
    if (templates.empty()) return {};
    return guarded(L"gstrMakeText", [&] {
        std::wstring text = fileHeading(path, templates.size());
        text.reserve(std::min(text.size() + expectedSize(templates), kMostText));
        ProgressScope scope(progress, owner, kProcessing);
        for (const GasTemplate& record : templates) {
            scope.process(processing(record));
            const bool whole = appendTemplate(text, record, nullptr, scope);
            if (!whole || !scope.goesOn()) return std::wstring();
        }
        return text;
    });
}

}  // namespace kestrel
