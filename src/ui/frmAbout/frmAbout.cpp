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

#include "services/guard.h"
#include "services/program.h"
#include "ui/common/accessible.h"
#include "ui/common/dialogend.h"
#include "ui/common/link.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
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

frmAbout::frmAbout(wxWindow* parent)
    : wxDialog(parent, wxID_ANY, "About " + toWx(gProgram().version.title)) {
    const int margin = scaled(*this, kMargin);
    const auto flags = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, margin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(header(), flags);
    column->Add(new wxStaticLine(this), flags);
    column->Add(facts(), flags);
    column->AddSpacer(margin / 2);
    column->Add(buttons(), wxSizerFlags().Expand().Border(wxALL, margin));
    SetSizerAndFit(column);
    CentreOnParent();
}

wxSizer* frmAbout::header() {
    const Version& version = gProgram().version;
    auto* title = new wxStaticText(this, wxID_ANY, toWx(version.title));
    title->SetFont(GetFont().Bold().Scaled(kTitleScale));
    auto* words = new wxBoxSizer(wxVERTICAL);
    words->Add(title);
    words->Add(new wxStaticText(this, wxID_ANY,
                                toWx(version.fileDescription) + ", version " + versionNumber()));
    words->AddSpacer(scaled(*this, kMargin / 2));
    words->Add(new wxStaticText(this, wxID_ANY, "Made by the Kestrel developers"));
    if (wxWindow* link = makeLink(this)) words->Add(link);
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    auto* picture = new wxStaticBitmap(this, wxID_ANY, icon("kestrel", *this, kIconSize));
    setAccessibleName(*picture, "Kestrel");
    row->Add(picture);
    row->Add(words, wxSizerFlags(1).Border(wxLEFT, scaled(*this, kMargin)));
    return row;
}

wxSizer* frmAbout::facts() {
    auto* grid = new wxFlexGridSizer(2, wxSize(scaled(*this, kMargin), scaled(*this, kMargin / 3)));
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
    cmdCommands[0] = new wxButton(this, wxID_CLOSE, "C&lose");
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
    frmAbout box(parent);
    showModal(box);
}

}  // namespace kestrel
