#include "tank/buildmemory.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"
#include "services/histories.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kFile = L"zeltor3.his";
constexpr std::wstring_view kBetween = L"\t";
constexpr std::size_t kTexts = 5;
constexpr std::size_t kLongest = 32767;  // of an entry of a history

// What would end a field or a line, and the letter that stands for it behind a "\".
constexpr std::array<std::pair<wchar_t, wchar_t>, 4> kMarks{
    {{L'\\', L'\\'}, {L'\t', L't'}, {L'\r', L'r'}, {L'\n', L'n'}}};

std::wstring written(std::wstring_view text) {
    std::wstring result;
    for (const wchar_t c : text) {
        const auto* mark = std::ranges::find(kMarks, c, &std::pair<wchar_t, wchar_t>::first);
        if (mark != kMarks.end()) result += L'\\';
        result += mark == kMarks.end() ? c : mark->second;
    }
    return result;
}

std::wstring read(std::wstring_view field) {
    std::wstring result;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool marked = field[i] == L'\\' && i + 1 < field.size();
        if (marked) ++i;
        const auto* mark =
            std::ranges::find(kMarks, field[i], &std::pair<wchar_t, wchar_t>::second);
        result += marked && mark != kMarks.end() ? mark->first : field[i];
    }
    return result;
}

// The texts in the order of the line.
template <class Fields>
auto textsOf(Fields& fields) {
    return std::array<decltype(&fields.title), kTexts>{&fields.title, &fields.author, &fields.build,
                                                       &fields.copyright, &fields.priority};
}

std::wstring startOf(std::wstring_view target) {
    return written(target).append(kBetween);
}

}  // namespace

BuildMemory::BuildMemory() {
    gLoadHistory(*this, kFile);
}

std::optional<BuildFields> BuildMemory::find(std::wstring_view target) const {
    const std::wstring start = startOf(target);
    for (const std::wstring_view line : lines_) {
        const auto values = split(line, kBetween);
        // The target, the texts, and a letter for each flag.
        if (!line.starts_with(start) || values.size() != kTexts + 2) continue;
        BuildFields fields;
        for (std::size_t i = 0; i < kTexts; ++i) *textsOf(fields)[i] = read(values[i + 1]);
        const std::wstring_view flags = values.back();
        fields.dev = flags.find(L'd') != flags.npos;
        fields.multiPlayer = flags.find(L'm') != flags.npos;
        fields.isProtected = flags.find(L'p') != flags.npos;
        return fields;
    }
    return std::nullopt;
}

void BuildMemory::keep(std::wstring_view target, const BuildFields& fields) {
    std::wstring line = startOf(target);
    for (const std::wstring* text : textsOf(fields)) line.append(written(*text)).append(kBetween);
    line.append(L"-").append(fields.dev ? L"d" : L"").append(fields.multiPlayer ? L"m" : L"");
    line.append(fields.isProtected ? L"p" : L"");
    if (line.size() > kLongest) return;
    std::erase_if(lines_, [start = startOf(target)](const std::wstring& one) {
        return one.starts_with(start);
    });
    gAddHistoryItem(*this, line);
}

void BuildMemory::save() const {
    gSaveHistory(*this, kFile);
}

void BuildMemory::insert(std::size_t index, std::wstring_view text) {
    lines_.emplace(lines_.begin() + static_cast<std::ptrdiff_t>(index), text);
}

void BuildMemory::removeAt(std::size_t index) {
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(index));
}

}  // namespace kestrel
