#include <wx/menu.h>
#include <wx/toolbar.h>

#include <algorithm>

#include "services/tools.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/style.h"
#include "ui/frmMain/frmMain.h"
#include "ui/icons/icons.h"

namespace kestrel {
namespace {

using Needs = Command::Needs;
using Place = Command::Place;

constexpr int kIconSize = 20;  // DIP

bool isUserTool(std::string_view command) {
    return command.starts_with("Tool") && command.size() == 5;
}

}  // namespace

void frmMain::buildMenus() {
    auto* bar = new wxMenuBar;
    for (const CommandMenu& menu : mainMenus()) bar->Append(makeMenu(menu.items), menu.caption);
    mnuFile = bar->GetMenu(0);
    SetMenuBar(bar);
    // What can be done changes with the lists; a menu tells it when it opens.
    listen(*this, wxEVT_MENU_OPEN, [this] { refreshCommands(); });
}

wxMenu* frmMain::makeMenu(const std::vector<CommandMenuItem>& items) {
    auto* menu = new wxMenu;
    for (const CommandMenuItem& row : items) {
        if (*row.caption == '\0') {
            menu->AppendSeparator();
            continue;
        }
        const wxString caption = toWx(menuCaption(row));
        if (!row.items.empty()) {
            menu->AppendSubMenu(makeMenu(row.items), caption);
            continue;
        }
        const Command& command = mainCommand(row.place, row.command);
        const wxItemKind kind = !row.checked                   ? wxITEM_NORMAL
                                : command.needs == Needs::page ? wxITEM_RADIO
                                                               : wxITEM_CHECK;
        const wxMenuItem* item = menu->Append(wxID_ANY, caption, wxEmptyString, kind);
        menu->Bind(
            wxEVT_MENU, [this, &command](wxCommandEvent&) { run(command); }, item->GetId());
    }
    refreshMenu(*menu, items);
    return menu;
}

void frmMain::refreshMenu(wxMenu& menu, const std::vector<CommandMenuItem>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        wxMenuItem* item = menu.FindItemByPosition(i);
        if (*items[i].caption == '\0') continue;
        if (!items[i].items.empty()) {
            refreshMenu(*item->GetSubMenu(), items[i].items);
            continue;
        }
        const Command& command = mainCommand(items[i].place, items[i].command);
        const wxString caption = toWx(menuCaption(items[i]));
        if (item->GetItemLabel() != caption) item->SetItemLabel(caption);
        item->Enable(can(command));
        // The others of a group go off by themselves.
        if (item->IsCheck() || (item->IsRadio() && isOn(command))) item->Check(isOn(command));
        const char* key = shownKey(command);
        showKey(menu, *item, key == nullptr ? wxString() : wxString(key));
    }
}

// A name with "&" is a name, no mnemonic.
std::wstring frmMain::menuCaption(const CommandMenuItem& item) const {
    if (!isUserTool(item.command)) return fromWx(item.caption);
    const auto index = static_cast<std::size_t>(item.command.back() - '1');
    return fromWx(wxControl::EscapeMnemonics(shownLine(userToolCaption(index))));
}

// That of a tool stands at the entry that the tool repeats now.
const char* frmMain::shownKey(const Command& command) const {
    const CommandKey* key = keyOf(command.place, command.key);
    if (key == nullptr && command.place == Place::dropDown) {
        const auto entries = entriesOf(mainCommand(Place::toolbar, command.under));
        const auto chosen = repeat_.find(command.under);
        const std::size_t index =
            chosen == repeat_.end() ? 0 : std::max<std::size_t>(chosen->second, 1) - 1;
        const bool repeats = mainCommand(Place::toolbar, command.under).run == nullptr;
        if (repeats && entries.at(index) == &command) key = keyOf(Place::toolbar, command.under);
    }
    return key == nullptr ? nullptr : key->shown;
}

void frmMain::buildToolBar() {
    tbrMain = CreateToolBar(wxTB_HORIZONTAL | wxTB_FLAT, wxID_ANY, "tbrMain");
    for (const Command& command : mainCommands()) {
        if (command.place == Place::toolbar) addTool(command);
    }
    tbrMain->Realize();
    finishToolBar(*tbrMain);
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
        Bind(
            wxEVT_MENU, [this, entry](wxCommandEvent&) { run(*entry); },
            menu->Append(wxID_ANY, entry->caption)->GetId());
    }
    dropDowns_[command.key] = menu;
    tbrMain->SetDropdownMenu(tool->GetId(), menu);
}

// A theme may change while the program runs.
void frmMain::refreshIcons() {
    for (const auto& [key, id] : toolIds_) {
        tbrMain->SetToolNormalBitmap(id,
                                     icon(mainCommand(Place::toolbar, key).icon, *this, kIconSize));
    }
}

void frmMain::showToolCaptions() {
    wxMenu& menu = *dropDowns_.at("Tool");
    for (std::size_t i = 0; i < kUserTools; ++i) {
        menu.FindItemByPosition(i)->SetItemLabel(
            wxControl::EscapeMnemonics(shownLine(userToolCaption(i))));
    }
    refreshCommands();
}

bool frmMain::can(const Command& command) const {
    switch (command.needs) {
        case Needs::path:
            return !cboHistory->isBlank();
        case Needs::file:
            return isOpen();
        case Needs::page:
            return isOpen() && !document_.page().isUtf8() && command.key != "65001";
        case Needs::templates:
            return !lvwTemplates->rows().empty();
        case Needs::selection:
            return selectedTemplate() != nullptr;
        case Needs::property:
            return selectedProperty().has_value();
        case Needs::nothing:
            break;
    }
    return command.key != "Find" || searchKind_ != SearchKind::none;
}

bool frmMain::isOn(const Command& command) const {
    if (command.needs == Needs::page) {
        const CodePage& page = isOpen() ? document_.page() : *gProgram().sourcePage;
        return std::to_string(page.number()) == command.key;
    }
    return command.key == "TreeFilter" ? chkTree->GetValue() : remember_;
}

void frmMain::refreshCommands() {
    for (const auto& [index, button] : cmdCommands) {
        for (const Command& command : mainCommands()) {
            if (command.place == Place::button && command.index == index) {
                button->Enable(can(command));
            }
        }
    }
    for (const auto& [key, id] : toolIds_) {
        const auto entries = entriesOf(mainCommand(Place::toolbar, key));
        // A tool with entries that can be chosen is there for those.
        const bool enabled =
            entries.empty()
                ? can(mainCommand(Place::toolbar, key))
                : std::ranges::any_of(entries, [this](auto* entry) { return can(*entry); });
        tbrMain->EnableTool(id, enabled);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            dropDowns_.at(key)->FindItemByPosition(i)->Enable(can(*entries[i]));
        }
    }
    for (std::size_t i = 0; i < mainMenus().size(); ++i) {
        refreshMenu(*GetMenuBar()->GetMenu(i), mainMenus()[i].items);
    }
}

void frmMain::bindContextMenus() {
    const auto bind = [this](wxWindow& over, ContextOf which) {
        over.Bind(wxEVT_CONTEXT_MENU,
                  [this, &over, which](wxContextMenuEvent&) { showContextMenu(over, which); });
    };
    bind(lvwTemplates->window(), ContextOf::templates);
    bind(lvwProperties->window(), ContextOf::properties);
    bind(tvwInfo->window(), ContextOf::blocks);
}

void frmMain::showContextMenu(wxWindow& over, ContextOf which) {
    if (busy() || selectedTemplate() == nullptr) return;
    const std::unique_ptr<wxMenu> menu(makeMenu(contextMenu(which)));
    over.PopupMenu(menu.get());
}

}  // namespace kestrel
