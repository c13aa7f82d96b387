#include <algorithm>
#include <array>

#include "services/guard.h"
#include "ui/common/mnemonics.h"
#include "ui/common/mousecapture.h"
#include "ui/common/style.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel {

void frmMain::run(const Command& command) {
    if (busy() || !can(command)) return;
    endDrag(*this);
    if (command.place == Command::Place::dropDown) {
        choose(command);
    } else if (command.run == nullptr) {
        repeat(command);
    } else {
        const bool tool = command.place == Command::Place::toolbar;
        guarded(tool ? L"tbrMain_ButtonClick" : L"cmdCommands_Click",
                [&] { return (this->*command.run)(); });
    }
    if (!closing_.begun()) refreshCommands();
}

void frmMain::repeat(const Command& button) {
    std::size_t& index = repeat_[button.key];
    if (index == 0) index = 1;
    const Command& entry = *entriesOf(button).at(index - 1);
    if (can(entry)) choose(entry);
}

void frmMain::choose(const Command& entry) {
    const auto entries = entriesOf(mainCommand(Command::Place::toolbar, entry.under));
    const auto index = static_cast<std::size_t>(std::find(entries.begin(), entries.end(), &entry) -
                                                entries.begin());
    if (entry.repeat == Command::Repeat::whenChosen) repeat_[entry.under] = index + 1;
    const bool done = guarded(L"tbrMain_ButtonMenuClick", [&] { return (this->*entry.run)(); });
    if (done && entry.repeat == Command::Repeat::whenDone) repeat_[entry.under] = index + 1;
}

void frmMain::keyPressed(wxKeyEvent& event) {
    // An open menu has its own keys.
    if (event.GetEventObject() == GetMenuBar()) return event.Skip();
    for (const CommandKey& row : mainKeys()) {
        if (event.GetKeyCode() != row.code || event.GetModifiers() != row.modifiers) continue;
        if (row.leftToHistory && cboHistory->HasFocus()) break;
        return run(mainCommand(row.place, row.command));
    }
    if (event.GetModifiers() == wxMOD_ALT && pressMnemonic(*this, event.GetKeyCode())) return;
    event.Skip();
}

// Round the panes and the tool bar, as they stand from top to bottom and left to right.
bool frmMain::changePane(int step) {
    const std::array<wxWindow*, 5> panes{tbrMain, cboHistory, &lvwTemplates->window(),
                                         &tvwInfo->window(), &lvwProperties->window()};
    wxWindow* focus = holdsFocus(*tbrMain) ? tbrMain : FindFocus();
    const auto holds = [focus](wxWindow* pane) {
        return pane == focus || pane->IsDescendant(focus);
    };
    const auto found = std::ranges::find_if(panes, holds);
    const int count = static_cast<int>(panes.size());
    const int from =
        found == panes.end() ? (step > 0 ? -1 : 0) : static_cast<int>(found - panes.begin());
    wxWindow* next = panes.at(static_cast<std::size_t>((from + step + count) % count));
    if (next == tbrMain) {
        focusToolBar(*tbrMain);
    } else {
        next->SetFocus();
    }
    return true;
}

}  // namespace kestrel
