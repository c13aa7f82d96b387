#include "text/convert.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "gas/load.h"
#include "gas/sources.h"
#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/progress.h"
#include "services/text.h"
#include "text/render.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kProcessing = L"Processing: ";
constexpr std::wstring_view kSourceEnd = L".gas";
constexpr std::wstring_view kOutputEnd = L".tab";

// Nobody is told of anything while this lives.
class Silence {
  public:
    Silence() : messages_(std::exchange(gProgram().host.messages, nullptr)) {}
    ~Silence() { gProgram().host.messages = messages_; }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    Messages* messages_;
};

// One run over the files of a folder.
class Conversion {
  public:
    Conversion(std::wstring_view folder, bool single, std::wstring_view header, Owner* owner,
               ProgressScope& progress)
        : folder_(folder), single_(single), header_(header), owner_(owner), progress_(progress) {}

    // False once the dialog was cancelled.
    bool convertAll(const std::vector<std::wstring>& names) {
        return std::ranges::all_of(names, [this](const std::wstring& name) {
            convert(name);
            return !progress_.didCancel();
        });
    }

    // The output of all files is one text: `head`, then what they gave.
    void writeTogether(std::wstring_view path, std::wstring_view head) {
        together_.insert(0, head);
        gWriteFile(path, together_);
    }

    // Puts the files that were written in their places.
    void finish() {
        guarded(L"gWriteFile", [&] { output_.commit(); });
    }

    std::size_t converted() const noexcept { return converted_; }

  private:
    void convert(std::wstring_view name) {
        if (!load(name)) return;
        progress_.process(std::wstring(kProcessing).append(name));
        std::wstring text = gstrMakeFileText(path(name), templates_, owner_, 0, progress_.dialog());
        // Cancelled, or reported as a failure: there is nothing whole to write.
        if (text.empty() || progress_.didCancel()) return;
        if (single_) {
            together_ += text;
        } else {
            write(name, std::move(text));
        }
        ++converted_;
    }

    bool load(std::wstring_view name) {
        const Silence silence;
        std::wstring source = path(name);
        return gblnLoadGas(source, templates_, nullptr);
    }

    void write(std::wstring_view name, std::wstring text) {
        if (!header_.empty()) text.insert(0, header_);
        guarded(L"gWriteFile", [&] { output_.add(tabPath(path(name)), narrow(text)); });
    }

    std::wstring path(std::wstring_view name) const { return std::wstring(folder_).append(name); }

    std::wstring_view folder_;
    bool single_;
    std::wstring_view header_;
    Owner* owner_;
    ProgressScope& progress_;
    std::vector<GasTemplate> templates_;
    std::wstring together_;
    filesystem::Batch output_;
    std::size_t converted_ = 0;
};

void appendLine(std::wstring& text, std::wstring_view label, std::wstring_view value) {
    text.append(label).append(value).append(kLineEnd);
}

// What stands above the texts in a single output file.
std::wstring singleHead(std::wstring_view header, std::wstring_view summary) {
    constexpr std::size_t kRuler = 25;
    return std::wstring(header).append(summary).append(kRuler, L'+').append(kLineEnd);
}

}  // namespace

bool gblnConvertFolder(std::wstring& folder, std::wstring& summary, std::wstring_view outputFile,
                       std::int16_t options, std::wstring_view header, Owner* owner,
                       Progress*& progress) {
    return guarded(L"gblnConvertFolder", [&] {
        if (folder.empty() || !filesystem::isSeparator(folder.back())) {
            folder += filesystem::separator();
        }
        const std::vector<std::wstring> names = gasNames(folder);
        if (names.empty()) return false;
        const bool single = (options & kSingleFile) != 0;
        ProgressScope scope(progress, owner, kProcessing);
        Conversion conversion(folder, single, header, owner, scope);
        const bool whole = conversion.convertAll(names);
        appendLine(summary, L"Files processed: ", std::to_wstring(names.size()));
        appendLine(summary, L"Files converted: ", std::to_wstring(conversion.converted()));
        if (!single) {
            conversion.finish();
            appendLine(summary, L"Output folder: ", folder);
        } else if (whole) {
            const std::wstring output =
                outputFile.empty() ? folder + L"Converted.tab" : std::wstring(outputFile);
            conversion.writeTogether(output, singleHead(header, summary));
            appendLine(summary, L"Output filename: ", output);
        } else {
            appendLine(summary, L"Cancelled.", {});
        }
        return true;
    });
}

std::wstring tabPath(std::wstring_view source) {
    if (lowerCase(source).ends_with(kSourceEnd)) source.remove_suffix(kSourceEnd.size());
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
