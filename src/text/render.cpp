#include "text/render.h"

#include <algorithm>

#include "base/error.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/largepages.h"
#include "text/rulers.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kProcessing = L"Processing: ";

// Characters of a whole text; in parts, of one of them.
constexpr std::size_t kMostText = std::size_t{1} << 29;
constexpr std::size_t kPart = std::size_t{1} << 16;

std::wstring processing(const GasTemplate& record) {
    return std::wstring(kProcessing) + record.Name.wide();
}

// Appends the rows of one template's text; false once the dialog was cancelled. What
// `take` (may be null) gets is taken off the text.
class RowWriter {
  public:
    RowWriter(std::string& text, const GasTemplate& record, GroupFilter* filter,
              ProgressScope& progress, const TakePart* take)
        : text_(text), record_(record), filter_(filter), progress_(progress), take_(take) {}

    bool writeAll() {
        const GasProperties properties = ownProperties(record_);
        const std::size_t count = properties.size();
        for (std::size_t i = 0; i < count; ++i) {
            const GasProperty property = properties[i];
            const bool written = write(property);
            if (progress_.dialog() == nullptr) continue;
            if (written) message_.replace(kMessage.size(), message_.npos, property.Name.wide());
            progress_.show(percentage(i, count), message_);
            if (progress_.didCancel()) return false;
        }
        return true;
    }

  private:
    bool write(const GasProperty& property) {
        if (filter_ != nullptr && !filter_->has(property)) return false;
        updateTail(property);
        text_.append(property.Name.bytes()) += '\t';
        text_.append(property.Value.bytes()).append(tail_);
        if (take_ != nullptr && text_.size() >= kPart) passOn();
        if (text_.size() > kMostText) throw RunTimeError(kOutOfMemory, L"Out of memory");
        return true;
    }

    void passOn() {
        (*take_)(Text(text_, record_.Name.page()));
        text_.clear();
    }

    // Neighbours mostly share their group: the end of the row, which holds its
    // path, is made once for all of them.
    void updateTail(const GasProperty& property) {
        if (!tail_.empty() && level_ == property.Level && group_ == property.Group.group()) return;
        level_ = property.Level;
        group_ = property.Group.group();
        tail_ = '\t';
        appendGroupPath(tail_, record_.Name, property.Group, property.Level);
        tail_ += kCrLf;
    }

    static constexpr std::wstring_view kMessage = L"Property: ";

    std::string& text_;
    const GasTemplate& record_;
    GroupFilter* filter_;
    ProgressScope& progress_;
    const TakePart* take_;
    int level_ = 0;  // of the tail
    const GasGroup* group_ = nullptr;
    std::string tail_;
    std::wstring message_{kMessage};
};

// Appends the text of one template; false once the dialog was cancelled.
bool appendTemplate(std::string& text, const GasTemplate& record, GroupFilter* filter,
                    ProgressScope& progress, const TakePart* take = nullptr) {
    text.append(kTextHeading);
    record.Name.appendTo(text);
    text.append(kCrLf).append(kFormatLine).append(kTopRuler);
    text.append("Name\tValue\tGroup\r\n").append(kColumnRuler);
    if (!RowWriter(text, record, filter, progress, take).writeAll()) return false;
    // A filtered text has no comments: they belong to the template as a whole.
    if (filter == nullptr) {
        text.append(kColumnRuler).append("Comments:\r\n");
        record.Comments.appendTo(text);
    }
    text.append(kClosingRuler);
    return true;
}

}  // namespace

std::wstring fileHeading(std::wstring_view path, std::size_t templates) {
    const Clock* clock = gProgram().host.clock;
    std::wstring text = L"Filename: ";
    text.append(path).append(kLineEnd);
    text.append(L"Time:").append(clock ? clock->longTime() : L"").append(kLineEnd);
    text.append(L"Date:").append(clock ? clock->longDate() : L"").append(kLineEnd);
    text.append(L"Template count: ").append(std::to_wstring(templates)).append(kLineEnd);
    append(text, kClosingRuler);
    return text;
}

std::string templateTexts(const std::vector<GasTemplate>& templates, ProgressScope& progress) {
    constexpr std::size_t kSample = 32;
    std::string text;
    for (std::size_t i = 0; i < templates.size(); ++i) {
        // Room for all of them, told from the first ones.
        if (i == kSample) {
            text.reserve(std::min(text.size() / i * templates.size() / 8 * 9, kMostText));
            wishForLargePages(text.data(), text.capacity());
        }
        progress.process(processing(templates[i]));
        const bool whole = appendTemplate(text, templates[i], nullptr, progress);
        if (!whole || !progress.goesOn()) return {};
    }
    return text;
}

std::wstring gstrMakeText(const GasTemplate& record, Owner* owner, std::wstring& groupFilter,
                          bool filterOnly, Progress* progress) {
    return guarded(L"gstrMakeText", [&] {
        if (groupFilter.empty()) groupFilter = record.Name.wide() + L'\\';
        if (!groupFilter.ends_with(L'\\')) groupFilter += L'\\';
        ProgressScope scope(progress, owner, processing(record));
        std::string text;
        GroupFilter filter(record, groupFilter);
        const bool whole = appendTemplate(text, record, filterOnly ? &filter : nullptr, scope);
        return whole ? record.Name.page().wide(text) : std::wstring();
    });
}

void makeText(const GasTemplate& record, const TakePart& take) {
    guarded(L"gstrMakeText", [&] {
        ProgressScope scope(nullptr, nullptr, processing(record));
        std::string text;
        if (appendTemplate(text, record, nullptr, scope, &take)) {
            take(Text(text, record.Name.page()));
        }
    });
}

std::wstring gstrMakeFileText(std::wstring_view path, const std::vector<GasTemplate>& templates,
                              Owner* owner, int /*reserved*/, Progress* progress) {
    if (templates.empty()) return {};
    return guarded(L"gstrMakeText", [&] {
        std::wstring heading = fileHeading(path, templates.size());
        ProgressScope scope(progress, owner, kProcessing);
        const std::string texts = templateTexts(templates, scope);
        if (texts.empty()) return std::wstring();
        templates.front().Name.page().appendWide(heading, texts);
        return heading;
    });
}

}  // namespace kestrel
