#include "ui/common/host_wx.h"

#include <wx/clipbrd.h>
#include <wx/dirdlg.h>
#include <wx/filename.h>
#include <wx/msgdlg.h>
#include <wx/textdlg.h>
#include <wx/toplevel.h>
#include <wx/utils.h>

#include <algorithm>

#include "services/errors.h"
#include "services/files.h"
#include "ui/common/desktop.h"
#include "ui/common/strings.h"
#include "ui/frmProgress/frmProgress.h"

namespace kestrel {
namespace {

// The window that a box stands in front of.
wxWindow* frontWindow() {
    wxWindow* window = wxGetActiveWindow();
    return window == nullptr ? nullptr : wxGetTopLevelParent(window);
}

// The toolkit breaks a line at CR and at LF.
wxString shownMessage(std::wstring_view text) {
    wxString shown = toWx(text);
    shown.Replace("\r\n", "\n");
    return shown;
}

// As shownMessage(), with its long lines broken: a prompt does not break them.
wxString shownPrompt(std::wstring_view text) {
    constexpr std::size_t kLongest = 60;  // characters
    wxString shown = shownMessage(text);
    std::size_t start = 0;
    for (std::size_t blank = shown.find(' '); blank != wxString::npos;) {
        const std::size_t next = shown.find(' ', blank + 1);
        start = std::max(start, shown.rfind('\n', blank) + 1);
        if (std::min(next, shown.size()) - start > kLongest) {
            shown[blank] = '\n';
            start = blank + 1;
        }
        blank = next;
    }
    return shown;
}

long iconStyle(Icon icon) {
    constexpr long kStyles[] = {wxICON_NONE, wxICON_INFORMATION, wxICON_QUESTION,
                                wxICON_EXCLAMATION};
    return kStyles[static_cast<std::size_t>(icon)];
}

long buttonStyle(Buttons buttons) {
    constexpr long kStyles[] = {wxOK, wxOK | wxCANCEL, wxYES_NO, wxYES_NO | wxCANCEL};
    return kStyles[static_cast<std::size_t>(buttons)];
}

}  // namespace

Answer MessagesWx::ask(std::wstring_view text, std::wstring_view title, Icon icon,
                       Buttons buttons) {
    wxMessageDialog dialog(frontWindow(), shownMessage(text), toWx(title),
                           iconStyle(icon) | buttonStyle(buttons) | wxCENTRE);
    switch (dialog.ShowModal()) {
        case wxID_OK:
            return Answer::ok;
        case wxID_YES:
            return Answer::yes;
        case wxID_NO:
            return Answer::no;
        default:
            return buttons == Buttons::yesNo ? Answer::no : Answer::cancel;
    }
}

std::optional<std::wstring> MessagesWx::prompt(std::wstring_view text, std::wstring_view title,
                                               std::wstring_view initial) {
    wxWindow* const front = frontWindow();
    wxTextEntryDialog dialog(front, shownPrompt(text), toWx(title), toWx(initial),
                             wxTextEntryDialogStyle,
                             front == nullptr ? wxDefaultPosition : front->GetPosition());
    if (dialog.ShowModal() != wxID_OK) return std::nullopt;
    return fromWx(dialog.GetValue());
}

std::optional<std::wstring> FolderPickerWx::chooseFolder(std::wstring_view title, Owner*) {
    wxDirDialog dialog(frontWindow(), toWx(title), wxString(),
                       wxDD_DEFAULT_STYLE | wxDD_DIR_MUST_EXIST);
    if (dialog.ShowModal() != wxID_OK) return std::nullopt;
    return fromWx(dialog.GetPath());
}

void ShellWx::perform(std::wstring_view file, std::wstring_view verb) {
    if (verb == L"edit") return openTextEditor(std::wstring(file));
    const wxString target = toWx(file);
    const bool address =
        target.StartsWith("http:") || target.StartsWith("https:") || target.StartsWith("mailto:");
    if (address) {
        wxLaunchDefaultBrowser(target);
    } else if (fileExists(file)) {
        wxLaunchDefaultApplication(target);
    }
}

void ClipboardWx::setText(std::wstring_view text) {
    const wxClipboardLocker lock;
    if (!lock) throw RunTimeError(kDeviceError, L"The clipboard is in use by another program");
    wxTheClipboard->SetData(new wxTextDataObject(toWx(text)));
}

std::wstring ClockWx::longTime() const {
    return longTimeText();
}

std::wstring ClockWx::longDate() const {
    return longDateText();
}

void OwnerWx::enable(bool enabled) {
    window_.Enable(enabled);
}

void OwnerWx::focus() {
    window_.Raise();
    const bool inside = focused_ != nullptr && wxGetTopLevelParent(focused_) == &window_;
    (inside ? focused_ : &window_)->SetFocus();
}

Host HostWx::interfaces() {
    return {&messages, &progress,  &fileDialog, &folderPicker,
            &shell,    &clipboard, &clock,      tank.get()};
}

std::unique_ptr<Progress> ProgressMakerWx::makeProgress() {
    return std::make_unique<ProgressWindow>();
}

}  // namespace kestrel
