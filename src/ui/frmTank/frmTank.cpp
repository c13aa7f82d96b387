#include "ui/frmTank/frmTank.h"

#include <wx/utils.h>

#include <memory>
#include <utility>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "services/files.h"
#include "services/pickers.h"
#include "services/program.h"
#include "services/progress.h"
#include "services/shell.h"
#include "tank/reports.h"
#include "ui/common/buttons.h"
#include "ui/common/link.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmArchive/frmArchive.h"
#include "ui/frmView/frmView.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kWidth = 520;  // DIP

std::wstring askForName(std::wstring_view initial) {
    return promptUser(
        L"Please enter the name of the Child (i.e. object or template name) to search for:"
        L"\r\n\r\nNote: This sub-string search is not case sensitive and does not support "
        L"regular expressions or wildcards. Only the first find will be returned.",
        L"Find Child", initial);
}

}  // namespace

frmTank::frmTank(wxWindow* parent, OpenFile openFile)
    : PathDialog(parent, "Mini-Orvane", "frmTank"), openFile_(std::move(openFile)) {
    layOut();
    bindCommands();
    acceptDrops([this](const std::wstring& dropped) { return drop(dropped); });
    pathsChanged();
    cboTankFilename->SetFocus();
}

wxSizer* frmTank::buildName() {
    auto* box = new wxStaticBoxSizer(wxHORIZONTAL, this, "&Selected Tank Filename");
    fraName = box->GetStaticBox();
    fraName->SetName("fraName");
    cboTankFilename = addPathBox(fraName, "cboTankFilename", "Selected Tank Filename", L"mor.his");
    cmdCommands[kPick] =
        addPictureButton(fraName, "folder", "Choose the Tank Filename", "Open Recent");
    const int gap = scaled(*this, kGap);
    box->Add(cboTankFilename, wxSizerFlags(1).CentreVertical().Border(wxALL, gap));
    box->Add(cmdCommands[kPick],
             wxSizerFlags().CentreVertical().Border(wxTOP | wxBOTTOM | wxRIGHT, gap));
    return box;
}

wxSizer* frmTank::buildTools() {
    auto* box = new wxStaticBoxSizer(wxHORIZONTAL, this, "Tools");
    fraTools = box->GetStaticBox();
    fraTools->SetName("fraTools");
    const auto picture = [this](const char* icon, const char* tooltip) {
        return addPictureButton(fraTools, icon, tooltip, tooltip);
    };
    cmdCommands[kFind] = picture("find", "Find Object by Name");
    cmdCommands[kProperties] = picture("properties", "Tank Properties");
    cmdCommands[kTest] = new wxButton(fraTools, wxID_ANY, "&Test Tank");
    cmdCommands[kTest]->SetToolTip("Test Tank");
    cmdCommands[kList] = picture("listed", "Generate a list (Name or Full)");
    cmdCommands[kBrowse] = new wxButton(fraTools, wxID_ANY, "&Browse...");
    cmdCommands[kBrowse]->SetToolTip("Show what the Tank holds, and extract files");
    const int gap = scaled(*this, kGap);
    box->AddSpacer(gap);
    for (const Command command : {kFind, kProperties, kTest, kList, kBrowse}) {
        box->Add(cmdCommands[command],
                 wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM | wxRIGHT, gap));
    }
    return box;
}

wxSizer* frmTank::buildButtons() {
    lblInfo = makeLink(this, "Click for more info on Orvane...");
    cmdCommands[kDone] = new wxButton(this, wxID_ANY, "&Done");
    cmdCommands[kDone]->SetToolTip("Also use ESC");
    return addButtons(lblInfo, {cmdCommands[kDone]});
}

void frmTank::layOut() {
    const int margin = scaled(*this, kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildName(), wxSizerFlags().Expand().Border(wxALL, margin));
    column->Add(buildTools(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    column->Add(buildButtons(), wxSizerFlags().Expand().Border(wxALL, margin));
    fitTo(column, kWidth);
}

void frmTank::bindCommands() {
    onPress(*cmdCommands[kPick], [this] { pick(); });
    onPress(*cmdCommands[kFind], [this] { find(); });
    onPress(*cmdCommands[kTest], [this] { test(); });
    onPress(*cmdCommands[kList], [this] { list(); });
    onPress(*cmdCommands[kProperties], [this] { showProperties(); });
    onPress(*cmdCommands[kBrowse], [this] { browse(); });
    cmdCommands[kDone]->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });
}

void frmTank::pathsChanged() {
    const bool given = !cboTankFilename->isBlank();
    for (const Command command : {kFind, kTest, kList, kProperties, kBrowse}) {
        cmdCommands[command]->Enable(given);
    }
}

std::wstring frmTank::path() {
    return std::wstring(trim(cboTankFilename->takePath()));
}

void frmTank::pick() {
    choose(*cboTankFilename, askForFile(L"Select a TANK File to view", kTankFiles, false));
}

bool frmTank::drop(const std::wstring& path) {
    if (!fileExists(path)) return false;
    choose(*cboTankFilename, path);
    return true;
}

void frmTank::find() {
    const std::wstring searched = askForName(lastSearch_);
    if (searched.empty()) return;
    std::wstring report;
    OwnerWx owner(*this);
    const bool found = [&] {
        const wxBusyCursor busyCursor;
        return gblnFindChild(path(), searched, 0, report, &owner);
    }();
    if (!found) {
        tellUser(L"Search name not found!", Icon::exclamation);
        return;
    }
    if (report.empty()) return;
    lastSearch_ = searched;
    showReport(std::move(report), cboTankFilename->text());
}

void frmTank::test() {
    const bool passed = gblnTestTank(path());
    tellUser(passed ? L"Tank test passed." : L"Tank test failed!",
             passed ? Icon::information : Icon::exclamation);
}

void frmTank::list() {
    const Answer names = askUser(
        L"Which list do you want?\r\nSelect Yes for a 'Name List', No for a 'Full List', or "
        L"Cancel to exit.",
        Icon::question, Buttons::yesNoCancel);
    if (names == Answer::cancel) return;
    std::wstring report;
    OwnerWx owner(*this);
    const bool listed = [&] {
        const wxBusyCursor busyCursor;
        return gblnListTank(path(), report, &owner, names == Answer::yes ? kNameList : kFullList);
    }();
    if (!listed) {
        tellUser(L"Tank list failed!", Icon::exclamation);
    } else if (!report.empty()) {
        showReport(std::move(report), path());
    }
}

void frmTank::showProperties() {
    OwnerWx owner(*this);
    gShowProps(path(), &owner);
}

void frmTank::browse() {
    std::unique_ptr<TankContents> contents;
    try {
        OwnerWx owner(*this);
        const std::wstring path = this->path();
        const ProgressScope scope(nullptr, &owner, L"Processing: " + std::wstring(fileName(path)));
        contents = std::make_unique<TankContents>(path, scope.dialog());
        if (scope.didCancel()) return;
    } catch (const RunTimeError& error) {
        return tellUser(error.description(), Icon::exclamation);
    }
    frmArchive window(this, std::move(contents), openFile_);
    showModal(window);
    copy_ = window.copy();
    if (!copy_.empty()) Close();
}

void frmTank::showReport(std::wstring report, std::wstring_view path) {
    frmView viewer(this, openFile_);
    // The pane has its own; two of a large report need not wait for the user.
    viewer.TextBlock(std::exchange(report, {}));
    viewer.CanEdit(false);
    viewer.SetTitle(shownLine(std::wstring(L"Tank List: ").append(path)));
    showModal(viewer);
}

}  // namespace kestrel
