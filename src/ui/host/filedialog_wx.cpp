#include <wx/filedlg.h>

#include <cwctype>

#include "base/paths.h"
#include "base/text.h"
#include "system/filesystem.h"
#include "ui/common/strings.h"
#include "ui/host/desktop.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

void appendBothCases(std::wstring& pattern, wchar_t c) {
    const bool letter = (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
    if (!letter) {
        pattern += c;
        return;
    }
    const auto lower = static_cast<wchar_t>(c | 0x20);
    const auto upper = static_cast<wchar_t>(lower - 0x20);
    pattern.append({L'[', upper, lower, L']'});
}

std::wstring eachPattern(std::wstring_view patterns) {
    std::wstring result;
    for (const std::wstring_view pattern : split(patterns, L";")) {
        if (!result.empty()) result += L';';
        result += toolkitPattern(pattern);
    }
    return result;
}

std::wstring_view patternAt(std::wstring_view filter, int index) {
    const auto pieces = split(filter, L"|");
    const std::size_t at = static_cast<std::size_t>(index < 0 ? 0 : index) * 2 + 1;
    return at < pieces.size() ? pieces[at] : std::wstring_view();
}

// The names of programs end in nothing here: all files are shown first.
int firstFilter(const FileQuestion& question) {
    const auto pieces = split(question.filter, L"|");
    const bool programs = pieces.size() > 1 && pieces[1].ends_with(L".exe");
    if (!programs || kSeparator == L'\\') return 0;
    return static_cast<int>(pieces.size() / 2) - 1;
}

}  // namespace

std::wstring toolkitPattern(std::wstring_view pattern) {
    pattern = trim(pattern);
    if (pattern == L"*.*") return L"*";
    if (kSeparator == L'\\') return std::wstring(pattern);
    std::wstring result;
    for (const wchar_t c : pattern) appendBothCases(result, c);
    return result;
}

std::wstring toolkitFilter(std::wstring_view filter) {
    std::wstring result;
    const auto pieces = split(filter, L"|");
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i != 0) result += L'|';
        result += i % 2 == 0 ? std::wstring(pieces[i]) : eachPattern(pieces[i]);
    }
    return result;
}

std::wstring extensionOf(std::wstring_view pattern) {
    pattern = trim(pattern);
    const std::size_t dot = pattern.rfind(L'.');
    if (!pattern.starts_with(L"*.") || dot != 1) return {};
    const std::wstring_view extension = pattern.substr(dot);
    return extension.find_first_of(L"*?;") == extension.npos ? std::wstring(extension)
                                                             : std::wstring();
}

bool FileDialogWx::show(const FileQuestion& question) {
    const long style = question.save ? wxFD_SAVE : wxFD_OPEN | wxFD_FILE_MUST_EXIST;
    const bool startsAtFile =
        !filesystem::isFolder(question.start) && filesystem::isFolder(folderOf(question.start));
    const std::wstring_view folder = startsAtFile ? folderOf(question.start) : question.start;
    const std::wstring_view name = startsAtFile ? fileName(question.start) : std::wstring_view();
    wxFileDialog dialog(wxGetActiveWindow(), toWx(question.title), "", shownLine(name),
                        toWx(toolkitFilter(question.filter)), style);
    startIn(dialog, std::wstring(folder));
    dialog.SetFilterIndex(firstFilter(question));
    if (dialog.ShowModal() != wxID_OK) return false;
    path_ = chosenPath(dialog);
    // A proposed name that cannot be shown stands for itself.
    if (question.save && !name.empty() && toWx(fileName(path_)) == shownLine(name)) {
        path_ = joinPath(folderOf(path_), name);
    }
    const bool bare = fileName(path_).find(L'.') == std::wstring_view::npos;
    if (question.save && bare) {
        path_ += extensionOf(patternAt(question.filter, dialog.GetFilterIndex()));
    }
    return true;
}

}  // namespace kestrel
