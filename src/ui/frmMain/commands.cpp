#include "ui/frmMain/commands.h"

#include <wx/defs.h>
#include <wx/event.h>

#include <algorithm>

#include "ui/frmMain/frmMain.h"

namespace kestrel {
namespace {

using Place = Command::Place;
using Repeat = Command::Repeat;
using Needs = Command::Needs;
using Run = bool (frmMain::*)();

Command button(std::string_view key, const char* tooltip, const char* icon, Needs needs, Run run) {
    return {.place = Place::toolbar,
            .key = key,
            .caption = tooltip,
            .tooltip = tooltip,
            .icon = icon,
            .needs = needs,
            .run = run};
}

// A button that repeats the entry of its drop-down that was chosen last.
Command repeater(std::string_view key, const char* tooltip, const char* icon) {
    return button(key, tooltip, icon, Needs::nothing, nullptr);
}

Command entry(std::string_view under, std::string_view key, const char* caption, Repeat repeat,
              Needs needs, Run run) {
    return {.place = Place::dropDown,
            .key = key,
            .caption = caption,
            .under = under,
            .repeat = repeat,
            .needs = needs,
            .run = run};
}

Command inWindow(int index, std::string_view key, const char* caption, const char* tooltip,
                 Needs needs, Run run) {
    return {.place = Place::button,
            .key = key,
            .caption = caption,
            .tooltip = tooltip,
            .index = index,
            .needs = needs,
            .run = run};
}

Command inMenu(std::string_view key, Needs needs, Run run) {
    return {.place = Place::menu, .key = key, .needs = needs, .run = run};
}

using W = frmMain;
using enum Command::Needs;

std::vector<Command> toolBarCommands() {
    constexpr auto kChosen = Repeat::whenChosen;
    constexpr auto kDone = Repeat::whenDone;
    constexpr auto kNever = Repeat::never;
    return {
        button("Open", "Open", "open", nothing, &W::chooseFile),
        button("Preview", "View Template (Tab Delimited)", "preview", templates, &W::previewAll),
        button("Print", "Print", "print", nothing, &W::notImplemented),
        repeater("Save", "Save Template (Tab Delimited)", "save"),
        entry("Save", "SaveCurrent", "Current Only", kDone, templates, &W::saveCurrent),
        entry("Save", "SaveMulti", "Multiple Files", kChosen, nothing, &W::convertFolder),
        button("Find", "Find Again (dropdown for where/what)", "find-again", nothing,
               &W::findAgain),
        entry("Find", "FindTemplate", "Find Template Name", kNever, templates,
              &W::findTemplateName),
        entry("Find", "FindProperty", "Find Property Name", kNever, property, &W::findPropertyName),
        repeater("Copy", "Repeat Copy  (to clipboard)", "copy"),
        entry("Copy", "CopySingle", "Copy Property List", kChosen, selection, &W::copyProperties),
        entry("Copy", "CopyFull", "Copy Template List", kChosen, nothing, &W::copyTemplates),
        button("Properties", ".GAS File Properties", "properties", file, &W::showProperties),
        repeater("Skritpad", "Open .GAS file in SkritPad", "skritpad"),
        entry("Skritpad", "Skritpad", "SkritPad", kChosen, file, &W::runSkritPad),
        entry("Skritpad", "Notepad", "Notepad", kChosen, file, &W::runNotepad),
        repeater("Orvane", "Repeat Orvane", "orvane"),
        entry("Orvane", "MOR", "Mini-Orvane", kDone, nothing, &W::browseArchive),
        entry("Orvane", "Orvane", "Full Orvane", kChosen, nothing, &W::startOrvane),
        button("Zeltor", "Zeltor", "zeltor", nothing, &W::buildArchive),
        repeater("Tool", "External Tools (Click to repeat last Tool)", "tool"),
        entry("Tool", "Tool1", "Tool1", kDone, nothing, &W::runTool<0>),
        entry("Tool", "Tool2", "Tool2", kDone, nothing, &W::runTool<1>),
        entry("Tool", "Tool3", "Tool3", kDone, nothing, &W::runTool<2>),
        entry("Tool", "Tool4", "Tool4", kDone, nothing, &W::runTool<3>),
        entry("Tool", "Tool5", "Tool5", kDone, nothing, &W::runTool<4>),
        entry("Tool", "Reset", "Reset Tools", kChosen, nothing, &W::resetTools),
        button("Help", "Help", "help", nothing, &W::help),
    };
}

// What a file can be read as; its key is the number of the page.
struct Encoding {
    std::string_view key;
    const char* caption;
    Run run;
};
constexpr Encoding kEncodings[]{
    {"1250", "&Central European (1250)", &W::useEncoding<1250>},
    {"1251", "C&yrillic (1251)", &W::useEncoding<1251>},
    {"1252", "&Western European (1252)", &W::useEncoding<1252>},
    {"1253", "&Greek (1253)", &W::useEncoding<1253>},
    {"1254", "&Turkish (1254)", &W::useEncoding<1254>},
    {"1255", "&Hebrew (1255)", &W::useEncoding<1255>},
    {"1256", "&Arabic (1256)", &W::useEncoding<1256>},
    {"1257", "&Baltic (1257)", &W::useEncoding<1257>},
    {"1258", "&Vietnamese (1258)", &W::useEncoding<1258>},
    {"874", "T&hai (874)", &W::useEncoding<874>},
    {"65001", "&UTF-8 (by the file's mark)", &W::refresh},
};

std::vector<Command> otherCommands() {
    std::vector<Command> commands{
        inWindow(W::kDone, "Done", "&Done", "", nothing, &W::done),
        inWindow(W::kSource, "Source", "Source", "", selection, &W::editSource),
        inWindow(W::kParsed, "Parsed", "&Parsed", "View as Parsed", selection, &W::viewParsed),
        inWindow(W::kReload, "Reload", "Reload", "", path, &W::reload),
        inWindow(W::kListed, "Listed", "As &Listed", "View As Listed", selection, &W::viewListed),
        inWindow(W::kChain, "Chain", "View Specializes Chain", "", selection, &W::viewChain),
        inWindow(W::kTest, "Test", "&Test", "", nothing, &W::test),

        inMenu("Restore", nothing, &W::restore),
        inMenu("CopyValue", property, &W::copyValue),
        inMenu("CopyRow", property, &W::copyRow),
        inMenu("CopyPath", selection, &W::copyPath),
        inMenu("CopyName", selection, &W::copyName),
        inMenu("Follow", property, &W::follow),
        inMenu("FilterProperty", property, &W::filterByProperty),
        inMenu("FilterBlock", selection, &W::filterByBlock),
        inMenu("Refresh", file, &W::refresh),
        inMenu("TreeFilter", nothing, &W::toggleFilter),
        inMenu("NextPane", nothing, &W::nextPane),
        inMenu("PreviousPane", nothing, &W::previousPane),
        inMenu("RememberWindow", nothing, &W::toggleRemembering),
        inMenu("Contents", nothing, &W::showManual),
        inMenu("Samples", nothing, &W::openSample),
    };
    for (const Encoding& one : kEncodings) commands.push_back(inMenu(one.key, page, one.run));
    return commands;
}

const CommandMenuItem kSeparator{"", "", Place::menu, ""};

CommandMenu fileMenu() {
    return {"&File",
            {{"mnuFileSkrit", "&SkritEdit", Place::dropDown, "Skritpad"},
             {"mnuFileTC", "&Zeltor", Place::toolbar, "Zeltor"},
             {"mnuFileTV", "&Orvane", Place::dropDown, "Orvane"},
             {"mnuFileSep1", "", Place::menu, ""},
             {"mnuFileRestore", "&Restore", Place::menu, "Restore"},
             {"mnuFileSep2", "", Place::menu, ""},
             {"mnuFileExit", "&Exit", Place::button, "Done"}}};
}

CommandMenu editMenu() {
    return {"&Edit",
            {{"", "&Open...", Place::toolbar, "Open"},
             {"", "&Reload", Place::menu, "Refresh"},
             {"", "&Save Current Only...", Place::dropDown, "SaveCurrent"},
             {"", "Convert &Multiple Files...", Place::dropDown, "SaveMulti"},
             kSeparator,
             {"", "Copy &Property List", Place::dropDown, "CopySingle"},
             {"", "Copy &Template List", Place::dropDown, "CopyFull"},
             {"", "Copy &Value", Place::menu, "CopyValue"},
             {"", "Copy Ro&w", Place::menu, "CopyRow"},
             {"", "Copy P&ath", Place::menu, "CopyPath"},
             kSeparator,
             {"", "&Find Property Name...", Place::dropDown, "FindProperty"},
             {"", "Find Template &Name...", Place::dropDown, "FindTemplate"},
             {"", "Find A&gain", Place::toolbar, "Find"}}};
}

std::vector<CommandMenuItem> encodings() {
    std::vector<CommandMenuItem> items;
    for (const Encoding& one : kEncodings) {
        items.push_back({"", one.caption, Place::menu, one.key, true});
    }
    return items;
}

CommandMenu viewMenu() {
    return {"&View",
            {{"", "&Source", Place::button, "Source"},
             {"", "&Parsed", Place::button, "Parsed"},
             {"", "As &Listed", Place::button, "Listed"},
             {"", "Specializes &Chain", Place::button, "Chain"},
             {"", "&All Templates (Tab Delimited)", Place::toolbar, "Preview"},
             {"", ".GAS File P&roperties", Place::toolbar, "Properties"},
             kSeparator,
             {"", "Use &Tree as Filter", Place::menu, "TreeFilter", true},
             {"", "&Follow", Place::menu, "Follow"},
             kSeparator,
             {"", "Te&xt Encoding", Place::menu, "", false, encodings()},
             kSeparator,
             {"", "&Next Pane", Place::menu, "NextPane"},
             {"", "Pre&vious Pane", Place::menu, "PreviousPane"},
             {"", "Remember &Window", Place::menu, "RememberWindow", true}}};
}

CommandMenu toolsMenu() {
    return {"&Tools",
            {{"", "&SkritPad", Place::dropDown, "Skritpad"},
             {"", "&Notepad", Place::dropDown, "Notepad"},
             {"", "&Mini-Orvane", Place::dropDown, "MOR"},
             {"", "Full &Orvane", Place::dropDown, "Orvane"},
             {"", "&Zeltor", Place::toolbar, "Zeltor"},
             kSeparator,
             {"", "Tool1", Place::dropDown, "Tool1"},
             {"", "Tool2", Place::dropDown, "Tool2"},
             {"", "Tool3", Place::dropDown, "Tool3"},
             {"", "Tool4", Place::dropDown, "Tool4"},
             {"", "Tool5", Place::dropDown, "Tool5"},
             {"", "&Reset Tools", Place::dropDown, "Reset"},
             kSeparator,
             {"", "&Print", Place::toolbar, "Print"}}};
}

CommandMenu helpMenu() {
    return {"&Help",
            {{"", "&Contents", Place::menu, "Contents"},
             {"", "Open a &Sample...", Place::menu, "Samples"},
             kSeparator,
             {"", "&About Kestrel", Place::toolbar, "Help"}}};
}

}  // namespace

const std::vector<Command>& mainCommands() {
    static const std::vector<Command> table = [] {
        std::vector<Command> all = toolBarCommands();
        const std::vector<Command> others = otherCommands();
        all.insert(all.end(), others.begin(), others.end());
        return all;
    }();
    return table;
}

const std::vector<CommandKey>& mainKeys() {
    static const std::vector<CommandKey> keys{
        {WXK_F3, wxMOD_NONE, "F3", false, Place::toolbar, "Find"},
        {'F', wxMOD_CONTROL, "Ctrl+F", false, Place::dropDown, "FindProperty"},
        {'O', wxMOD_CONTROL, "Ctrl+O", false, Place::toolbar, "Open"},
        {'S', wxMOD_CONTROL, "Ctrl+S", true, Place::toolbar, "Save"},
        {'C', wxMOD_CONTROL, "Ctrl+C", true, Place::toolbar, "Copy"},
        {'A', wxMOD_CONTROL, "Ctrl+A", true, Place::toolbar, "Copy"},
        {WXK_F1, wxMOD_NONE, "F1", false, Place::menu, "Contents"},
        {WXK_F5, wxMOD_NONE, "F5", false, Place::menu, "Refresh"},
        {WXK_F6, wxMOD_NONE, "F6", false, Place::menu, "NextPane"},
        {WXK_F6, wxMOD_SHIFT, "Shift+F6", false, Place::menu, "PreviousPane"},
        {'Q', wxMOD_CONTROL, "Ctrl+Q", false, Place::button, "Done"},
        {'W', wxMOD_CONTROL, "Ctrl+W", false, Place::button, "Done"},
    };
    return keys;
}

const std::vector<CommandMenu>& mainMenus() {
    static const std::vector<CommandMenu> menus{fileMenu(), editMenu(), viewMenu(), toolsMenu(),
                                                helpMenu()};
    return menus;
}

const std::vector<CommandMenuItem>& contextMenu(ContextOf which) {
    static const std::vector<CommandMenuItem> menus[]{
        {{"", "&Source", Place::button, "Source"},
         {"", "&Parsed", Place::button, "Parsed"},
         {"", "As &Listed", Place::button, "Listed"},
         {"", "Specializes C&hain", Place::button, "Chain"},
         kSeparator,
         {"", "&Copy Name", Place::menu, "CopyName"},
         {"", "Copy &Template List", Place::dropDown, "CopyFull"}},
        {{"", "Copy &Value", Place::menu, "CopyValue"},
         {"", "Copy &Row", Place::menu, "CopyRow"},
         {"", "Copy &Path", Place::menu, "CopyPath"},
         {"", "&Copy Property List", Place::dropDown, "CopySingle"},
         kSeparator,
         {"", "&Filter by This Block", Place::menu, "FilterProperty"},
         {"", "F&ollow", Place::menu, "Follow"}},
        {{"", "Copy &Path", Place::menu, "CopyPath"},
         kSeparator,
         {"", "&Filter by This Block", Place::menu, "FilterBlock"},
         {"", "Use &Tree as Filter", Place::menu, "TreeFilter", true}},
    };
    return menus[static_cast<std::size_t>(which)];
}

const Command& mainCommand(Command::Place place, std::string_view key) {
    const auto& table = mainCommands();
    return *std::find_if(table.begin(), table.end(), [&](const Command& command) {
        return command.place == place && command.key == key;
    });
}

const CommandKey* keyOf(Command::Place place, std::string_view command) {
    const auto& keys = mainKeys();
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const CommandKey& key) {
        return key.place == place && key.command == command;
    });
    return found == keys.end() ? nullptr : &*found;
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
