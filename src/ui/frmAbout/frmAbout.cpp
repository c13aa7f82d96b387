#include "ui/frmAbout/frmAbout.h"

#include <wx/platinfo.h>
#include <wx/statbmp.h>
#include <wx/statline.h>
#include <wx/stattext.h>
#include <wx/stc/stc.h>
#include <wx/textbuf.h>
#include <wx/utils.h>
#include <wx/versioninfo.h>

#include <utility>
#include <vector>

#include "services/errors.h"
#include "services/program.h"
#include "services/shell.h"
#include "ui/common/strings.h"
#include "ui/icons/icons.h"

namespace kestrel {
namespace {

constexpr int kMargin = 12;  // DIP
constexpr int kIconSize = 64;
constexpr float kTitleScale = 1.6F;

using Fact = std::pair<wxString, wxString>;

wxString dotted(int major, int minor, int micro) {
    return wxString::Format("%d.%d.%d", major, minor, micro);
}

Fact library(const wxVersionInfo& info) {
    return {info.GetName(), dotted(info.GetMajor(), info.GetMinor(), info.GetMicro())};
}

Fact toolkit() {
    const wxPlatformInfo& platform = wxPlatformInfo::Get();
    return {platform.GetPortIdShortName().Upper(),
            dotted(platform.GetToolkitMajorVersion(), platform.GetToolkitMinorVersion(),
                   platform.GetToolkitMicroVersion())};
}

wxString compiler() {
#if defined(__clang__)
    return wxString("Clang ") + __clang_version__;
#else
    return wxString("GCC ") + __VERSION__;
#endif
}

wxString standardLibrary() {
#if defined(_LIBCPP_VERSION)
    return wxString::Format("libc++ %d", _LIBCPP_VERSION);
#else
    return wxString::Format("libstdc++ %d", _GLIBCXX_RELEASE);
#endif
}

std::vector<Fact> aboutFacts() {
    return {library(wxGetLibraryVersionInfo()),
            toolkit(),
            library(wxStyledTextCtrl::GetLibraryVersionInfo()),
            {"C++ library", standardLibrary()},
            {"Compiler", compiler()},
            {"System", wxGetOsDescription()}};
}

wxString versionNumber() {
    const Version& version = gProgram().version;
    return dotted(version.major, version.minor, version.revision);
}

void copyText() {
    guarded(L"cmdCommands_Click", [] {
        if (Clipboard* clipboard = gProgram().host.clipboard) clipboard->setText(aboutText());
    });
}

}  // namespace

std::wstring aboutText() {
    const wxString lineEnd = wxTextBuffer::GetEOL();
    wxString text = toWx(gProgram().version.fileDescription) + " " + versionNumber() + lineEnd;
    for (const auto& [label, value] : aboutFacts()) text += label + ": " + value + lineEnd;
    return fromWx(text);
}

frmAbout::frmAbout(wxWindow* parent, std::wstring_view website)
    : wxDialog(parent, wxID_ANY, "About " + toWx(gProgram().version.title)) {
    const int margin = FromDIP(kMargin);
    const auto flags = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, margin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(header(website), flags);
    column->Add(new wxStaticLine(this), flags);
    column->Add(facts(), flags);
    column->AddSpacer(margin / 2);
    column->Add(buttons(), wxSizerFlags().Expand().Border(wxALL, margin));
    SetSizerAndFit(column);
    CentreOnParent();
}

wxSizer* frmAbout::header(std::wstring_view website) {
    const Version& version = gProgram().version;
    auto* title = new wxStaticText(this, wxID_ANY, toWx(version.title));
    title->SetFont(GetFont().Bold().Scaled(kTitleScale));
    auto* words = new wxBoxSizer(wxVERTICAL);
    words->Add(title);
    words->Add(new wxStaticText(this, wxID_ANY,
                                toWx(version.fileDescription) + ", version " + versionNumber()));
    words->AddSpacer(FromDIP(kMargin / 2));
    words->Add(new wxStaticText(this, wxID_ANY, "Made by the Kestrel developers"));
    words->Add(link(website));
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(new wxStaticBitmap(this, wxID_ANY, icon("kestrel", *this, kIconSize)));
    row->Add(words, wxSizerFlags(1).Border(wxLEFT, FromDIP(kMargin)));
    return row;
}

wxWindow* frmAbout::link(std::wstring_view website) {
    if (website.empty()) {
        return new wxStaticText(this, wxID_ANY, "No web page is set for this build.");
    }
    const wxString address = toWx(website);
    lnkWebsite = new wxHyperlinkCtrl(this, wxID_ANY, address, address);
    lnkWebsite->Bind(wxEVT_HYPERLINK, [](const wxHyperlinkEvent& event) {
        gShellExec(fromWx(event.GetURL()), L"open");
    });
    return lnkWebsite;
}

wxSizer* frmAbout::facts() {
    auto* grid = new wxFlexGridSizer(2, FromDIP(wxSize(kMargin, kMargin / 3)));
    for (const auto& [label, value] : aboutFacts()) {
        grid->Add(new wxStaticText(this, wxID_ANY, label + ":"));
        auto* text = new wxStaticText(this, wxID_ANY, "");
        text->SetLabelText(value);
        grid->Add(text);
    }
    return grid;
}

wxSizer* frmAbout::buttons() {
    cmdCommands[1] = new wxButton(this, wxID_COPY, "&Copy");
    cmdCommands[1]->SetToolTip("Copies the versions shown here, for a report of a fault");
    cmdCommands[1]->Bind(wxEVT_BUTTON, [](wxCommandEvent&) { copyText(); });
    cmdCommands[0] = new wxButton(this, wxID_CLOSE, "Close");
    cmdCommands[0]->SetDefault();
    cmdCommands[0]->SetFocus();
    SetEscapeId(wxID_CLOSE);
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(cmdCommands[1]);
    row->AddStretchSpacer();
    row->Add(cmdCommands[0]);
    return row;
}

void showAbout(wxWindow* parent) {
    frmAbout(parent).ShowModal();
}

}  // namespace kestrel
