#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

class frmMain;

// A command of the main window. The toolbar, its drop-downs, the buttons, the menus
// and the keys look their commands up in one table of these rows.
struct Command {
    enum class Place { toolbar, dropDown, button, menu };
    // When an entry of a drop-down becomes the one that its button repeats.
    enum class Repeat { never, whenChosen, whenDone };
    // What must be there for the command to do anything.
    enum class Needs { nothing, path, file, page, templates, selection, property };

    Place place = Place::menu;
    std::string_view key = {};
    const char* caption = "";
    const char* tooltip = "";
    std::string_view under = {};  // of an entry: its toolbar button
    const char* icon = "";        // of a toolbar button
    int index = -1;               // of a button: its index in cmdCommands
    Repeat repeat = Repeat::never;
    Needs needs = Needs::nothing;
    bool (frmMain::*run)() = nullptr;  // true when it did its work
};

// A key that runs a command, and whether the history box keeps it for itself
// while it has the keyboard.
struct CommandKey {
    int code;
    int modifiers;
    const char* shown;  // in the menu
    bool leftToHistory;
    Command::Place place;
    std::string_view command;
};

// An entry of a menu: a command, a menu of its own, or a separator where it has no caption.
struct CommandMenuItem {
    std::string_view name;
    const char* caption;
    Command::Place place;
    std::string_view command;
    bool checked = false;  // it is ticked while what it stands for is on
    std::vector<CommandMenuItem> items = {};
};

struct CommandMenu {
    const char* caption;
    std::vector<CommandMenuItem> items;
};

// The table, in the order of the toolbar and of its drop-downs.
const std::vector<Command>& mainCommands();
const std::vector<CommandKey>& mainKeys();
// The File menu, which is the notification icon's too, and those beside it.
const std::vector<CommandMenu>& mainMenus();
// What opens over a row of each list and a node of the tree.
enum class ContextOf { templates, properties, blocks };
const std::vector<CommandMenuItem>& contextMenu(ContextOf which);

// The row of a command; every name that the tables use has one.
const Command& mainCommand(Command::Place place, std::string_view key);

// The key that the menus show for a command; null for none.
const CommandKey* keyOf(Command::Place place, std::string_view command);

// The entries of a toolbar button's drop-down, in order; none for a plain button.
std::vector<const Command*> entriesOf(const Command& button);

}  // namespace kestrel
