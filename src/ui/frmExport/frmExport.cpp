#include "ui/frmExport/frmExport.h"

#include "base/paths.h"
#include "gas/gasnames.h"
#include "services/files.h"
#include "services/pickers.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "text/convert.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kWidth = 560;  // DIP

}  // namespace

frmExport::frmExport(wxWindow* parent)
    : PathDialog(parent, "Convert Multiple .gas to TAB Delimited", "frmExport") {
    layOut();
    bindCommands();
    acceptDrops([this](const std::wstring& path) { return drop(path); });
    pathsChanged();
    modeChanged();
    cboSourceFolder->SetFocus();
}

wxSizer* frmExport::buildMain() {
    return addPaths(
        fraMain,
        {{lblGeneric[lblSource], cboSourceFolder, cmdCommands[kPickSource], "&Source Folder",
          "cboSourceFolder", L"cnv1.his", "Choose the Source Folder"},
         {lblGeneric[lblTarget], cboTarget, cmdCommands[kPickTarget], "&Destination Filename",
          "cboTarget", L"cnv2.his", "Choose the Destination Filename"}});
}

wxSizer* frmExport::buildOptional() {
    auto* box = addOptional(fraOptional);
    chkSingleFile = new wxCheckBox(fraOptional, wxID_ANY, "Single output file?", wxDefaultPosition,
                                   wxDefaultSize, 0, wxDefaultValidator, "chkSingleFile");
    auto* grid = addGrid(2);
    const auto add = [&](Label label, const char* text, const char* name) {
        return addText(*grid, *grid, lblGeneric[label], fraOptional, text, name);
    };
    txtTitle = add(lblTitle, "Title:", "txtTitle");
    txtAuthor = add(lblAuthor, "Author:", "txtAuthor");
    txtBuild = add(lblBuild, "Build:", "txtBuild");
    txtCopyright = add(lblCopyright, "Copyright:", "txtCopyright");
    box->Add(chkSingleFile, wxSizerFlags().Border(wxALL, scaled(*this, kGap)));
    box->Add(grid, wxSizerFlags().Expand().Border(wxALL, scaled(*this, kGap)));
    return box;
}

wxSizer* frmExport::buildButtons() {
    cmdCommands[kConvert] = new wxButton(this, wxID_ANY, "&Convert");
    cmdCommands[kDone] = new wxButton(this, wxID_ANY, "&Done");
    cmdCommands[kConvert]->SetDefault();
    return addButtons(nullptr, {cmdCommands[kConvert], cmdCommands[kDone]});
}

void frmExport::layOut() {
    const int margin = scaled(*this, kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildMain(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(buildOptional(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    column->Add(buildButtons(), wxSizerFlags().Expand().Border(wxALL, margin));
    // The boxes of both frames stand below each other.
    alignLabels(lblGeneric);
    fitTo(column, kWidth);
}

void frmExport::bindCommands() {
    onPress(*cmdCommands[kConvert], [this] { convert(); });
    onPress(*cmdCommands[kPickSource], [this] {
        chooseFolder(*cboSourceFolder,
                     L"Select the Source Folder that contains your .gas files to be converted. ");
    });
    onPress(*cmdCommands[kPickTarget], [this] { pickTarget(); });
    cmdCommands[kDone]->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });
    chkSingleFile->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { modeChanged(); });
}

void frmExport::pathsChanged() {
    cmdCommands[kConvert]->Enable(!cboSourceFolder->text().empty());
}

void frmExport::modeChanged() {
    const bool single = chkSingleFile->GetValue();
    for (wxWindow* control : std::initializer_list<wxWindow*>{
             lblGeneric[lblTarget], cboTarget, cmdCommands[kPickTarget], lblGeneric[lblTitle],
             txtTitle, lblGeneric[lblAuthor], txtAuthor, lblGeneric[lblBuild], txtBuild,
             lblGeneric[lblCopyright], txtCopyright}) {
        control->Enable(single);
    }
    cboTarget->SetHint(single ? "Converted.tab in the source folder" : "");
}

void frmExport::convert() {
    std::wstring source = cboSourceFolder->takePath();
    const std::wstring target = cboTarget->takePath();
    if (source.empty()) return;
    const bool single = chkSingleFile->GetValue();
    const bool named = single && !target.empty();
    if (!mayMake(source, named ? singleOutput(source, target) : std::wstring())) return;
    std::wstring summary;
    ConversionOutcome outcome;
    OwnerWx owner(*this);
    Progress* progress = nullptr;
    const bool converted =
        gblnConvertFolder(source, summary, target, single ? kSingleFile : std::int16_t{0},
                          single ? header() : std::wstring(), &owner, progress, &outcome);
    // Kept: a failure has the icon of a success.
    tellUser(converted ? closingMessage(outcome, summary)
                       : L"File conversion failed! Please verify source folder contents, all other "
                         L"settings and then try again.\r\nSee \"\"About\"\" for reporting issues",
             Icon::information);
}

std::wstring frmExport::header() const {
    return conversionHeader(fromWx(txtTitle->GetValue()), fromWx(txtAuthor->GetValue()),
                            fromWx(txtBuild->GetValue()), fromWx(txtCopyright->GetValue()));
}

void frmExport::pickTarget() {
    // Kept: a filter for the sources, though the target is none.
    choose(*cboTarget, askForFile(L"Select the Target Filename and Location",
                                  L"Gas Files (*.gas)|*.gas", true, cboSourceFolder->text()));
}

bool frmExport::drop(const std::wstring& path) {
    const bool folder = filesystem::isFolder(path);
    if (!folder && !(fileExists(path) && isGasName(path))) return false;
    choose(*cboSourceFolder, folder ? path : std::wstring(folderOf(path)));
    return true;
}

}  // namespace kestrel
