#pragma once

#include <string_view>
#include <vector>

namespace kestrel {

class frmMain;

// A command of the main window. The toolbar, its drop-downs, the buttons, the
// menu and the keys look their commands up in one table of these rows.
struct Command {
    enum class Place { toolbar, dropDown, button };
    // When an entry of a drop-down becomes the one that its button repeats.
    enum class Repeat { never, whenChosen, whenDone };

    Place place;
    std::string_view key;
    const char* caption;
    const char* tooltip;
    std::string_view under;  // of an entry: its toolbar button
    const char* icon;        // of a toolbar button
    int index;               // of a button: its index in cmdCommands
    Repeat repeat;
    bool (*run)(frmMain& window);  // true when it did its work
};

// A key that runs a command, and whether the history box keeps it for itself
// while it has the keyboard.
struct CommandKey {
    int code;
    int modifiers;
    bool anyModifiers;
    bool leftToHistory;
    Command::Place place;
    std::string_view command;
};

// An entry of the File menu that runs a command; without one it is the
// separator, or the window's own work.
struct CommandMenuItem {
    std::string_view name;
    const char* caption;  // empty: a separator
    Command::Place place;
    std::string_view command;
};

// The table, in the order of the toolbar and of its drop-downs.
const std::vector<Command>& mainCommands();
const std::vector<CommandKey>& mainKeys();
const std::vector<CommandMenuItem>& mainMenu();

// The row of a command; every name that the tables use has one.
const Command& mainCommand(Command::Place place, std::string_view key);

// The entries of a toolbar button's drop-down, in order; none for a plain button.
std::vector<const Command*> entriesOf(const Command& button);

}  // namespace kestrel
