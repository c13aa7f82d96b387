#include "ui/host/properties_wx.h"

#include <wx/dialog.h>
#include <wx/filename.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "base/paths.h"
#include "ui/common/accessible.h"
#include "ui/common/dialogend.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/host/desktop.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kTextWidth = 340;  // DIP
constexpr int kMargin = 12;

std::wstring shownTime(const wxDateTime& time) {
    return time.IsValid() ? fromWx(time.FormatISOCombined(' ')) : L"unknown";
}

std::wstring shownSize(const wxFileName& file) {
    const wxULongLong size = file.GetSize();
    if (size == wxInvalidSize) return L"unknown";
    const wxString bytes = size.ToString() + " bytes";
    if (size < 1024) return fromWx(bytes);
    return fromWx(wxFileName::GetHumanReadableSize(size, "", 1) + " (" + bytes + ")");
}

std::wstring shownPermissions(const wxFileName& file) {
    std::wstring text = file.IsFileReadable() ? L"can be read" : L"cannot be read";
    text += file.IsFileWritable() ? L", can be written" : L", cannot be written";
    return file.IsFileExecutable() ? text + L", can be run" : text;
}

}  // namespace

std::vector<std::pair<std::wstring, std::wstring>> fileFacts(const std::wstring& path) {
    const wxFileName file(toWx(path));
    wxDateTime accessed;
    wxDateTime modified;
    if (file.FileExists()) file.GetTimes(&accessed, &modified, nullptr);
    return {{L"Name:", fromWx(file.GetFullName())},
            {L"Folder:", fromWx(file.GetPath())},
            {L"Size:", shownSize(file)},
            {L"Modified:", shownTime(modified)},
            {L"Opened:", shownTime(accessed)},
            {L"Permissions:", shownPermissions(file)}};
}

void showOwnProperties(wxWindow* parent, const std::wstring& path) {
    wxDialog sheet(parent, wxID_ANY, "Properties of " + shownLine(fileName(path)),
                   wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
    const int margin = scaled(sheet, kMargin);
    auto* grid = new wxFlexGridSizer(2, margin / 2, margin);
    grid->AddGrowableCol(1);
    for (const auto& [label, text] : fileFacts(path)) {
        grid->Add(new wxStaticText(&sheet, wxID_ANY, toWx(label)), wxSizerFlags().CentreVertical());
        // A field, so that a path can be selected and copied.
        auto* field = new wxTextCtrl(&sheet, wxID_ANY, toWx(text), wxDefaultPosition,
                                     wxSize(scaled(sheet, kTextWidth), -1), wxTE_READONLY);
        setAccessibleName(*field, toWx(label).BeforeLast(':'));
        grid->Add(field, wxSizerFlags().Expand());
    }
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(grid, wxSizerFlags(1).Expand().Border(wxALL, margin));
    column->Add(sheet.CreateButtonSizer(wxOK), wxSizerFlags().Expand().Border(wxALL, margin));
    sheet.SetSizerAndFit(column);
    sheet.SetEscapeId(wxID_OK);
    sheet.CentreOnParent();
    showModal(sheet);
}

void ShellWx::properties(std::wstring_view path, Owner*) {
    const std::wstring file(path);
    if (!showDesktopProperties(file)) showOwnProperties(frontWindow(), file);
}

}  // namespace kestrel
