#include <wx/menu.h>
#include <wx/toolbar.h>

#include <algorithm>

#include "services/errors.h"
#include "services/tools.h"
#include "ui/common/mnemonics.h"
#include "ui/common/mousecapture.h"
#include "ui/common/strings.h"
#include "ui/common/toolbarstyle.h"
#include "ui/frmMain/frmMain.h"
#include "ui/icons/icons.h"

namespace kestrel {
namespace {

constexpr int kIconSize = 20;  // DIP

}  // namespace

void frmMain::buildToolBar() {
    tbrMain = CreateToolBar(wxTB_HORIZONTAL | wxTB_FLAT, wxID_ANY, "tbrMain");
    for (const Command& command : mainCommands()) {
        if (command.place == Command::Place::toolbar) addTool(command);
    }
    tbrMain->Realize();
    makeCompact(*tbrMain);
}

void frmMain::addTool(const Command& command) {
    const auto entries = entriesOf(command);
    const wxToolBarToolBase* tool =
        tbrMain->AddTool(wxID_ANY, command.tooltip, icon(command.icon, *this, kIconSize),
                         command.tooltip, entries.empty() ? wxITEM_NORMAL : wxITEM_DROPDOWN);
    toolIds_[command.key] = tool->GetId();
    Bind(
        wxEVT_TOOL, [this, &command](wxCommandEvent&) { run(command); }, tool->GetId());
    if (entries.empty()) return;
    auto* menu = new wxMenu;
    for (const Command* entry : entries) {
        entryItems_[entry->key] = menu->Append(wxID_ANY, entry->caption);
        Bind(
            wxEVT_MENU, [this, entry](wxCommandEvent&) { run(*entry); },
            entryItems_[entry->key]->GetId());
    }
    tbrMain->SetDropdownMenu(tool->GetId(), menu);
}

// A theme may change while the program runs.
void frmMain::refreshIcons() {
    for (const Command& command : mainCommands()) {
        if (command.place != Command::Place::toolbar) continue;
        tbrMain->SetToolNormalBitmap(toolIds_.at(command.key),
                                     icon(command.icon, *this, kIconSize));
    }
}

wxMenu* frmMain::makeFileMenu() {
    auto* menu = new wxMenu;
    for (const CommandMenuItem& row : mainMenu()) {
        if (*row.caption == '\0') {
            menu->AppendSeparator();
            continue;
        }
        const int id = menu->Append(wxID_ANY, row.caption)->GetId();
        menu->Bind(
            wxEVT_MENU,
            [this, &row](wxCommandEvent&) {
                if (row.command.empty()) return restore();
                run(mainCommand(row.place, row.command));
            },
            id);
    }
    return menu;
}

void frmMain::run(const Command& command) {
    if (busy()) return;
    endDrag(*this);
    if (command.place == Command::Place::dropDown) return choose(command);
    if (command.run == nullptr) return repeat(command);
    const bool tool = command.place == Command::Place::toolbar;
    guarded(tool ? L"tbrMain_ButtonClick" : L"cmdCommands_Click", [&] { command.run(*this); });
}

void frmMain::repeat(const Command& button) {
    std::size_t& index = repeat_[button.key];
    if (index == 0) index = 1;
    choose(*entriesOf(button).at(index - 1));
}

void frmMain::choose(const Command& entry) {
    const auto entries = entriesOf(mainCommand(Command::Place::toolbar, entry.under));
    const auto index = static_cast<std::size_t>(std::find(entries.begin(), entries.end(), &entry) -
                                                entries.begin());
    if (entry.repeat == Command::Repeat::whenChosen) repeat_[entry.under] = index + 1;
    const bool done = guarded(L"tbrMain_ButtonMenuClick", [&] { return entry.run(*this); });
    if (done && entry.repeat == Command::Repeat::whenDone) repeat_[entry.under] = index + 1;
}

void frmMain::showToolCaptions() {
    for (std::size_t i = 0; i < kUserTools; ++i) {
        // A name with "&" is a name, no mnemonic.
        entryItems_.at("Tool" + std::to_string(i + 1))
            ->SetItemLabel(wxControl::EscapeMnemonics(shownLine(userToolCaption(i))));
    }
}

void frmMain::keyPressed(wxKeyEvent& event) {
    for (const CommandKey& row : mainKeys()) {
        if (event.GetKeyCode() != row.code) continue;
        if (!row.anyModifiers && event.GetModifiers() != row.modifiers) continue;
        if (row.leftToHistory && cboHistory->HasFocus()) break;
        // Esc closes the open list first.
        if (row.code == WXK_ESCAPE && cboHistory->isOpen()) break;
        return run(mainCommand(row.place, row.command));
    }
    if (event.GetModifiers() == wxMOD_ALT && pressMnemonic(*this, event.GetKeyCode())) return;
    event.Skip();
}

}  // namespace kestrel
