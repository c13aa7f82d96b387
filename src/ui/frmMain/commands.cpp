#include "ui/frmMain/commands.h"

#include <wx/defs.h>
#include <wx/event.h>

#include <algorithm>

#include "ui/frmMain/frmMain.h"

namespace kestrel {
namespace {

using Place = Command::Place;
using Repeat = Command::Repeat;
using Run = bool (*)(frmMain&);

Command button(std::string_view key, const char* tooltip, const char* icon, Run run) {
    return {Place::toolbar, key, tooltip, tooltip, "", icon, -1, Repeat::never, run};
}

// A button that repeats the entry of its drop-down that was chosen last.
Command repeater(std::string_view key, const char* tooltip, const char* icon) {
    return button(key, tooltip, icon, nullptr);
}

Command entry(std::string_view under, std::string_view key, const char* caption, Repeat repeat,
              Run run) {
    return {Place::dropDown, key, caption, "", under, "", -1, repeat, run};
}

Command inWindow(int index, std::string_view key, const char* caption, const char* tooltip,
                 Run run) {
    return {Place::button, key, caption, tooltip, "", "", index, Repeat::never, run};
}

std::vector<Command> makeTable() {
    constexpr auto kChosen = Repeat::whenChosen;
    constexpr auto kDone = Repeat::whenDone;
    using W = frmMain;
    return {
        button("Open", "Open", "open", [](W& w) { return w.openFile({}); }),
        button("Preview", "View Template (Tab Delimited)", "preview",
               [](W& w) { return w.previewAll(); }),
        button("Print", "Print", "print", [](W& w) { return w.notImplemented(); }),
        repeater("Save", "Save Template (Tab Delimited)", "save"),
        entry("Save", "SaveCurrent", "Current Only", kDone, [](W& w) { return w.saveCurrent(); }),
        entry("Save", "SaveMulti", "Multiple Files", kChosen,
              [](W& w) { return w.convertFolder(); }),
        button("Find", "Find Again (dropdown for where/what)", "find-again",
               [](W& w) { return w.findAgain(); }),
        entry("Find", "FindTemplate", "Find Template Name", Repeat::never,
              [](W& w) { return w.find(W::SearchKind::templates); }),
        entry("Find", "FindProperty", "Find Property Name", Repeat::never,
              [](W& w) { return w.find(W::SearchKind::properties); }),
        repeater("Copy", "Repeat Copy  (to clipboard)", "copy"),
        entry("Copy", "CopySingle", "Copy Property List", kChosen,
              [](W& w) { return w.copyProperties(); }),
        entry("Copy", "CopyFull", "Copy Template List", kChosen,
              [](W& w) { return w.copyTemplates(); }),
        button("Properties", ".GAS File Properties", "properties",
               [](W& w) { return w.showProperties(); }),
        repeater("Skritpad", "Open .GAS file in SkritPad", "skritpad"),
        entry("Skritpad", "Skritpad", "SkritPad", kChosen, [](W& w) { return w.runSkritPad(); }),
        entry("Skritpad", "Notepad", "Notepad", kChosen, [](W& w) { return w.runNotepad(); }),
        repeater("Orvane", "Repeat Orvane", "orvane"),
        entry("Orvane", "MOR", "Mini-Orvane", kDone, [](W& w) { return w.browseArchive(); }),
        entry("Orvane", "Orvane", "Full Orvane", kChosen, [](W& w) { return w.startOrvane(); }),
        button("Zeltor", "Zeltor", "zeltor", [](W& w) { return w.buildArchive(); }),
        repeater("Tool", "External Tools (Click to repeat last Tool)", "tool"),
        entry("Tool", "Tool1", "Tool1", kDone, [](W& w) { return w.runTool(0); }),
        entry("Tool", "Tool2", "Tool2", kDone, [](W& w) { return w.runTool(1); }),
        entry("Tool", "Tool3", "Tool3", kDone, [](W& w) { return w.runTool(2); }),
        entry("Tool", "Tool4", "Tool4", kDone, [](W& w) { return w.runTool(3); }),
        entry("Tool", "Tool5", "Tool5", kDone, [](W& w) { return w.runTool(4); }),
        entry("Tool", "Reset", "Reset Tools", kChosen, [](W& w) { return w.resetTools(); }),
        button("Help", "Help", "help", [](W& w) { return w.help(); }),

        inWindow(W::kDone, "Done", "&Done", "", [](W& w) { return w.Close(); }),
        inWindow(W::kSource, "Source", "Source", "", [](W& w) { return w.editSource(); }),
        inWindow(W::kParsed, "Parsed", "&Parsed", "View as Parsed",
                 [](W& w) { return w.viewParsed(); }),
        inWindow(W::kReload, "Reload", "Reload", "", [](W& w) { return w.reload(); }),
        inWindow(W::kListed, "Listed", "As &Listed", "View As Listed",
                 [](W& w) { return w.viewListed(); }),
        inWindow(W::kChain, "Chain", "View Specializes Chain", "",
                 [](W& w) { return w.viewChain(); }),
        inWindow(W::kTest, "Test", "&Test", "", [](W& w) { return w.test(); }),
    };
}

}  // namespace

const std::vector<Command>& mainCommands() {
    static const std::vector<Command> table = makeTable();
    return table;
}

const std::vector<CommandKey>& mainKeys() {
    static const std::vector<CommandKey> keys{
        {WXK_F3, wxMOD_NONE, false, false, Place::toolbar, "Find"},
        {'F', wxMOD_CONTROL, false, false, Place::dropDown, "FindProperty"},
        {'O', wxMOD_CONTROL, false, false, Place::toolbar, "Open"},
        {'S', wxMOD_CONTROL, false, true, Place::toolbar, "Save"},
        {'C', wxMOD_CONTROL, false, true, Place::toolbar, "Copy"},
        {'A', wxMOD_CONTROL, false, true, Place::toolbar, "Copy"},
        {WXK_ESCAPE, wxMOD_NONE, true, false, Place::button, "Done"},
    };
    return keys;
}

const std::vector<CommandMenuItem>& mainMenu() {
    static const std::vector<CommandMenuItem> menu{
        {"mnuFileSkrit", "&SkritEdit", Place::dropDown, "Skritpad"},
        {"mnuFileTC", "&Zeltor", Place::toolbar, "Zeltor"},
        {"mnuFileTV", "&Orvane", Place::dropDown, "Orvane"},
        {"mnuFileSep1", "", Place::button, ""},
        {"mnuFileRestore", "&Restore", Place::button, ""},
        {"mnuFileSep2", "", Place::button, ""},
        {"mnuFileExit", "&Exit", Place::button, "Done"},
    };
    return menu;
}

const Command& mainCommand(Command::Place place, std::string_view key) {
    const auto& table = mainCommands();
    return *std::find_if(table.begin(), table.end(), [&](const Command& command) {
        return command.place == place && command.key == key;
    });
}

std::vector<const Command*> entriesOf(const Command& button) {
    std::vector<const Command*> entries;
    for (const Command& command : mainCommands()) {
        if (command.place == Place::dropDown && command.under == button.key) {
            entries.push_back(&command);
        }
    }
    return entries;
}

}  // namespace kestrel
