#include "ui/frmExport/frmExport.h"

#include <wx/dnd.h>

#include <algorithm>

#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "text/convert.h"
#include "ui/common/buttons.h"
#include "ui/common/host_wx.h"
#include "ui/common/strings.h"

namespace kestrel {
namespace {

constexpr long kStyle = wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER | wxMINIMIZE_BOX;
constexpr int kWidth = 560;  // DIP
constexpr int kMargin = 12;
constexpr int kGap = 6;
constexpr std::wstring_view kSourceHistory = L"cnv1.his";
constexpr std::wstring_view kTargetHistory = L"cnv2.his";

class FolderDropTarget final : public wxFileDropTarget {
  public:
    explicit FolderDropTarget(frmExport& window) : window_(window) {}

    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& files) override {
        return std::any_of(files.begin(), files.end(),
                           [this](const wxString& file) { return window_.drop(fromWx(file)); });
    }

  private:
    frmExport& window_;
};

}  // namespace

frmExport::frmExport(wxWindow* parent)
    : wxDialog(parent, wxID_ANY, "Convert Multiple .gas to TAB Delimited", wxDefaultPosition,
               wxDefaultSize, kStyle, "frmExport") {
    layOut();
    bindWindow();
    gLoadHistory(*cboSourceFolder, kSourceHistory);
    gLoadHistory(*cboTarget, kTargetHistory);
    sourceChanged();
    modeChanged();
    cboSourceFolder->SetFocus();
}

wxSizer* frmExport::buildMain() {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this);
    fraMain = box->GetStaticBox();
    fraMain->SetName("fraMain");
    auto* grid = new wxFlexGridSizer(3, FromDIP(wxSize(kGap, kGap)));
    grid->AddGrowableCol(1);
    const auto centred = wxSizerFlags().CentreVertical();
    const auto addRow = [&](Label label, const wxString& text, HistoryCombo*& combo,
                            const wxString& name, Command picker, const wxString& pickerName) {
        grid->Add(addLabel(label, fraMain, text), centred);
        combo = addCombo(fraMain, name);
        grid->Add(combo, wxSizerFlags().Expand());
        cmdCommands[picker] = addPictureButton(fraMain, "folder", pickerName, "Open Recent");
        grid->Add(cmdCommands[picker], centred);
    };
    addRow(lblSource, "&Source Folder", cboSourceFolder, "cboSourceFolder", kPickSource,
           "Choose the Source Folder");
    addRow(lblTarget, "&Destination Filename", cboTarget, "cboTarget", kPickTarget,
           "Choose the Destination Filename");
    box->Add(grid, wxSizerFlags().Expand().Border(wxALL, FromDIP(kGap)));
    return box;
}

wxSizer* frmExport::buildOptional() {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this, "&Optional");
    fraOptional = box->GetStaticBox();
    fraOptional->SetName("fraOptional");
    chkSingleFile = new wxCheckBox(fraOptional, wxID_ANY, "Single output file?", wxDefaultPosition,
                                   wxDefaultSize, 0, wxDefaultValidator, "chkSingleFile");
    auto* grid = new wxFlexGridSizer(2, FromDIP(wxSize(kGap, kGap)));
    grid->AddGrowableCol(1);
    txtTitle = addText(*grid, lblTitle, "Title:", "txtTitle");
    txtAuthor = addText(*grid, lblAuthor, "Author:", "txtAuthor");
    txtBuild = addText(*grid, lblBuild, "Build:", "txtBuild");
    txtCopyright = addText(*grid, lblCopyright, "Copyright:", "txtCopyright");
    box->Add(chkSingleFile, wxSizerFlags().Border(wxALL, FromDIP(kGap)));
    box->Add(grid, wxSizerFlags().Expand().Border(wxALL, FromDIP(kGap)));
    return box;
}

wxSizer* frmExport::buildButtons() {
    cmdCommands[kConvert] = new wxButton(this, wxID_ANY, "&Convert");
    cmdCommands[kDone] = new wxButton(this, wxID_ANY, "&Done");
    cmdCommands[kConvert]->SetDefault();
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->AddStretchSpacer();
    row->Add(cmdCommands[kConvert]);
    row->Add(cmdCommands[kDone], wxSizerFlags().Border(wxLEFT, FromDIP(kGap)));
    return row;
}

wxStaticText* frmExport::addLabel(Label index, wxWindow* parent, const wxString& text) {
    lblGeneric[index] = new wxStaticText(parent, wxID_ANY, text);
    return lblGeneric[index];
}

HistoryCombo* frmExport::addCombo(wxWindow* parent, const wxString& name) {
    auto* combo = new HistoryCombo(parent, name);
    combo->onChange = [this] { sourceChanged(); };
    combo->onEnter = [this] { convertOnEnter(); };
    return combo;
}

wxTextCtrl* frmExport::addText(wxFlexGridSizer& grid, Label label, const wxString& text,
                               const wxString& name) {
    grid.Add(addLabel(label, fraOptional, text), wxSizerFlags().CentreVertical());
    auto* box = new wxTextCtrl(fraOptional, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0,
                               wxDefaultValidator, name);
    grid.Add(box, wxSizerFlags().Expand());
    return box;
}

void frmExport::layOut() {
    const int margin = FromDIP(kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildMain(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(buildOptional(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    column->Add(buildButtons(), wxSizerFlags().Expand().Border(wxALL, margin));
    // The boxes of both frames stand below each other.
    int width = 0;
    for (const wxStaticText* label : lblGeneric) width = std::max(width, label->GetBestSize().x);
    for (wxStaticText* label : lblGeneric) label->SetMinSize(wxSize(width, -1));
    SetSizerAndFit(column);
    SetClientSize(std::max(FromDIP(kWidth), GetClientSize().x), GetClientSize().y);
    CentreOnParent();
}

// More room helps long paths, but no row can use more height. What the frame
// adds to it is known once the dialog is shown.
void frmExport::keepHeight() {
    const wxSize least = GetSizer()->CalcMin();
    SetMinClientSize(least);
    SetMaxClientSize(wxSize(wxDefaultCoord, least.y));
}

void frmExport::bindWindow() {
    const auto onClick = [this](Command index, void (frmExport::*handler)()) {
        cmdCommands[index]->Bind(wxEVT_BUTTON, [this, handler](wxCommandEvent&) {
            guarded(L"cmdCommands_Click", [&] { (this->*handler)(); });
        });
    };
    onClick(kConvert, &frmExport::convert);
    onClick(kPickSource, &frmExport::pickSource);
    onClick(kPickTarget, &frmExport::pickTarget);
    cmdCommands[kDone]->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });
    chkSingleFile->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { modeChanged(); });
    Bind(wxEVT_CHAR_HOOK, &frmExport::keyPressed, this);
    Bind(wxEVT_CLOSE_WINDOW, &frmExport::closing, this);
    Bind(wxEVT_SHOW, [this](wxShowEvent& event) {
        if (event.IsShown()) CallAfter([this] { keepHeight(); });
        event.Skip();
    });
    // The main window knows what becomes of a minimised window.
    Bind(wxEVT_ICONIZE, [this](wxIconizeEvent& event) {
        auto* main = dynamic_cast<wxTopLevelWindow*>(GetParent());
        if (event.IsIconized() && main != nullptr) main->Iconize();
        event.Skip();
    });
    SetDropTarget(new FolderDropTarget(*this));
    // A text box would take the name of what is dropped on it for a text.
    cboSourceFolder->SetDropTarget(new FolderDropTarget(*this));
}

void frmExport::sourceChanged() {
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

void frmExport::convertOnEnter() {
    if (cmdCommands[kConvert]->IsEnabled()) guarded(L"cmdCommands_Click", [this] { convert(); });
}

void frmExport::convert() {
    std::wstring source = cboSourceFolder->text();
    const std::wstring target = cboTarget->text();
    if (source.empty()) return;
    if (!filesystem::isFolder(source)) {
        tellUser(L"Source Folder not found. Please enter a valid Source Folder name and try again.",
                 Icon::exclamation);
        return;
    }
    const bool single = chkSingleFile->GetValue();
    if (single && !mayWrite(target)) return;
    std::wstring summary;
    OwnerWx owner(*this);
    Progress* progress = nullptr;
    const bool converted =
        gblnConvertFolder(source, summary, target, single ? kSingleFile : std::int16_t{0},
                          single ? header() : std::wstring(), &owner, progress);
    // Kept: a failure has the icon of a success.
    tellUser(converted ? L"File conversion complete.\r\n\r\n" + summary
                       : L"File conversion failed! Please verify source folder contents, all other "
                         L"settings and then try again.\r\nSee \"\"About\"\" for reporting issues",
             Icon::information);
}

bool frmExport::mayWrite(const std::wstring& target) const {
    if (target.empty() || !fileExists(target)) return true;
    return askUser(L"Target file already exists, do you wish to overwrite the existing file?",
                   Icon::question, Buttons::yesNo) == Answer::yes;
}

std::wstring frmExport::header() const {
    return conversionHeader(fromWx(txtTitle->GetValue()), fromWx(txtAuthor->GetValue()),
                            fromWx(txtBuild->GetValue()), fromWx(txtCopyright->GetValue()));
}

void frmExport::pickSource() {
    OwnerWx owner(*this);
    const auto folder =
        gBrowseFolder(L"Select the Source Folder that contains your .gas files to be converted. ",
                      &owner, cboSourceFolder->text());
    choose(*cboSourceFolder, folder.value_or(std::wstring()));
}

void frmExport::pickTarget() {
    // Kept: a filter for the sources, though the target is none.
    choose(*cboTarget, askForFile(L"Select the Target Filename and Location",
                                  L"Gas Files (*.gas)|*.gas", true, cboSourceFolder->text()));
}

void frmExport::choose(HistoryCombo& box, const std::wstring& text) {
    if (!text.empty()) {
        box.setText(text);
        gAddHistoryItem(box, text);
    }
    sourceChanged();
}

bool frmExport::drop(const std::wstring& path) {
    const bool folder = filesystem::isFolder(path);
    if (!folder && !(fileExists(path) && toWx(path).Lower().EndsWith(".gas"))) return false;
    choose(*cboSourceFolder, folder ? path : std::wstring(folderOf(path)));
    return true;
}

void frmExport::keyPressed(wxKeyEvent& event) {
    if (event.GetModifiers() == wxMOD_ALT && event.GetKeyCode() == 'O') {
        // The toolkit would press the default button for the caption of a frame.
        chkSingleFile->SetFocus();
    } else if (event.GetKeyCode() != WXK_ESCAPE) {
        event.Skip();
    } else if (cboSourceFolder->isOpen() || cboTarget->isOpen()) {
        // The open list takes it, and the dialog must not.
        event.DoAllowNextEvent();
    } else {
        Close();
    }
}

void frmExport::closing(wxCloseEvent& event) {
    if (gProgram().progressShowing && event.CanVeto()) {
        event.Veto();
        return;
    }
    gSaveHistory(*cboSourceFolder, kSourceHistory);
    gSaveHistory(*cboTarget, kTargetHistory);
    if (IsModal()) {
        EndModal(wxID_CANCEL);
    } else {
        Destroy();
    }
}

}  // namespace kestrel
