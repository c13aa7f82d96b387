#include <wx/dir.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include <algorithm>
#include <utility>

#include "base/paths.h"
#include "gas/query.h"
#include "services/files.h"
#include "services/pagetext.h"
#include "services/pickers.h"
#include "services/program.h"
#include "services/shell.h"
#include "services/tools.h"
#include "text/convert.h"
#include "text/render.h"
#include "ui/common/dialogend.h"
#include "ui/common/strings.h"
#include "ui/frmAbout/frmAbout.h"
#include "ui/frmExport/frmExport.h"
#include "ui/frmMain/frmMain.h"
#include "ui/frmSpecialize/frmSpecialize.h"
#include "ui/frmTank/frmTank.h"
#include "ui/frmView/frmView.h"
#include "ui/frmZeltor/frmZeltor.h"
#include "view/browse.h"
#include "view/chain.h"
#include "view/listtext.h"

namespace kestrel {
namespace {

// The caller goes on where no clipboard is there.
void copyText(std::wstring_view text) {
    if (gProgram().host.clipboard != nullptr) gProgram().host.clipboard->setText(text);
}

// Copies what `to` does not have of the files below `from`.
void copyMissing(const wxString& from, const wxString& to) {
    wxArrayString files;
    wxDir::GetAllFiles(from, &files);
    for (const wxString& file : files) {
        const wxFileName copy(to + file.Mid(from.length()));
        copy.Mkdir(wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
        if (!copy.FileExists()) wxCopyFile(file, copy.GetFullPath());
    }
}

}  // namespace

bool frmMain::notImplemented() {
    tellUser(L"Not implemented at this time.", Icon::information);
    return false;
}

bool frmMain::test() {
    tellUser(L"Nothing in texting...", Icon::information);
    return true;
}

bool frmMain::help() {
    showAbout(this);
    return true;
}

bool frmMain::showManual() {
    const std::wstring manual = sharedFile(L"manual.html");
    if (manual.empty()) {
        tellUser(L"The manual is not beside this copy of the program.", Icon::exclamation);
        return false;
    }
    gShellExec(manual, L"open");
    return true;
}

// The user's own copies: the next version of the program replaces the others.
bool frmMain::openSample() {
    const std::wstring samples = sharedFile(L"samples");
    if (samples.empty()) {
        tellUser(L"The samples are not beside this copy of the program.", Icon::exclamation);
        return false;
    }
    const std::wstring own = programFile(L"my-samples");
    copyMissing(toWx(samples), toWx(own));
    const std::wstring chosen = askForFile(L"Select a Sample", L"Gas File (*.gas)|*.gas", false,
                                           joinPath(own, L"harbour.gas"));
    return !chosen.empty() && openFile(chosen);
}

bool frmMain::toggleRemembering() {
    remember_ = !remember_;
    return true;
}

std::wstring frmMain::fileText() {
    OwnerWx owner(*this, &lvwTemplates->window());
    return gstrMakeFileText(document_.path, document_.templates, &owner, 0, nullptr);
}

bool frmMain::previewAll() {
    if (lvwTemplates->rows().empty()) return false;
    std::wstring text = fileText();
    if (text.empty()) return false;
    view(L"View All Templates", std::move(text), View::rendered);
    return true;
}

bool frmMain::saveCurrent() {
    if (lvwTemplates->rows().empty()) return false;
    const std::wstring path = askForFile(L"Please specify a filename", L"Text files (*.tab)|*.tab",
                                         true, tabPath(document_.path));
    if (path.empty()) return false;
    {
        const wxBusyCursor busyCursor;
        const std::wstring text = fileText();
        if (text.empty() || !writeFile(path, text, backupPath(path))) return false;
    }
    const Answer edit = askUser(L"File saved successfully. Do you wish to edit the file?",
                                Icon::information, Buttons::yesNo);
    if (edit == Answer::yes) openInNotepad(path);
    return true;
}

bool frmMain::convertFolder() {
    frmExport dialog(this);
    showModal(dialog);
    return true;
}

bool frmMain::copyProperties() {
    if (selectedTemplate() == nullptr) return false;
    copyText(gstrMakeListText(lvwProperties->shot(document_.path)));
    return true;
}

bool frmMain::copyTemplates() {
    copyText(gstrMakeListText(lvwTemplates->shot(document_.path)));
    return true;
}

bool frmMain::copyValue() {
    copyText(selectedProperty()->Value.wide());
    return true;
}

bool frmMain::copyRow() {
    const GasTemplate& record = *selectedTemplate();
    const std::size_t position = *lvwProperties->selected();
    std::wstring row = propertyText(record, position, PropertyColumn::property);
    row += L'\t' + propertyText(record, position, PropertyColumn::value);
    row += L'\t' + propertyText(record, position, PropertyColumn::group);
    copyText(row);
    return true;
}

bool frmMain::copyPath() {
    const auto property = selectedProperty();
    const bool isBranch = tvwInfo->window().HasFocus() || !property;
    copyText(isBranch ? selectedBranch() : groupPath(*selectedTemplate(), *property));
    return true;
}

bool frmMain::copyName() {
    copyText(selectedTemplate()->Name.wide());
    return true;
}

bool frmMain::filterByProperty() {
    const auto block = nodeOf(*selectedTemplate(), blocks_, *selectedProperty());
    if (block == blocks_.cend()) return false;
    chkTree->SetValue(true);
    selectBlock(static_cast<std::size_t>(block - blocks_.cbegin()));
    return true;
}

bool frmMain::filterByBlock() {
    chkTree->SetValue(true);
    if (const auto block = tvwInfo->selected()) selectBlock(*block);
    return true;
}

bool frmMain::toggleFilter() {
    const auto block = tvwInfo->selected();
    chkTree->SetValue(!chkTree->GetValue());
    if (block) selectBlock(*block);
    return true;
}

bool frmMain::showProperties() {
    if (!isOpen()) return false;
    OwnerWx owner(*this);
    gShowProps(document_.path, &owner);
    return true;
}

bool frmMain::runSkritPad() {
    return isOpen() && openInSkritPad(document_.path);
}

bool frmMain::runNotepad() {
    if (isOpen()) openInNotepad(document_.path);
    return isOpen();
}

bool frmMain::startOrvane() {
    return runOrvane();
}

bool frmMain::browseArchive() {
    std::wstring copy;
    {
        frmTank dialog(this, openFileHooks());
        showModal(dialog);
        copy = dialog.copy();
    }
    return copy.empty() || openFile(copy);
}

bool frmMain::buildArchive() {
    if (zeltorPath().empty()) return false;
    frmZeltor dialog(this, redLauncher_, openFileHooks());
    showModal(dialog);
    return true;
}

bool frmMain::runTool(std::size_t index) {
    const bool done = runUserTool(index);
    showToolCaptions();
    return done;
}

bool frmMain::resetTools() {
    if (!resetUserTools()) return false;
    showToolCaptions();
    return true;
}

bool frmMain::editSource() {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return false;
    // What the loader has put together is no text of the file.
    const bool whole = record->Place != GasTemplate::kNowhere;
    view((whole ? L"Edit Source: " : L"View Source: ") + record->Name.wide(), record->Text.wide(),
         View::listed,
         whole ? std::optional(FileBlock{document_.path, record->Place}) : std::nullopt);
    return true;
}

bool frmMain::viewListed() {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return false;
    view(L"View Listed Text: " + record->Name.wide(), record->Text.wide(), View::listed);
    return true;
}

bool frmMain::viewParsed() {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return false;
    std::wstring branch = selectedBranch();
    OwnerWx owner(*this, &lvwTemplates->window());
    std::wstring text = gstrMakeText(*record, &owner, branch, chkTree->GetValue(), nullptr);
    if (text.empty()) return false;
    view(L"View Parsed Text: " + record->Name.wide(), std::move(text), View::rendered);
    return true;
}

bool frmMain::viewChain() {
    const GasTemplate* record = selectedTemplate();
    if (record == nullptr) return false;
    if (gstrFindPropertyVal(*record, L"specializes").empty()) {
        tellUser(L"Current template does not specialize anything.", Icon::information);
        return false;
    }
    frmSpecialize browser(this, openFileHooks());
    browser.BaseTemplateName(chainName(*record));
    showModal(browser);
    return true;
}

OpenFile frmMain::openFileHooks() {
    return {[this] { return document_.path; }, [this] { reloadOpenFile(); },
            [this] { return document_.stamp; }};
}

void frmMain::view(std::wstring_view caption, std::wstring text, View kind,
                   const std::optional<FileBlock>& block) {
    frmView viewer(this, openFileHooks());
    viewer.SetTitle(shownLine(caption));
    // It would live as long as the window.
    viewer.TextBlock(std::exchange(text, {}));
    viewer.Block(block);
    viewer.TextFormat(kind == View::rendered ? 1 : 0);
    showModal(viewer);
}

void frmMain::offerDrafts() {
    for (LeftDraft& left : leftDrafts()) {
        if (busy()) return;
        const DraftChoice choice = askAboutDraft(left.draft);
        if (choice == DraftChoice::discard) left.file.drop();
        if (choice != DraftChoice::open) continue;
        frmView viewer(this, openFileHooks());
        viewer.Draft(std::move(left));
        showModal(viewer);
    }
}

bool frmMain::follow() {
    const GasProperty property = *selectedProperty();
    const std::wstring name = property.Value.wide();
    if (property.Name == "specializes") {
        const GasTemplate* parent = findTemplate(document_.templates, L"name", name);
        if (parent == nullptr) return false;
        view(L"View Source: " + parent->Name.wide(), parent->Text.wide(), View::listed);
    } else if (property.Name == "name") {
        setPanel(pnlInfo, chainText(gstrGetTemplateHistory(document_.templates, name)));
    }
    return true;
}

}  // namespace kestrel
