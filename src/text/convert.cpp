#include "text/convert.h"

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "gas/gasfiles.h"
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
        const auto uses = uses_.find(fileOf(target));
        if (uses != uses_.end() && uses->second > 1) {
            refuse(target, L"more than one source gives it");
        }
        if (!fileExists(target)) return;
        const auto identity = filesystem::identityOf(target);
        const bool isSource = identity && sources_.contains(*identity);
        if (isSource || isGasName(fileName(fileOf(target)))) {
            refuse(target, L"it is a .gas file");
        }
        if (filesystem::isProtected(target)) refuse(target, L"it is write-protected");
    }

  private:
    // Two links can name one file.
    static std::wstring fileOf(const std::wstring& target) {
        std::wstring path = filesystem::pathBehindLinks(target);
        return path.empty() ? target : path;
    }

    [[noreturn]] static void refuse(const std::wstring& target, std::wstring_view why) {
        throw RunTimeError(kPermissionDenied,
                           L"Cannot write '" + target + L"': " + std::wstring(why));
    }

    std::set<filesystem::Identity> sources_;
    std::map<std::wstring, std::size_t> uses_;  // of the files that are written
};

// One run over the files of a folder.
class Conversion {
  public:
    Conversion(const std::wstring& folder, const std::vector<std::wstring>& names, bool single,
               std::wstring_view header, Owner* owner, ProgressScope& progress,
               ConversionOutcome& outcome)
        : folder_(folder),
          names_(names),
          single_(single),
          header_(header),
          owner_(owner),
          progress_(progress),
          outcome_(outcome),
          targets_(folder, names, single) {}

    void convertAll() {
        for (std::size_t i = 0; i < names_.size() && !outcome_.cancelled; ++i) {
            progress_.overall(L"File " + std::to_wstring(i + 1) + L" of " +
                              std::to_wstring(names_.size()));
            attempt(names_[i], [&] { convert(names_[i]); });
            if (output_.isDue()) putInPlace();
            outcome_.cancelled = !progress_.goesOn();
        }
        putInPlace();
    }

    // False, which is told, when the single output file may not be written.
    bool mayWrite(const std::wstring& path) {
        return attempt(fileName(path), [&] { targets_.check(path); });
    }

    // The output of all files is one text: `head`, then what they gave. False, which is
    // told, when it was not written.
    bool writeTogether(const std::wstring& path, std::wstring_view head) {
        const bool written = attempt(fileName(path), [&] {
            together_.insert(0, head);
            const Silence silence;
            if (!writeBytesKeeping(path, fileBytes(together_)) && silence.failure())
                throw *silence.failure();
        });
        if (!written) converted_ = 0;
        return written;
    }

    std::size_t converted() const noexcept { return converted_; }

  private:
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

    void convert(const std::wstring& name) {
        const std::wstring target = tabPath(folder_ + name);
        if (!single_) targets_.check(target);
        if (!load(name)) return leaveOut(name, L"it holds no .gas data");
        progress_.process(std::wstring(kProcessing).append(name));
        std::wstring text = render(name);
        // Cancelled: there is nothing whole to write.
        if (text.empty()) return;
        if (single_) {
            together_ += text;
        } else {
            output_.add(target, fileBytes(text.insert(0, header_)));
            waiting_.emplace(target, name);
        }
        ++converted_;
    }

    bool load(const std::wstring& name) {
        const Silence silence;
        std::wstring source = folder_ + name;
        const bool loaded = gblnLoadGas(source, templates_, nullptr);
        if (silence.failure()) throw *silence.failure();
        return loaded;
    }

    std::wstring render(const std::wstring& name) {
        const Silence silence;
        std::wstring text =
            gstrMakeFileText(folder_ + name, templates_, owner_, 0, progress_.dialog());
        if (silence.failure()) throw *silence.failure();
        return progress_.didCancel() ? std::wstring() : text;
    }

    // Puts the files that were written in their places.
    void putInPlace() {
        for (const filesystem::Failure& failure : output_.commit()) {
            --converted_;
            fail(waiting_.at(failure.path), failure.error);
        }
        waiting_.clear();
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
    const std::vector<std::wstring>& names_;
    bool single_;
    std::wstring_view header_;
    Owner* owner_;
    ProgressScope& progress_;
    ConversionOutcome& outcome_;
    Targets targets_;
    std::vector<GasTemplate> templates_;
    std::wstring together_;
    filesystem::Batch output_;
    std::map<std::wstring, std::wstring> waiting_;  // sources by the outputs that wait for the disk
    std::size_t converted_ = 0;
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
        Conversion conversion(folder, names, single, header, owner, scope, result);
        const std::wstring output = singleOutput(folder, outputFile);
        const bool may = !single || conversion.mayWrite(output);
        if (may) conversion.convertAll();
        if (!single) {
            appendCounts(summary, names.size(), conversion.converted());
            appendLine(summary, L"Output folder: ", folder);
        } else {
            std::wstring counts = summary;
            appendCounts(counts, names.size(), conversion.converted());
            const bool written = may && !result.cancelled &&
                                 conversion.writeTogether(output, singleHead(header, counts));
            appendCounts(summary, names.size(), written ? conversion.converted() : 0);
            if (written) appendLine(summary, L"Output filename: ", output);
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
