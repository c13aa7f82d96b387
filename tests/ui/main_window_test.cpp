#include <wx/dnd.h>
#include <wx/menu.h>
#include <wx/treectrl.h>

#include <chrono>

#include "services/histories.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmMain/frmMain.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

constexpr const char* kTwoTemplates =
    "[t:template,n:crate]\r\n{\r\ndoc = \"Crate\";\r\nbeta = 2;\r\n"
    "[look]\r\n{\r\nscreen_name = \"A crate\";\r\nalpha = 1;\r\n[paint]\r\n{\r\nred = "
    "3;\r\n}\r\n}\r\n}\r\n"
    "[t:template,n:barrel]\r\n{\r\ndoc = \"Barrel\";\r\n}\r\n";

class MainWindow : public UiTest {
  protected:
    MainWindow() : window(new frmMain) { show(*window); }

    // Opens two templates from a new file.
    void openTwo() {
        file = folder.put(L"two.gas", kTwoTemplates);
        ASSERT_TRUE(window->openFile(file));
        settle();
    }

    std::wstring panel(int index) const { return fromWx(window->stbMain->GetStatusText(index)); }

    std::vector<std::wstring> names(const ReportList& list) const {
        std::vector<std::wstring> column;
        for (const auto& row : list.shot(L"").rows) column.push_back(row[0]);
        return column;
    }

    wxTreeItemId child(const wxTreeItemId& item) const {
        wxTreeItemIdValue cookie;
        return window->tvwInfo->GetFirstChild(item, cookie);
    }

    frmMain* window;
    std::wstring file;
};

using Names = std::vector<std::wstring>;

TEST_F(MainWindow, ShowsTheFirstTemplateThenTheSelectedOne) {
    openTwo();
    EXPECT_EQ(names(*window->lvwTemplates), (Names{L"Crate", L"Barrel"}));
    EXPECT_EQ(names(*window->lvwProperties), (Names{L"name", L"doc", L"beta", L"look",
                                                    L"screen_name", L"alpha", L"paint", L"red"}));
    EXPECT_EQ(window->lvwTemplates->selected(), 0U);
    EXPECT_EQ(window->lvwProperties->selected(), 0U);
    EXPECT_EQ(panel(frmMain::pnlInfo), L"Template K0 is Crate");
    EXPECT_EQ(panel(frmMain::pnlType), L"Template");
    EXPECT_EQ(panel(frmMain::pnlTemplates), L"2 Templates");
    EXPECT_EQ(panel(frmMain::pnlProps), L"8 Properties");
    const auto row = window->lvwProperties->shot(L"").rows.at(7);
    EXPECT_EQ(row, (Names{L"red", L"3", L"Crate\\look\\paint_2\\"}));
    wxTreeCtrl& tree = *window->tvwInfo;
    const wxTreeItemId root = tree.GetRootItem();
    EXPECT_EQ(tree.GetItemText(root), "Crate");
    const wxTreeItemId look = child(root);
    EXPECT_EQ(tree.GetItemText(look), "look_1");
    EXPECT_EQ(tree.GetItemText(child(look)), "paint_2");
    EXPECT_TRUE(tree.IsSelected(root));

    wxListEvent event(wxEVT_LIST_ITEM_SELECTED, window->lvwTemplates->GetId());
    event.m_itemIndex = 1;
    event.SetEventObject(window->lvwTemplates);
    window->lvwTemplates->ProcessWindowEvent(event);
    EXPECT_EQ(panel(frmMain::pnlInfo), L"Template K1 is Barrel");
    EXPECT_EQ(names(*window->lvwProperties), (Names{L"name", L"doc"}));
    EXPECT_EQ(tree.GetItemText(tree.GetRootItem()), "Barrel");
}

TEST_F(MainWindow, TreeFiltersOnlyWhileTheBoxIsSet) {
    openTwo();
    const wxTreeItemId look = child(window->tvwInfo->GetRootItem());
    window->tvwInfo->SelectItem(look);
    EXPECT_EQ(panel(frmMain::pnlInfo), L"Crate\\look_1");
    EXPECT_EQ(panel(frmMain::pnlProps), L"8 Properties");

    tick(*window->chkTree);
    EXPECT_EQ(names(*window->lvwProperties), (Names{L"name", L"doc", L"beta"})) << "the root's own";
    window->tvwInfo->SelectItem(child(window->tvwInfo->GetRootItem()));
    EXPECT_EQ(names(*window->lvwProperties), (Names{L"look", L"screen_name", L"alpha"}));
    EXPECT_EQ(panel(frmMain::pnlInfo), L"Crate\\look_1\\ (Screen Name='A crate')");
    EXPECT_EQ(panel(frmMain::pnlProps), L"3 Properties");

    tick(*window->chkTree);
    EXPECT_EQ(panel(frmMain::pnlProps), L"8 Properties");
}

TEST_F(MainWindow, EmptyAndUnreadableFilesLeaveTheWindowUsable) {
    openTwo();
    for (const char* bytes : {"", "no bracket at all", "\0\1\2\xff"}) {
        SCOPED_TRACE(bytes);
        host.log.clear();
        EXPECT_FALSE(window->openFile(folder.put(L"bad.gas", bytes)));
        EXPECT_EQ(host.log, (std::vector<std::string>{
                                "ask: File loading error: Either no data found or unsupported file "
                                "type. | Kestrel Template Browser | exclamation | ok"}));
        EXPECT_TRUE(window->lvwTemplates->rows().empty());
        EXPECT_TRUE(window->lvwProperties->rows().empty());
        EXPECT_FALSE(window->tvwInfo->GetRootItem().IsOk());
        EXPECT_EQ(window->document().path, file) << "the file opened before stays recorded";
    }
    EXPECT_TRUE(window->openFile(file));
    EXPECT_EQ(names(*window->lvwTemplates), (Names{L"Crate", L"Barrel"}));
}

TEST_F(MainWindow, OpensAChosenFileAndRecordsEachOnce) {
    openTwo();
    host.log.clear();
    EXPECT_FALSE(window->openFile({})) << "cancelled";
    EXPECT_EQ(host.log.at(0).substr(0, 46), "open: Select a Gas File | Gas File (*.gas)|*.g");
    EXPECT_EQ(names(*window->lvwTemplates), (Names{L"Crate", L"Barrel"}));

    host.files = {folder.put(L"one.gas", "[t:template,n:x]\r\n{\r\n}\r\n")};
    EXPECT_TRUE(window->openFile({}));
    EXPECT_EQ(names(*window->lvwTemplates), (Names{L"Template0"}));
    window->openFile(file);
    ASSERT_EQ(window->cboHistory->count(), 2U) << "each once, the last one opened shown";
    EXPECT_EQ(window->cboHistory->at(0), folder.path(L"one.gas"));
    EXPECT_EQ(window->cboHistory->at(1), file);
    EXPECT_EQ(window->cboHistory->text(), file);
}

TEST_F(MainWindow, ReloadNeedsAPath) {
    wxButton& reload = *window->cmdCommands.at(frmMain::kReload);
    file = folder.put(L"two.gas", kTwoTemplates);
    for (const std::wstring& text : {std::wstring(), std::wstring(L"  "), L"  " + file + L" "}) {
        window->cboHistory->SetValue(toWx(text));
        settle();
        EXPECT_EQ(reload.IsEnabled(), text.size() > 2) << '"' << shown(text) << '"';
    }
    click(reload);
    EXPECT_EQ(window->document().path, file);
}

TEST_F(MainWindow, EnterOpensTheTypedPathAndAChoiceTheChosenOne) {
    file = folder.put(L"two.gas", kTwoTemplates);
    window->cboHistory->SetValue(toWx(file));
    window->cboHistory->onEnter();
    EXPECT_EQ(window->document().path, file);

    const std::wstring other = folder.put(L"other.gas", kTwoTemplates);
    gAddHistoryItem(*window->cboHistory, other);
    const auto choose = [&](int item) {
        window->cboHistory->SetSelection(item);
        wxCommandEvent event(wxEVT_COMBOBOX, window->cboHistory->GetId());
        event.SetEventObject(window->cboHistory);
        event.SetInt(item);
        window->cboHistory->ProcessWindowEvent(event);
        settle();
    };
    choose(0);
    EXPECT_EQ(window->document().path, file) << "an arrow key in the closed box loads nothing";
    wxCommandEvent dropped(wxEVT_COMBOBOX_DROPDOWN, window->cboHistory->GetId());
    window->cboHistory->ProcessWindowEvent(dropped);
    choose(0);
    EXPECT_EQ(window->document().path, other);
}

TEST_F(MainWindow, StartsWithTheHistoryAndSavesItAndTheSettingsWhenClosed) {
    folder.put(L"info.his", "first.gas\r\nsecond.gas\r\n");
    window->start(folder.put(L"two.gas", kTwoTemplates));
    EXPECT_EQ(window->cboHistory->count(), 3U);
    EXPECT_EQ(window->cboHistory->at(2), L"second.gas");
    EXPECT_EQ(names(*window->lvwTemplates), (Names{L"Crate", L"Barrel"}));
    EXPECT_EQ(window->GetTitle(), "Kestrel Template Browser (Kestrel v1.0.0)");
    gProgram().settings.skritpad = L"C:\\tools\\pad.exe";
    window->Close();
    settle();
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"info.his", "info.his.bak", "settings.set", "two.gas"}));
    EXPECT_NE(folder.bytes(L"info.his").find("two.gas\r\n"), std::string::npos);
    EXPECT_NE(folder.bytes(L"settings.set").find("C:\\tools\\pad.exe"), std::string::npos);
}

TEST_F(MainWindow, ClosesThoughNothingCanBeWritten) {
    openTwo();
    // A folder in a file: nobody may write there, not even the system's master.
    gProgram().folder = file;
    host.log.clear();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(window->Close());
    waitUntil("the window is gone", [] { return wxTopLevelWindows.empty(); });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    ASSERT_EQ(host.log.size(), 2U) << "one report a file";
    EXPECT_NE(host.log[0].find("info.his"), std::string::npos) << host.log[0];
    EXPECT_NE(host.log[1].find("settings.set"), std::string::npos) << host.log[1];
}

TEST_F(MainWindow, RefusesCommandsAndClosingWhileWorkGoesOn) {
    openTwo();
    gProgram().progressShowing = true;
    EXPECT_FALSE(window->openFile(folder.put(L"b.gas", kTwoTemplates)));
    EXPECT_FALSE(window->Close());
    gProgram().progressShowing = false;
    EXPECT_EQ(window->document().path, file);
    EXPECT_TRUE(window->Close());
}

// The control's place in its window.
wxRect placeOf(const wxWindow* control) {
    wxRect place = control->GetRect();
    for (control = control->GetParent(); !control->IsTopLevel(); control = control->GetParent()) {
        place.Offset(control->GetPosition());
    }
    return place;
}

TEST_F(MainWindow, LaysOutInRowsAndPanesFromItsLeastSizeOn) {
    const wxSize least(fromTwips(*window, 9000), fromTwips(*window, 6250));
    EXPECT_EQ(window->GetSize(), least);
    resize(*window, least / 2);
    EXPECT_EQ(window->GetSize(), least);
    EXPECT_FALSE(window->cmdCommands.at(frmMain::kTest)->IsShown());
    waitUntil("Reload stands 40 twips right of the history", [&] {
        return placeOf(window->cmdCommands.at(frmMain::kReload)).x ==
               placeOf(window->cboHistory).GetRight() + 1 + fromTwips(*window, 40);
    });
    waitUntil("the panes stand side by side below it", [&] {
        return placeOf(window->cboHistory).GetBottom() < placeOf(window->fraInfo).y &&
               placeOf(window->fraTemplate).GetRight() < placeOf(window->fraInfo).x &&
               placeOf(window->tvwInfo).GetRight() < placeOf(window->lvwProperties).x;
    });
    resize(*window, window->GetSize() + wxSize(600, 300));
    for (const int index :
         {frmMain::kSource, frmMain::kParsed, frmMain::kListed, frmMain::kChain}) {
        waitUntil("the button is in one row with the box, below the list", [&] {
            const wxRect box = placeOf(window->chkTree);
            const wxRect button = placeOf(window->cmdCommands.at(index));
            return button.Contains(button.x, box.y + box.height / 2) &&
                   button.y > placeOf(window->lvwProperties).GetBottom() &&
                   button.GetRight() <= placeOf(window->fraInfo).GetRight();
        });
    }
}

TEST_F(MainWindow, OpensADroppedGasFile) {
    file = folder.put(L"two.GAS", kTwoTemplates);
    auto* target = dynamic_cast<wxFileDropTarget*>(window->GetDropTarget());
    ASSERT_NE(target, nullptr);
    wxArrayString files;
    files.Add(toWx(folder.put(L"readme.txt", "text")));
    EXPECT_FALSE(target->OnDropFiles(0, 0, files));
    files.Add(toWx(file));
    EXPECT_TRUE(target->OnDropFiles(0, 0, files));
    settle();
    EXPECT_EQ(window->document().path, file);
}

TEST_F(MainWindow, HidesOnlyWhereANotificationAreaBringsItBack) {
    const bool hides = wxTaskBarIcon::IsAvailable();
    window->Iconize();
    waitUntil("the window is minimised", [&] { return window->IsIconized(); });
    EXPECT_EQ(window->IsShown(), !hides) << "a window must never vanish";
    wxCommandEvent restore(wxEVT_MENU, window->mnuFile->FindItem("Restore"));
    window->mnuFile->ProcessEvent(restore);
    waitUntil("the window is back", [&] { return !window->IsIconized() && window->IsShown(); });
}

TEST_F(MainWindow, TabGoesThroughAllControls) {
    std::vector<wxWindow*> chain{window->cboHistory, window->lvwTemplates, window->tvwInfo,
                                 window->lvwProperties, window->chkTree};
    for (const wxWindow* control : chain) {
        EXPECT_TRUE(control->CanAcceptFocusFromKeyboard()) << control->GetName();
    }
    std::map<wxChar, int> mnemonics;
    for (const auto& [index, button] : window->cmdCommands) {
        const wxString label = button->GetLabel();
        const int at = label.Find('&');
        if (at != wxNOT_FOUND) ++mnemonics[wxTolower(label[static_cast<std::size_t>(at) + 1])];
    }
    for (const auto& [letter, count] : mnemonics) EXPECT_EQ(count, 1) << char(letter);
}

}  // namespace
}  // namespace kestrel::test
