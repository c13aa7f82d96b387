#include "ui/host/host_wx.h"

#include <wx/app.h>
#include <wx/clipbrd.h>
#include <wx/dirdlg.h>
#include <wx/filename.h>
#include <wx/textctrl.h>
#include <wx/textdlg.h>
#include <wx/toplevel.h>
#include <wx/utils.h>

#include <algorithm>

#include "base/error.h"
#include "services/files.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "ui/common/accessible.h"
#include "ui/common/dialogend.h"
#include "ui/common/strings.h"
#include "ui/common/style.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/host/desktop.h"
#include "ui/host/messagebox.h"

namespace kestrel {
namespace {

// With its long lines broken: a prompt does not break them, but at CR and at LF.
wxString shownPrompt(std::wstring_view text) {
    constexpr std::size_t kLongest = 60;  // characters
    wxString shown = shownLines(text);
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

}  // namespace

wxWindow* frontWindow() {
    wxWindow* window = wxGetActiveWindow();
    if (window == nullptr) window = wxTheApp->GetTopWindow();
    return window == nullptr ? nullptr : wxGetTopLevelParent(window);
}

Answer MessagesWx::ask(std::wstring_view text, std::wstring_view title, Icon icon,
                       Buttons buttons) {
    // A file that cannot be read at the start is told while the window is on its way.
    if (const wxWindow* front = frontWindow()) awaitPlace(*front);
    return showMessageBox(frontWindow(), text, title, icon, buttons);
}

std::optional<std::wstring> MessagesWx::prompt(std::wstring_view text, std::wstring_view title,
                                               std::wstring_view initial) {
    wxWindow* const front = frontWindow();
    wxTextEntryDialog dialog(front, shownPrompt(text), toWx(title), toWx(initial),
                             wxTextEntryDialogStyle & ~wxCENTRE);
    for (wxWindow* control : dialog.GetChildren()) {
        if (dynamic_cast<wxTextCtrl*>(control) == nullptr) continue;
        setAccessibleName(*control, toWx(text.substr(0, text.find_first_of(L"\r\n"))));
    }
    if (front != nullptr) placeAt(dialog, front->GetPosition());
    if (showModal(dialog) != wxID_OK) return std::nullopt;
    return fromWx(dialog.GetValue());
}

std::optional<std::wstring> FolderPickerWx::chooseFolder(std::wstring_view title, Owner*,
                                                         std::wstring_view start) {
    const bool there = filesystem::isFolder(start);
    wxDirDialog dialog(frontWindow(), toWx(title), "", wxDD_DEFAULT_STYLE | wxDD_DIR_MUST_EXIST);
    startIn(dialog, there ? std::wstring(start) : gProgram().lastFolder);
    if (dialog.ShowModal() != wxID_OK) return std::nullopt;
    gProgram().lastFolder = chosenPath(dialog);
    return gProgram().lastFolder;
}

void ShellWx::perform(std::wstring_view file, std::wstring_view verb) {
    if (verb == L"edit") return openTextEditor(std::wstring(file));
    const wxString target = toWx(file);
    const bool address =
        target.StartsWith("http:") || target.StartsWith("https:") || target.StartsWith("mailto:");
    const bool opened = address ? wxLaunchDefaultBrowser(target)
                                : fileExists(file) && wxLaunchDefaultApplication(target);
    if (!opened) {
        throw RunTimeError(kFileNotFound,
                           L"This desktop has no program that opens " + std::wstring(file));
    }
}

void ClipboardWx::setText(std::wstring_view text) {
    const wxClipboardLocker lock;
    if (!lock) throw RunTimeError(kDeviceError, L"The clipboard is in use by another program");
    copied_ = wxTheClipboard->SetData(new wxTextDataObject(toWx(text))) || copied_;
}

void ClipboardWx::keep() const {
    if (copied_) wxTheClipboard->Flush();
}

std::wstring ClockWx::longTime() const {
    return longTimeText();
}

std::wstring ClockWx::longDate() const {
    return longDateText();
}

OwnerWx::OwnerWx(wxWindow& window, wxWindow* otherwise) : window_(window), focused_(otherwise) {
    wxWindow* focus = wxWindow::FindFocus();
    // Not a tool bar, which the toolkit tells of after a click on a tool.
    const bool holds = focus != nullptr && window.IsDescendant(focus);
    if (holds && focus->CanAcceptFocusFromKeyboard()) focused_ = focus;
}

void OwnerWx::enable(bool enabled) {
    window_.Enable(enabled);
    wxDialog* dialog = asModal(&window_);
    if (enabled && dialog != nullptr) takeInput(*dialog, true);
}

void OwnerWx::focus() {
    window_.Raise();
    (focused_ ? focused_.get() : &window_)->SetFocus();
}

Host HostWx::interfaces() {
    return {&messages,  &progress, &fileDialog, &folderPicker, &shell,
            &clipboard, &clock,    tank.get(),  archives.get()};
}

std::unique_ptr<Progress> ProgressMakerWx::makeProgress() {
    return std::make_unique<ProgressWindow>();
}

}  // namespace kestrel
