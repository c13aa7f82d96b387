#include "monkey/monkey.h"
#include "services/bytes.h"
#include "support/shown.h"
#include "ui/common/strings.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/frmSpecialize/frmSpecialize.h"
#include "ui/frmView/frmView.h"

// What must hold after each step.
namespace kestrel::test {
namespace {

void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

}  // namespace

void Monkey::check() const {
    checkWindows();
    if (main_ && !main_->IsBeingDeleted()) checkMain();
    if (const auto* viewer = dynamic_cast<const frmView*>(dialogs_.top())) checkViewer(*viewer);
    if (const auto* chain = dynamic_cast<const frmSpecialize*>(dialogs_.top())) {
        checkViewer(*chain);
    }
}

void Monkey::checkWindows() const {
    std::size_t progresses = 0;
    for (const wxWindow* window : wxTopLevelWindows) {
        if (dynamic_cast<const frmProgress*>(window) == nullptr || !window->IsShown()) continue;
        ++progresses;
    }
    require(progresses <= 1, "two progress dialogs");
    require(gProgram().progressShowing || progresses == 0, "a progress dialog was left");
    const wxDialog* top = dialogs_.top();
    if (gProgram().progressShowing) return;
    require(top == nullptr || top->IsEnabled(), "the dialog in front is dead");
    const bool alone = top == nullptr && main_ && !main_->IsBeingDeleted();
    require(!alone || main_->IsEnabled(), "the main window is dead");
}

void Monkey::checkMain() const {
    const ReportList& templates = *main_->lvwTemplates;
    const ReportList& properties = *main_->lvwProperties;
    for (const ReportList* list : {&templates, &properties}) {
        require(list->GetItemCount() == static_cast<int>(list->rows().size()), "rows are missing");
        require(!list->selected() || list->selectedRow(), "the selected row is not shown");
    }
    const GasTemplate* record = main_->selectedTemplate();
    if (record == nullptr) return;
    const auto panel = [this](int index) { return fromWx(main_->stbMain->GetStatusText(index)); };
    require(templates.rows().size() == main_->document().templates.size(), "templates are missing");
    require(properties.rows().size() <= record->Properties.size(), "too many properties");
    require(panel(frmMain::pnlTemplates) == countText(templates.rows().size(), L"Templates"),
            "the templates' count is wrong");
    require(panel(frmMain::pnlProps) == countText(properties.rows().size(), L"Properties"),
            "the properties' count is wrong");
    require(main_->tvwInfo->GetCount() > 0, "a template without its tree");
}

template <class Viewer>
void Monkey::checkViewer(const Viewer& viewer) const {
    constexpr int kSmall = 100'000;
    if (!viewer.IsShown() || !viewer.txtView->IsShownOnScreen()) return;
    const ReadOuts readOuts = viewer.txtView->readOuts();
    require(readOuts.caret <= readOuts.characters && readOuts.line <= readOuts.lines,
            "the caret is beyond the text");
    if (viewer.txtView->GetLength() < kSmall) {
        const std::wstring text = viewer.TextBlock();
        if (readOuts.characters == text.size()) return;
        fail("counted " + std::to_string(readOuts.characters) + " characters of " +
             shown(text).substr(0, 2'000));
    }
}

}  // namespace kestrel::test
