#include "ui/frmMain/commands.h"

#include <wx/menu.h>
#include <wx/toolbar.h>

#include <algorithm>

#include "services/histories.h"
#include "ui/common/strings.h"
#include "ui/frmMain/frmMain.h"
#include "ui/frmView/frmView.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

using Place = Command::Place;
using Lines = std::vector<std::string>;

constexpr const char* kFile =
    "[t:template,n:crate]\r\n{\r\ndoc = \"Crate\";\r\nspecializes = \"prop\";\r\n"
    "[look]\r\n{\r\nmodel = \"m_crate\";\r\n}\r\n}\r\n"
    "[t:template,n:prop]\r\n{\r\ndoc = \"Prop\";\r\n}\r\n"
    "[t:template,n:bin]\r\n{\r\ndoc = \"Bin\";\r\nmodelled = 1;\r\n}\r\n";

class Commands : public UiTest {
  protected:
    Commands() : window(new frmMain) {
        window->start({});
        show(*window);
    }

    void open() {
        file = folder.put(L"props.gas", kFile);
        ASSERT_TRUE(window->openFile(file));
        settle();
        host.log.clear();
    }

    void press(std::string_view key) { window->run(mainCommand(Place::toolbar, key)); }
    void choose(std::string_view key) { window->run(mainCommand(Place::dropDown, key)); }
    void command(std::string_view key) { window->run(mainCommand(Place::button, key)); }

    std::string path(std::wstring_view name) const { return shown(folder.path(name)); }
    std::wstring info() const { return fromWx(window->stbMain->GetStatusText(frmMain::pnlInfo)); }

    frmMain* window;
    std::wstring file;
};

// The dialog that the command `run` opens: its title and, of a viewer, the text.
// `use` works with a viewer that is shown.
struct Seen {
    std::string title;
    std::wstring text;
};

Seen seenBy(const std::function<void()>& run, const std::function<void(frmView&)>& use = {}) {
    Seen seen;
    const ExpectDialog dialog([&](wxDialog& shownDialog) {
        auto* viewer = dynamic_cast<frmView*>(&shownDialog);
        if (use && viewer != nullptr) {
            show(*viewer);
            use(*viewer);
        }
        seen = {shownDialog.GetTitle().utf8_string(), viewer ? viewer->TextBlock() : L""};
        return wxID_CANCEL;
    });
    run();
    return seen;
}

TEST_F(Commands, TableAndFileMenuReadAsTheProductsTexts) {
    const struct {
        const char* key;
        const char* tooltip;
        Lines entries;  // "caption=key", in order: the first is the default
    } kToolbar[] = {
        {"Open", "Open", {}},
        {"Preview", "View Template (Tab Delimited)", {}},
        {"Print", "Print", {}},
        {"Save",
         "Save Template (Tab Delimited)",
         {"Current Only=SaveCurrent", "Multiple Files=SaveMulti"}},
        {"Find",
         "Find Again (dropdown for where/what)",
         {"Find Template Name=FindTemplate", "Find Property Name=FindProperty"}},
        {"Copy",
         "Repeat Copy  (to clipboard)",
         {"Copy Property List=CopySingle", "Copy Template List=CopyFull"}},
        {"Properties", ".GAS File Properties", {}},
        {"Skritpad", "Open .GAS file in SkritPad", {"SkritPad=Skritpad", "Notepad=Notepad"}},
        {"Orvane", "Repeat Orvane", {"Mini-Orvane=MOR", "Full Orvane=Orvane"}},
        {"Zeltor", "Zeltor", {}},
        {"Tool",
         "External Tools (Click to repeat last Tool)",
         {"Tool1=Tool1", "Tool2=Tool2", "Tool3=Tool3", "Tool4=Tool4", "Tool5=Tool5",
          "Reset Tools=Reset"}},
        {"Help", "Help", {}},
    };
    wxToolBar& bar = *window->tbrMain;
    ASSERT_EQ(bar.GetToolsCount(), std::size(kToolbar));
    for (std::size_t i = 0; i < std::size(kToolbar); ++i) {
        const auto& row = kToolbar[i];
        const wxToolBarToolBase& tool = *bar.GetToolByPos(static_cast<int>(i));
        EXPECT_EQ(tool.GetShortHelp(), row.tooltip);
        EXPECT_TRUE(tool.IsEnabled());
        EXPECT_TRUE(tool.GetNormalBitmap().IsOk()) << row.key;
        Lines entries;
        for (const Command* entry : entriesOf(mainCommand(Place::toolbar, row.key))) {
            entries.push_back(std::string(entry->caption) + "=" + std::string(entry->key));
        }
        EXPECT_EQ(entries, row.entries) << row.key;
        EXPECT_EQ(tool.GetDropdownMenu() != nullptr, !row.entries.empty()) << row.key;
    }
    const std::map<int, std::pair<const char*, const char*>> kButtons{
        {0, {"&Done", ""}},
        {1, {"Source", ""}},
        {2, {"&Parsed", "View as Parsed"}},
        {3, {"Reload", ""}},
        {4, {"As &Listed", "View As Listed"}},
        {5, {"View Specializes Chain", ""}},
        {10, {"&Test", ""}},
    };
    ASSERT_EQ(window->cmdCommands.size(), kButtons.size());
    for (const auto& [index, texts] : kButtons) {
        EXPECT_EQ(window->cmdCommands.at(index)->GetLabel(), texts.first);
        EXPECT_EQ(window->cmdCommands.at(index)->GetToolTipText(), texts.second);
    }
    const char* const kItems[] = {"&SkritEdit", "&Zeltor", "&Orvane", "", "&Restore", "", "&Exit"};
    EXPECT_EQ(window->GetMenuBar()->GetMenuLabel(0), "&File");
    ASSERT_EQ(window->mnuFile->GetMenuItemCount(), std::size(kItems));
    for (std::size_t i = 0; i < std::size(kItems); ++i) {
        const wxMenuItem& item = *window->mnuFile->FindItemByPosition(i);
        EXPECT_EQ(item.IsSeparator(), *kItems[i] == '\0');
        EXPECT_EQ(item.IsSeparator() ? wxString() : item.GetItemLabel(), kItems[i]);
    }
}

TEST_F(Commands, WithoutAFileNothingHappensOrOnlyTheMessage) {
    for (const char* key : {"Preview", "Save", "Find", "Properties", "Skritpad"}) press(key);
    for (const char* key :
         {"SaveCurrent", "CopySingle", "Notepad", "FindProperty", "FindTemplate"}) {
        choose(key);
    }
    for (const char* key : {"Source", "Parsed", "Listed", "Chain", "Reload"}) command(key);
    EXPECT_EQ(host.log, Lines{});
    press("Zeltor");
    EXPECT_EQ(host.logged("open").size(), 1U) << "asked for its path, and cancelled";
    gProgram().settings.zeltor = L"/opt/zeltor";
    EXPECT_NE(seenBy([&] { press("Zeltor"); }).title, "");
    EXPECT_NE(seenBy([&] { choose("MOR"); }).title, "");
    host.log.clear();
    press("Print");
    command("Test");
    EXPECT_EQ(
        host.log,
        (Lines{"ask: Not implemented at this time. | Kestrel Template Browser | information | ok",
               "ask: Nothing in texting... | Kestrel Template Browser | information | ok"}));
}

TEST_F(Commands, ButtonsRepeatTheEntryChosenLast) {
    open();
    press("Copy");
    choose("CopyFull");
    press("Copy");
    ASSERT_EQ(host.log.size(), 3U);
    EXPECT_NE(host.log[0].find("#\\tProperty\\tValue\\tGroup"), std::string::npos);
    EXPECT_NE(host.log[1].find("#\\tTemplate\\r\\n"), std::string::npos);
    EXPECT_EQ(host.log[2], host.log[1]);
    EXPECT_NE(host.log[1].find(path(L"props.gas")), std::string::npos);

    host.log.clear();
    gProgram().settings.skritpad = L"/pad";
    press("Skritpad");
    choose("Notepad");
    press("Skritpad");
    EXPECT_EQ(host.log, (Lines{"run: /pad " + path(L"props.gas") + " | /pad",
                               "run: notepad.exe " + path(L"props.gas") + " | notepad.exe",
                               "run: notepad.exe " + path(L"props.gas") + " | notepad.exe"}));
}

TEST_F(Commands, SomeEntriesAreRepeatedOnlyOnceTheyWorked) {
    open();
    choose("Tool3");  // the prompt is cancelled
    host.log.clear();
    host.files = {L"/opt/one.exe"};
    press("Tool");
    EXPECT_EQ(host.log.back(), "run: /opt/one.exe | /opt/one.exe") << "still the default, Tool1";
    EXPECT_EQ(gProgram().settings.tools[0], L"one|/opt/one.exe");
    gProgram().settings.tools[2] = L"three|/opt/three";
    choose("Tool3");
    press("Tool");
    EXPECT_EQ(host.log.back(), "run: /opt/three | /opt/three");

    EXPECT_EQ(seenBy([&] { choose("SaveMulti"); }).title, "Convert Multiple .gas to TAB Delimited");
    choose("SaveCurrent");  // cancelled
    host.log.clear();
    EXPECT_EQ(seenBy([&] { press("Save"); }).title, "Convert Multiple .gas to TAB Delimited");
    EXPECT_EQ(host.logged("save"), Lines{}) << "the last one that was stored is Multiple Files";
}

TEST_F(Commands, ToolsShowTheirCaptionsUntilTheyAreReset) {
    gProgram().settings.tools[1] = L"Lint & pack|/opt/lint";
    window->showToolCaptions();
    const auto caption = [&](std::size_t index) {
        const wxMenu* menu = window->tbrMain->GetToolByPos(10)->GetDropdownMenu();
        return menu->FindItemByPosition(index)->GetItemLabelText();
    };
    EXPECT_EQ(caption(0), "Tool1");
    EXPECT_EQ(caption(1), "Lint & pack");
    choose("Reset");
    EXPECT_EQ(caption(1), "Tool2");
    EXPECT_EQ(gProgram().settings.tools[1], L"");
}

TEST_F(Commands, AProgramThatCannotBeStartedIsReportedOnce) {
    gProgram().settings.orvane = host.missingProgram = L"/gone";
    choose("Orvane");
    EXPECT_EQ(
        host.log.back(),
        "ask: Error (53): File not found in 'tbrMain_ButtonMenuClick' | Kestrel | exclamation "
        "| ok");
    EXPECT_EQ(host.logged("ask").size(), 1U);
}

TEST_F(Commands, SaveCurrentWritesTheListingAndKeepsTheOldFile) {
    open();
    choose("SaveCurrent");  // cancelled
    EXPECT_EQ(host.logged("ask"), Lines{});
    folder.put(L"out.tab", "before");
    host.files = {folder.path(L"out.tab")};
    host.answers = {Answer::yes};
    choose("SaveCurrent");
    EXPECT_TRUE(host.log.front().starts_with(
        "save: Please specify a filename | Text files (*.tab)|*.tab|All files"));
    EXPECT_EQ(folder.bytes(L"out.tab.bak"), "before");
    EXPECT_NE(folder.bytes(L"out.tab").find("m_crate"), std::string::npos);
    EXPECT_EQ(
        host.logged("ask"),
        Lines{"ask: File saved successfully. Do you wish to edit the file? | Kestrel Template "
              "Browser | information | yesNo"});
    EXPECT_EQ(host.log.back(), "run: notepad.exe " + path(L"out.tab") + " | notepad.exe");
}

TEST_F(Commands, ViewersShowTheSelectedTemplate) {
    open();
    const GasTemplate crate = *window->selectedTemplate();
    for (const auto& [key, title] : {std::pair("Source", "Edit Source: Crate"),
                                     std::pair("Listed", "View Listed Text: Crate")}) {
        const Seen seen = seenBy([&, name = key] { command(name); });
        EXPECT_EQ(seen.title, title);
        EXPECT_EQ(seen.text, crate.Text);
    }
    Seen seen = seenBy([&] { command("Parsed"); });
    EXPECT_EQ(seen.title, "View Parsed Text: Crate");
    EXPECT_NE(seen.text.find(L"m_crate"), std::wstring::npos);
    EXPECT_NE(seen.text.find(L"specializes"), std::wstring::npos);
    seen = seenBy([&] { press("Preview"); });
    EXPECT_EQ(seen.title, "View All Templates");
    EXPECT_NE(seen.text.find(L"modelled"), std::wstring::npos);

    tick(*window->chkTree);
    wxTreeItemIdValue cookie;
    window->tvwInfo->SelectItem(
        window->tvwInfo->GetFirstChild(window->tvwInfo->GetRootItem(), cookie));
    seen = seenBy([&] { command("Parsed"); });
    EXPECT_NE(seen.text.find(L"m_crate"), std::wstring::npos);
    EXPECT_EQ(seen.text.find(L"specializes"), std::wstring::npos) << "that branch alone";
}

TEST_F(Commands, ReloadFromAViewerKeepsTheSelection) {
    open();
    window->lvwTemplates->selectRow(1);
    window->lvwTemplates->onSelect();
    folder.put(L"props.gas", kFile);
    window->reloadOpenFile();
    EXPECT_EQ(window->selectedTemplate()->Name, L"Prop");
    EXPECT_EQ(info(), L"Template K1 is Prop");
    folder.put(L"props.gas", "[t:template,n:only]\r\n{\r\n}\r\n");
    window->reloadOpenFile();
    EXPECT_EQ(window->selectedTemplate()->Name, L"Template0");
}

TEST_F(Commands, SavingASourceAsksOnceMoreWhenAnotherProgramChangedTheFile) {
    const auto questions = [this] {
        host.log.clear();
        host.files = {folder.path(L"props.gas")};
        seenBy([&] { command("Source"); }, [](frmView& view) { click(*view.cmdCommands[1]); });
        return host.logged("ask: ").size();
    };
    open();
    EXPECT_EQ(questions(), 1U);
    EXPECT_EQ(questions(), 1U) << "what Kestrel wrote itself is no change";
    folder.put(L"props.gas", std::string(kFile) + "\r\n");
    EXPECT_EQ(questions(), 2U);
    folder.put(L"props.gas", std::string(kFile) + "\r\n\r\n");
    window->reload();
    EXPECT_EQ(questions(), 1U) << "loaded again";
}

TEST_F(Commands, DoubleClicksFollowTheChain) {
    open();
    window->lvwProperties->selectRow(2);
    ASSERT_EQ(window->lvwProperties->firstText(2), L"specializes");
    EXPECT_EQ(seenBy([&] { window->lvwProperties->onActivate(); }).title, "View Source: Prop");
    window->lvwProperties->selectRow(0);
    window->lvwProperties->onActivate();
    EXPECT_EQ(info(), L"Crate > Prop");
    window->lvwProperties->selectRow(1);
    window->lvwProperties->onActivate();
    EXPECT_EQ(info(), L"Crate > Prop") << "other rows do nothing";
}

TEST_F(Commands, ChainNeedsSomethingToSpecialize) {
    open();
    EXPECT_EQ(seenBy([&] { command("Chain"); }).title, "Specializes Browser");
    window->lvwTemplates->selectRow(1);
    window->lvwTemplates->onSelect();
    command("Chain");
    EXPECT_EQ(host.log.back(),
              "ask: Current template does not specialize anything. | Kestrel Template Browser | "
              "information | ok");
}

TEST_F(Commands, SearchWrapsAndRepeats) {
    open();
    host.prompts = {L"MODEL"};
    choose("FindProperty");
    EXPECT_EQ(
        host.log.at(0),
        "prompt: Please enter the text to search for:\\r\\n\\r\\nNote: This sub-string search "
        "is not case sensitive and does not support regular expressions or wildcards. | "
        "Search Properties | ");
    EXPECT_EQ(window->lvwProperties->selectedRow(), 4U);
    press("Find");
    EXPECT_EQ(window->lvwProperties->selectedRow(), 4U) << "wrapped round to the only hit";

    host.prompts = {L"b"};
    choose("FindTemplate");
    EXPECT_EQ(window->selectedTemplate()->Name, L"Bin");
    EXPECT_EQ(info(), L"Template K2 is Bin") << "as if it had been clicked";
    host.prompts = {L"crate", std::nullopt, L"nowhere"};
    choose("FindTemplate");
    EXPECT_EQ(window->selectedTemplate()->Name, L"Crate");
    EXPECT_TRUE(host.log.back().ends_with("Search Templates | b"));
    choose("FindTemplate");  // cancelled
    choose("FindTemplate");
    EXPECT_EQ(host.log.back(),
              "ask: Search text not found. | Kestrel Template Browser | information | ok");
    EXPECT_EQ(window->selectedTemplate()->Name, L"Crate");
}

TEST_F(Commands, KeysRunCommandsAndLeaveTheHistoryItsOwn) {
    open();
    host.prompts = {L"doc"};
    key(*window->lvwProperties, 'F', wxMOD_CONTROL);
    EXPECT_EQ(window->lvwProperties->selectedRow(), 1U);
    host.log.clear();
    key(*window->tvwInfo, WXK_F3);
    for (const int code : {'C', 'A', 'S', 'O'}) key(*window->lvwTemplates, code, wxMOD_CONTROL);
    EXPECT_EQ(host.logged("clipboard").size(), 2U);
    EXPECT_EQ(host.logged("save").size(), 1U);
    EXPECT_EQ(host.logged("open").size(), 1U);

    host.log.clear();
    window->cboHistory->SetFocus();
    waitUntil("the history has the keyboard", [&] { return window->cboHistory->HasFocus(); });
    for (const int code : {'C', 'A', 'S'}) {
        wxKeyEvent event(wxEVT_CHAR_HOOK);
        event.m_keyCode = code;
        event.SetControlDown(true);
        event.SetEventObject(window->cboHistory);
        window->cboHistory->ProcessWindowEvent(event);
        EXPECT_TRUE(event.GetSkipped()) << static_cast<char>(code);
    }
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Commands, MarkedLettersWorkFromEveryPane) {
    open();
    const auto title = [&](wxWindow& focused, int letter) {
        return seenBy([&] { key(focused, letter, wxMOD_ALT); }).title;
    };
    EXPECT_EQ(title(*window->lvwTemplates, 'P'), "View Parsed Text: Crate");
    EXPECT_EQ(title(*window->cboHistory, 'L'), "View Listed Text: Crate");
    key(*window->lvwTemplates, 'S', wxMOD_ALT);
    EXPECT_TRUE(window->tvwInfo->HasFocus());
    host.log.clear();
    key(*window->tvwInfo, 'T', wxMOD_ALT);
    EXPECT_EQ(host.log, Lines{}) << "the button is hidden";
    key(*window->tvwInfo, 'D', wxMOD_ALT);
    settle();
    EXPECT_TRUE(wxTopLevelWindows.empty());
}

TEST_F(Commands, EscapeClosesTheWindow) {
    open();
    key(*window->lvwTemplates, WXK_ESCAPE, wxMOD_SHIFT);
    settle();
    EXPECT_TRUE(wxTopLevelWindows.empty());
    EXPECT_NE(folder.bytes(L"info.his").find("props.gas"), std::string::npos);
}

TEST_F(Commands, ACommandEndsWhatIsDragged) {
    open();
    wxWindow& dragged = *window->lvwProperties;
    dragged.CaptureMouse();
    const ExpectDialog viewer([&](wxDialog&) {
        EXPECT_FALSE(dragged.HasCapture());
        return wxID_CANCEL;
    });
    command("Listed");
}

TEST_F(Commands, LoggingOutInDialogsEndsThemFirst) {
    open();
    folder.put(L"mor.his", "old.dsres\r\n");
    {
        const ExpectDialog archive([this](wxDialog&) {
            window->CallAfter([this] { command("Listed"); });
            return wxID_NONE;
        });
        const ExpectDialog viewer([this](wxDialog&) {
            window->CallAfter([this] {
                window->Close(true);
                const auto files = folder.names();
                EXPECT_EQ(std::ranges::count(files, "mor.his.bak"), 1) << "saved at once";
            });
            return wxID_NONE;
        });
        choose("MOR");
    }
    ASSERT_NE(wxTopLevelWindows.Find(window), nullptr) << "the command was still at work in it";
    EXPECT_FALSE(window->IsShown());
    settle();
    EXPECT_EQ(wxTopLevelWindows.Find(window), nullptr);
}

}  // namespace
}  // namespace kestrel::test
