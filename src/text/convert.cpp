#include "text/convert.h"

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <utility>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "gas/gasnames.h"
#include "gas/load.h"
#include "services/files.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/filesystem.h"
#include "text/render.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kProcessing = L"Processing: ";
constexpr std::wstring_view kSourceEnd = L".gas";
constexpr std::wstring_view kOutputEnd = L".tab";

// Keeps conversions from writing over what they must not.
class Targets {
  public:
    Targets(const std::wstring& folder, const std::vector<std::wstring>& names, bool single) {
        for (const std::wstring& name : names) {
            const auto identity = filesystem::identityOf(folder + name);
            if (identity) sources_.insert(*identity);
            if (!single) ++uses_[fileOf(tabPath(folder + name))];
        }
    }

    // Throws when `target` may not be written.
    void check(const std::wstring& target) const {
        const std::wstring file = fileOf(target);
        const auto uses = uses_.find(file);
        if (uses != uses_.end() && uses->second > 1) {
            refuse(target, L"more than one source gives it");
        }
        if (!fileExists(target)) return;
        const auto identity = filesystem::identityOf(target);
        const bool isSource = identity && sources_.contains(*identity);
        if (isSource || isGasName(fileName(file))) refuse(target, L"it is a .gas file");
        if (filesystem::isProtected(target)) refuse(target, L"it is write-protected");
    }

  private:
    // Two links can name one file.
    static std::wstring fileOf(const std::wstring& target) {
        std::wstring path = fileExists(target) ? filesystem::pathBehindLinks(target) : target;
        return path.empty() ? target : path;
    }

    [[noreturn]] static void refuse(const std::wstring& target, std::wstring_view why) {
        throw RunTimeError(kPermissionDenied,
                           L"Cannot write '" + target + L"': " + std::wstring(why));
    }

    std::set<filesystem::Identity> sources_;
    std::map<std::wstring, std::size_t> uses_;  // of the files that are written
};

// Where the texts of a conversion go.
class Sink {
  public:
    Sink() = default;
    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    // Throws when the text of the source at `path` may not be written.
    virtual void check(const std::wstring& path) const = 0;
    virtual void add(const std::wstring& path, FileBytes text) = 0;
    // Puts texts that wait in their places, `all` of them or those that it is time for; gives
    // those that failed, by their sources.
    virtual std::vector<filesystem::Failure> settle(bool all) = 0;
};

// A file beside each source.
class SeparateFiles final : public Sink {
  public:
    SeparateFiles(const Targets& targets, std::wstring_view header)
        : targets_(targets), header_(header) {}

    void check(const std::wstring& path) const override { targets_.check(tabPath(path)); }

    void add(const std::wstring& path, FileBytes text) override {
        FileBytes file;
        file.add(header_);
        file.add(std::move(text));
        output_.add(tabPath(path), file.take());
        waiting_.emplace(tabPath(path), path);
    }

    std::vector<filesystem::Failure> settle(bool all) override {
        if (!all && !output_.isDue()) return {};
        std::vector<filesystem::Failure> failures = output_.commit();
        for (filesystem::Failure& failure : failures) failure.path = waiting_.at(failure.path);
        waiting_.clear();
        return failures;
    }

  private:
    const Targets& targets_;
    std::wstring_view header_;
    filesystem::Batch output_;
    std::map<std::wstring, std::wstring> waiting_;  // sources by the outputs that wait for the disk
};

// One file for all of them.
class OneFile final : public Sink {
  public:
    void check(const std::wstring&) const override {}
    void add(const std::wstring&, FileBytes text) override { together_.add(std::move(text)); }
    std::vector<filesystem::Failure> settle(bool) override { return {}; }

    // Throws when the file was not written.
    void write(const std::wstring& path, std::wstring_view head) {
        FileBytes file;
        file.add(head);
        file.add(std::move(together_));
        const Silence silence;
        if (!writeBytesKeeping(path, file.take()) && silence.failure()) throw *silence.failure();
    }

  private:
    FileBytes together_;
};

// One run over the files of a folder.
class Conversion {
  public:
    Conversion(const std::wstring& folder, ProgressScope& progress, ConversionOutcome& outcome)
        : folder_(folder), progress_(progress), outcome_(outcome) {}

    // Gives the number of those that were converted.
    std::size_t convertAll(const std::vector<std::wstring>& names, Sink& sink) {
        std::size_t converted = 0;
        for (std::size_t i = 0; i < names.size() && !outcome_.cancelled; ++i) {
            progress_.overall(L"File " + std::to_wstring(i + 1) + L" of " +
                              std::to_wstring(names.size()));
            attempt(names[i], [&] { converted += convert(names[i], sink) ? 1 : 0; });
            converted -= settle(sink, false);
            outcome_.cancelled = !progress_.goesOn();
        }
        return converted - settle(sink, true);
    }

    // Runs `step` for a file; false when it failed, which is told.
    template <class Step>
    bool attempt(std::wstring_view name, Step step) {
        try {
            step();
            return true;
        } catch (...) {
            fail(name, currentError());
        }
        return false;
    }

  private:
    bool convert(const std::wstring& name, Sink& sink) {
        const std::wstring path = folder_ + name;
        sink.check(path);
        std::string bytes = filesystem::read(path).value_or(std::string());
        const GasRecords records = readRecords(std::move(bytes), *gProgram().sourcePage);
        if (records.templates.empty()) return leaveOut(name, L"it holds no .gas data"), false;
        progress_.process(std::wstring(kProcessing).append(name));
        std::string texts = templateTexts(records.templates, progress_);
        // Cancelled: there is nothing whole to write.
        if (texts.empty()) return false;
        FileBytes file;
        file.add(fileHeading(path, records.templates.size()));
        file.add(std::move(texts), records.templates.front().Name.page());
        sink.add(path, std::move(file));
        return true;
    }

    // Gives the number of those that failed.
    std::size_t settle(Sink& sink, bool all) {
        const std::vector<filesystem::Failure> failures = sink.settle(all);
        for (const auto& [path, error] : failures) fail(fileName(path), error);
        return failures.size();
    }

    void fail(std::wstring_view name, const RunTimeError& error) {
        if (!outcome_.tell && !std::exchange(hasFailed_, true)) {
            gProgram().routine = L"gblnConvertFolder";
            reportError(error.number(), error.description());
        }
        leaveOut(name, reasonOf(name, error.description()));
    }

    void leaveOut(std::wstring_view name, std::wstring_view reason) {
        outcome_.leftOut.push_back({std::wstring(name), std::wstring(reason)});
        if (outcome_.tell) outcome_.tell(outcome_.leftOut.back());
    }

    // `text` for a line that begins with the name: without the folder, nor what it would
    // say twice.
    std::wstring reasonOf(std::wstring_view name, std::wstring text) const {
        for (std::size_t at = text.find(folder_); at != text.npos; at = text.find(folder_, at)) {
            text.erase(at, folder_.size());
        }
        const std::wstring again = L"Cannot read '" + std::wstring(name) + L"': ";
        return text.starts_with(again) ? text.substr(again.size()) : text;
    }

    const std::wstring& folder_;
    ProgressScope& progress_;
    ConversionOutcome& outcome_;
    bool hasFailed_ = false;
};

void appendLine(std::wstring& text, std::wstring_view label, std::wstring_view value) {
    text.append(label).append(value).append(kLineEnd);
}

void appendCounts(std::wstring& summary, std::size_t processed, std::size_t converted) {
    appendLine(summary, L"Files processed: ", std::to_wstring(processed));
    appendLine(summary, L"Files converted: ", std::to_wstring(converted));
}

void appendLeftOut(std::wstring& summary, const std::vector<LeftOut>& all) {
    constexpr std::size_t kMost = 20;
    if (all.empty()) return;
    summary.append(kLineEnd).append(L"Not converted:").append(kLineEnd);
    const std::size_t shown = std::min(all.size(), kMost);
    for (const LeftOut& one : std::span(all).first(shown)) {
        appendLine(summary, one.name + L": ", one.reason);
    }
    if (all.size() == shown) return;
    appendLine(summary, L"and " + std::to_wstring(all.size() - shown) + L" more", {});
}

// What stands above the texts in a single output file.
std::wstring singleHead(std::wstring_view header, std::wstring_view summary) {
    constexpr std::size_t kRuler = 25;
    return std::wstring(header).append(summary).append(kRuler, L'+').append(kLineEnd);
}

}  // namespace

bool gblnConvertFolder(std::wstring& folder, std::wstring& summary, std::wstring_view outputFile,
                       std::int16_t options, std::wstring_view header, Owner* owner,
                       Progress*& progress, ConversionOutcome* outcome) {
    ConversionOutcome own;
    return guarded(L"gblnConvertFolder", [&] {
        if (folder.empty() || !isSeparator(folder.back())) {
            folder += kSeparator;
        }
        const std::vector<std::wstring> names = gasNames(folder);
        if (names.empty()) return false;
        ConversionOutcome& result = outcome == nullptr ? own : *outcome;
        result.cancelled = false;
        result.leftOut.clear();
        ProgressScope scope(progress, owner, kProcessing);
        const bool single = (options & kSingleFile) != 0;
        const Targets targets(folder, names, single);
        Conversion conversion(folder, scope, result);
        if (single) {
            const std::wstring output = singleOutput(folder, outputFile);
            OneFile sink;
            std::size_t converted = 0;
            const auto step = [&](auto write) {
                return conversion.attempt(fileName(output), write);
            };
            bool written = step([&] { targets.check(output); });
            if (written) converted = conversion.convertAll(names, sink);
            std::wstring counts = summary;
            appendCounts(counts, names.size(), converted);
            written = written && !result.cancelled &&
                      step([&] { sink.write(output, singleHead(header, counts)); });
            appendCounts(summary, names.size(), written ? converted : 0);
            if (written) appendLine(summary, L"Output filename: ", output);
        } else {
            SeparateFiles sink(targets, header);
            appendCounts(summary, names.size(), conversion.convertAll(names, sink));
            appendLine(summary, L"Output folder: ", folder);
        }
        appendLeftOut(summary, result.leftOut);
        return true;
    });
}

std::wstring singleOutput(std::wstring_view folder, std::wstring_view given) {
    if (given.empty()) return joinPath(folder, L"Converted.tab");
    const std::wstring_view name = fileName(given);
    const std::size_t dot = name.rfind(L'.');
    const bool asIs = name.empty() || (dot != 0 && dot != name.npos) || filesystem::isFolder(given);
    return std::wstring(given).append(asIs ? std::wstring_view() : kOutputEnd);
}

std::wstring closingMessage(const ConversionOutcome& outcome, std::wstring_view summary) {
    std::wstring text(outcome.cancelled ? L"File conversion cancelled."
                                        : L"File conversion complete.");
    return text.append(kLineEnd).append(kLineEnd).append(summary);
}

std::wstring tabPath(std::wstring_view source) {
    if (isGasName(source)) source.remove_suffix(kSourceEnd.size());
    return std::wstring(source).append(kOutputEnd);
}

std::wstring conversionHeader(std::wstring_view title, std::wstring_view author,
                              std::wstring_view build, std::wstring_view copyright) {
    std::wstring header;
    appendLine(header, L"Title: ", title);
    appendLine(header, L"Author: ", author);
    appendLine(header, L"Build: ", build);
    appendLine(header, L"Copyright: ", copyright);
    return header;
}

}  // namespace kestrel
