#include "ui/frmZeltor/frmZeltor.h"

#include <utility>

#include "services/pickers.h"
#include "services/program.h"
#include "ui/common/link.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmZeltor/builderlog.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kWidth = 600;  // DIP

constexpr std::wstring_view kTargetFilter =
    L"Resource Files (*.dsres)|*.dsres|Save Files (*.dssave)|*.dssave|"
    L"Party Files (*.dsparty)|*.dsparty";

std::wstring quotedText(const wxTextCtrl& box) {
    return kestrel::quoted(fromWx(box.GetValue()));
}

std::wstring flag(const wxCheckBox& box, std::wstring_view option) {
    return box.GetValue() ? std::wstring(option) : std::wstring();
}

// Lets the keys through that type nothing, those with Ctrl, and digits. Kept: Backspace is
// refused like any other character.
void digitTyped(wxKeyEvent& event) {
    const wxChar typed = event.GetUnicodeKey();
    const bool moves = typed == WXK_NONE || typed == WXK_DELETE || typed == WXK_TAB ||
                       typed == WXK_RETURN || typed == WXK_ESCAPE || event.CmdDown();
    if (moves || (typed >= '0' && typed <= '9')) event.Skip();
}

}  // namespace

frmZeltor::frmZeltor(wxWindow* parent, TimedLauncher& launcher, OpenFile openFile)
    : PathDialog(parent, "Rapid Zeltor", "frmZeltor"),
      redLauncher(launcher),
      openFile_(std::move(openFile)) {
    layOut();
    bindCommands();
    pathsChanged();
    cboSourceFolder->SetFocus();
}

void frmZeltor::saveFiles() {
    PathDialog::saveFiles();
    memory_.save();
}

wxSizer* frmZeltor::buildMain() {
    return addPaths(
        fraMain,
        {{lblGeneric[lblSource], cboSourceFolder, cmdCommands[kPickSource], "&Source Folder",
          "cboSourceFolder", L"zeltor1.his", "Choose the Source Folder"},
         {lblGeneric[lblTarget], cboTarget, cmdCommands[kPickTarget], "&Destination Tank Filename",
          "cboTarget", L"zeltor2.his", "Choose the Destination Tank Filename"}});
}

wxSizer* frmZeltor::buildOptional() {
    auto* box = addOptional(fraOptional);
    auto* grid = addGrid(2);
    const auto add = [&](wxSizer& row, Label label, const char* text, const char* name) {
        return addText(*grid, row, lblGeneric[label], fraOptional, text, name);
    };
    txtTitle = add(*grid, lblTitle, "Title:", "txtTitle");
    txtAuthor = add(*grid, lblAuthor, "Author:", "txtAuthor");
    auto* numbers = new wxBoxSizer(wxHORIZONTAL);
    txtBuild = add(*numbers, lblBuild, "Build:", "txtBuild");
    txtPriority = addText(
        *numbers, *numbers, lblGeneric[lblPriority], fraOptional, "Priority:", "txtPriority",
        wxSizerFlags().CentreVertical().Border(wxLEFT | wxRIGHT, scaled(*this, kMargin)));
    grid->Add(numbers, wxSizerFlags().Expand());
    txtCopyright = add(*grid, lblCopyright, "Copyright:", "txtCopyright");
    grid->AddSpacer(0);
    grid->Add(buildFlags());
    box->Add(grid, wxSizerFlags().Expand().Border(wxALL, scaled(*this, kGap)));
    return box;
}

wxSizer* frmZeltor::buildFlags() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    const auto add = [&](const wxString& text, const wxString& name) {
        auto* box = new wxCheckBox(fraOptional, wxID_ANY, text, wxDefaultPosition, wxDefaultSize, 0,
                                   wxDefaultValidator, name);
        row->Add(box, wxSizerFlags().Border(wxRIGHT, scaled(*this, kMargin)));
        return box;
    };
    chkDev = add("Dev. only?", "chkDev");
    chkMPXfer = add("Multi-player Transfer?", "chkMPXfer");
    chkProtected = add("Protected?", "chkProtected");
    return row;
}

wxSizer* frmZeltor::buildButtons() {
    lblInfo = makeLink(this, "Click for more info on Zeltor...");
    cmdCommands[kLastLog] = new wxButton(this, wxID_ANY, "&Last Log");
    cmdCommands[kLastLog]->SetToolTip("Show what the last build has written");
    cmdCommands[kCreate] = new wxButton(this, wxID_ANY, "&Create");
    cmdCommands[kDone] = new wxButton(this, wxID_ANY, "&Done");
    cmdCommands[kCreate]->SetDefault();
    return addButtons(lblInfo, {cmdCommands[kLastLog], cmdCommands[kCreate], cmdCommands[kDone]});
}

void frmZeltor::layOut() {
    const int margin = scaled(*this, kMargin);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildMain(), wxSizerFlags().Expand().Border(wxALL, margin));
    column->Add(buildOptional(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, margin));
    column->Add(buildButtons(), wxSizerFlags().Expand().Border(wxALL, margin));
    // The boxes of both frames stand below each other.
    alignLabels(std::array{lblGeneric[lblTarget], lblGeneric[lblSource], lblGeneric[lblTitle],
                           lblGeneric[lblAuthor], lblGeneric[lblBuild], lblGeneric[lblCopyright]});
    fitTo(column, kWidth);
}

void frmZeltor::bindCommands() {
    onPress(*cmdCommands[kCreate], [this] { create(); });
    onPress(*cmdCommands[kLastLog], [this] { showLog(); });
    onPress(*cmdCommands[kPickSource], [this] {
        chooseFolder(*cboSourceFolder, L"Select the Source Folder of your New Tank file. ");
    });
    onPress(*cmdCommands[kPickTarget], [this] { pickTarget(); });
    cmdCommands[kDone]->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { Close(); });
    txtPriority->Bind(wxEVT_CHAR, digitTyped);
    // A box cannot be shown while the keyboard is on its way.
    listen(*txtPriority, wxEVT_KILL_FOCUS, [this] { CallAfter([this] { priorityLeft(); }); });
}

void frmZeltor::pathsChanged() {
    cmdCommands[kCreate]->Enable(!cboSourceFolder->text().empty() && !cboTarget->text().empty());
    cmdCommands[kLastLog]->Enable(redLauncher.log() != nullptr);
    const std::wstring target = cboTarget->text();
    if (std::exchange(lastTarget_, target) != target) fillRemembered();
}

void frmZeltor::create() {
    const std::wstring source = cboSourceFolder->takePath();
    const std::wstring target = cboTarget->takePath();
    if (source.empty() || target.empty() || !mayMake(source, target)) return;
    // It may have been pasted, and never left.
    if (const std::wstring text = fromWx(txtPriority->GetValue());
        !text.empty() && !isNumber(text)) {
        return refusePriority();
    }
    BuildRequest build = request();
    if (!mayCut(build)) return;
    const auto before = redLauncher.log();
    gExecZeltor(build, redLauncher);
    // There is nothing to be seen of a refused start, and another build's log is no other's.
    if (redLauncher.log() == before) return;
    redLauncher.log()->name = target;
    filled_ = fields();
    memory_.keep(target, filled_);
    showLog();
}

// Asked until the user agrees, once.
bool frmZeltor::mayCut(const BuildRequest& request) {
    const auto values = valuesToBeCut(request, gProgram().settings.zeltor);
    if (values.empty() || cutsAgreed_) return true;
    std::wstring text =
        L"The builder gets its paths without quotes, and may cut these at blanks:\r\n";
    for (const std::wstring& value : values) text.append(L"\r\n").append(value);
    text += L"\r\n\r\nStart it anyway?";
    return cutsAgreed_ = askUser(text, Icon::exclamation, Buttons::noYes) == Answer::yes;
}

BuildRequest frmZeltor::request() const {
    BuildRequest request;
    request.source = cboSourceFolder->text();
    request.target = cboTarget->text();
    request.copyright = quotedText(*txtCopyright);
    request.build = quotedText(*txtBuild);
    request.title = quotedText(*txtTitle);
    request.author = quotedText(*txtAuthor);
    request.priority = priorityOf(fromWx(txtPriority->GetValue()));
    request.devFlag = flag(*chkDev, kFlagDev);
    request.multiPlayerFlag = flag(*chkMPXfer, kFlagMultiPlayer);
    request.protectedFlag = flag(*chkProtected, kFlagProtected);
    return request;
}

void frmZeltor::showLog() {
    BuilderLog log(this, redLauncher, openFile_);
    showModal(log);
}

BuildFields frmZeltor::fields() const {
    const auto text = [](const wxTextCtrl& box) { return fromWx(box.GetValue()); };
    return {text(*txtTitle),       text(*txtAuthor),        text(*txtBuild),
            text(*txtCopyright),   text(*txtPriority),      chkDev->GetValue(),
            chkMPXfer->GetValue(), chkProtected->GetValue()};
}

void frmZeltor::fill(const BuildFields& fields) {
    txtTitle->ChangeValue(toWx(fields.title));
    txtAuthor->ChangeValue(toWx(fields.author));
    txtBuild->ChangeValue(toWx(fields.build));
    txtCopyright->ChangeValue(toWx(fields.copyright));
    txtPriority->ChangeValue(toWx(fields.priority));
    chkDev->SetValue(fields.dev);
    chkMPXfer->SetValue(fields.multiPlayer);
    chkProtected->SetValue(fields.isProtected);
    filled_ = this->fields();
}

// What the user has changed since stays, all of it: half of one archive's fields and half of
// another's would be neither's.
void frmZeltor::fillRemembered() {
    const auto known = memory_.find(cboTarget->text());
    const BuildFields now = fields();
    if (known && (now == filled_ || now == BuildFields())) fill(*known);
}

void frmZeltor::pickTarget() {
    choose(*cboTarget, askForFile(L"Select Target TANK Filename and Location", kTargetFilter, true,
                                  cboSourceFolder->text()));
}

// An empty box is left freely: it stands for 0.
void frmZeltor::priorityLeft() {
    wxWindow* const focus = FindFocus();
    const bool inDialog = focus != nullptr && wxGetTopLevelParent(focus) == this;
    const std::wstring text = fromWx(txtPriority->GetValue());
    if (!inDialog || focus == txtPriority || text.empty() || isNumber(text)) return;
    refusePriority();
}

void frmZeltor::refusePriority() {
    tellUser(L"Priority must be a number.", Icon::exclamation);
    txtPriority->SetFocus();
}

}  // namespace kestrel
