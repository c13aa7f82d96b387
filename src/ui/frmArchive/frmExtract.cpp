#include "ui/frmArchive/frmExtract.h"

#include "services/program.h"
#include "system/filesystem.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmView/frmView.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kWidth = 520;  // DIP

}  // namespace

frmExtract::frmExtract(wxWindow* parent, TankContents& contents, TankContents::Numbers selected,
                       TankContents::Numbers shown, bool filtered)
    : PathDialog(parent, "Extract Files", "frmExtract"),
      contents_(contents),
      selected_(std::move(selected)),
      shown_(std::move(shown)) {
    layOut(filtered);
    onPress(*cmdPick,
            [this] { chooseFolder(*cboTarget, L"Select the folder to write the files into."); });
    onPress(*cmdExtract, [this] { extractFiles(); });
    cmdDone->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });
    acceptDrops([this](const std::wstring& path) {
        const bool takes = filesystem::isFolder(path);
        if (takes) choose(*cboTarget, path);
        return takes;
    });
    pathsChanged();
    cboTarget->SetFocus();
}

wxSizer* frmExtract::buildFiles(bool filtered) {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this, "Files");
    fraFiles = box->GetStaticBox();
    const auto files = [](const TankTotals& totals) { return L" (" + textOf(totals) + L")"; };
    const auto add = [&](const wxString& label, const char* name, long style) {
        auto* option = new wxRadioButton(fraFiles, wxID_ANY, label, wxDefaultPosition,
                                         wxDefaultSize, style, wxDefaultValidator, name);
        box->Add(option, wxSizerFlags().Border(wxALL, scaled(*this, kGap)));
        return option;
    };
    const std::wstring name = selected_.empty() ? L"" : L": " + contents_.name(selected_[0]);
    wxString selected = shownLine(name);
    selected.Replace("&", "&&");
    optSelected = add("Se&lected" + selected, "optSelected", wxRB_GROUP);
    optShown = add("All that the list &shows, folders whole", "optShown", 0);
    optAll = add(toWx(L"The &whole archive" + files(contents_.totals(0))), "optAll", 0);
    optSelected->Enable(!selected_.empty());
    optShown->Enable(!shown_.empty());
    wxRadioButton* rest = filtered && !shown_.empty() ? optShown : optAll;
    wxRadioButton* first = selected_.empty() ? rest : optSelected;
    first->SetValue(true);
    chkPaths = new wxCheckBox(fraFiles, wxID_ANY, "&Keep the folders of the archive",
                              wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, "chkPaths");
    chkPaths->SetValue(true);
    box->Add(chkPaths, wxSizerFlags().Border(wxALL, scaled(*this, kGap)));
    return box;
}

void frmExtract::layOut(bool filtered) {
    const int margin = scaled(*this, kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(addPaths(fraTarget, {{lblTarget, cboTarget, cmdPick, "&Target Folder", "cboTarget",
                                      L"extract.his", "Choose the Target Folder"}}),
                wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
    column->Add(buildFiles(filtered), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    cmdExtract = new wxButton(this, wxID_ANY, "&Extract");
    cmdDone = new wxButton(this, wxID_ANY, "&Done");
    cmdDone->SetToolTip("Also use ESC");
    cmdExtract->SetDefault();
    column->Add(addButtons(nullptr, {cmdExtract, cmdDone}),
                wxSizerFlags().Expand().Border(wxALL, margin));
    fitTo(column, kWidth);
}

void frmExtract::pathsChanged() {
    cmdExtract->Enable(!cboTarget->isBlank());
}

TankContents::Numbers frmExtract::wanted() const {
    if (optSelected->GetValue()) return selected_;
    return optAll->GetValue() ? TankContents::Numbers{0} : shown_;
}

Existing frmExtract::ask(std::size_t count, std::wstring_view folder) const {
    const Answer answer = askUser(
        std::to_wstring(count) + (count == 1 ? L" of the files is" : L" of the files are") +
            L" already in '" + std::wstring(folder) +
            L"'.\r\n\r\nDo you want to replace them? Yes replaces those that differ and keeps what "
            L"was there as .bak, No leaves them alone, Cancel writes nothing.",
        Icon::question, Buttons::yesNoCancel);
    if (answer == Answer::yes) return Existing::replace;
    return answer == Answer::no ? Existing::skip : Existing::stop;
}

void frmExtract::extractFiles() {
    const std::wstring folder = cboTarget->takePath();
    if (folder.empty()) return;
    filesystem::makeFolder(folder);
    OwnerWx owner(*this);
    const ExtractOutcome outcome = extract(
        contents_, {folder, wanted(), chkPaths->GetValue()},
        [&](std::size_t count) { return ask(count, folder); }, &owner);
    std::wstring summary = summaryOf(outcome, folder);
    if (outcome.told.empty()) return tellUser(summary, Icon::information);
    frmView viewer(this, {});
    viewer.TextBlock(summary);
    viewer.CanEdit(false);
    viewer.SetTitle("Extracted Files");
    showModal(viewer);
}

}  // namespace kestrel
