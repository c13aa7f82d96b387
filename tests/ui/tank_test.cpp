#include "ui/frmTank/frmTank.h"

#include <wx/frame.h>
#include <wx/hyperlink.h>

#include <utility>

#include "services/bytes.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "services/histories.h"
#include "support/shown.h"
#include "tank/library.h"
#include "ui/common/strings.h"
#include "ui/frmView/frmView.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

using Lines = std::vector<std::string>;
using Command = frmTank::Command;

constexpr Command kTools[] = {frmTank::kFind, frmTank::kTest, frmTank::kList, frmTank::kProperties};

// The dialog, modeless, over the library as a file.
class Tank : public UiTest {
  protected:
    Tank() {
        gProgram().version.fileDescription = L"Kestrel";
        gProgram().host.tank = library.get();
    }

    void open(std::wstring_view website = L"") {
        auto* parent = new wxFrame(nullptr, wxID_ANY, "owner");
        show(*parent);
        dialog = new frmTank(parent, {}, website);
        show(*dialog);
    }

    // What typing into the box does.
    void type(const std::wstring& text) const {
        dialog->cboTankFilename->SetValue(toWx(text));
        settle();
    }

    void press(Command command) const { click(*dialog->cmdCommands[command]); }
    void expectTools(bool enabled) const {
        for (const Command command : kTools) {
            EXPECT_EQ(dialog->cmdCommands[command]->IsEnabled(), enabled) << command;
        }
    }

    // The caption and the text of the viewer that the command shows.
    std::pair<std::string, std::string> report(Command command) const {
        std::pair<std::string, std::string> seen;
        const ExpectDialog viewer([&](wxDialog& window) {
            EXPECT_EQ(window.GetParent(), dialog);
            EXPECT_TRUE(dialog->IsEnabled());
            const auto& view = dynamic_cast<const frmView&>(window);
            seen = {shown(fromWx(view.GetTitle())), shown(view.TextBlock())};
            return wxID_CANCEL;
        });
        press(command);
        return seen;
    }

    bool isOpen() const {
        settle();
        return wxTopLevelWindows.Find(dialog) != nullptr;
    }

    TempFolder files;
    const std::wstring archive =
        files.put(L"islands.dsres",
                  "tank\n"
                  "dir|name=art|path=\n"
                  ".file|name=a.gas|path=\\art|size=3|comp=2|crc=-5|format=1|data=x\\0y\n");
    std::unique_ptr<TankLibrary> library =
        makeTankLibrary({std::wstring(folderOf(filesystem::absolutePath(fromUtf8(KESTREL_TANK))))});
    frmTank* dialog = nullptr;
};

constexpr const char* kTime = "Time: 10:20:30\\r\\nDate: Friday, 1 March 2002\\r\\n\\r\\n";

TEST_F(Tank, ReadsAsTheProductsTexts) {
    open();
    EXPECT_EQ(dialog->GetTitle(), "Mini-Orvane");
    EXPECT_EQ(dialog->fraName->GetLabel(), "&Selected Tank Filename");
    EXPECT_EQ(dialog->fraTools->GetLabel(), "Tools");
    EXPECT_EQ(dialog->cmdCommands[0]->GetLabel(), "&Done");
    EXPECT_EQ(dialog->cmdCommands[4]->GetLabel(), "&Test Tank");
    EXPECT_EQ(dialog->cmdCommands[3], nullptr);
    const std::pair<std::size_t, const char*> kTips[] = {{0, "Also use ESC"},
                                                         {1, "Open Recent"},
                                                         {2, "Find Object by Name"},
                                                         {4, "Test Tank"},
                                                         {5, "Generate a list (Name or Full)"},
                                                         {6, "Tank Properties"}};
    for (const auto& [index, tip] : kTips) {
        EXPECT_EQ(dialog->cmdCommands[index]->GetToolTipText(), tip);
    }
}

TEST_F(Tank, LinkOpensThePageOfTheBrowser) {
    open(L"https://orvane.example/");
    EXPECT_EQ(dialog->lblInfo->GetLabel(), "Click for more info on Orvane...");
    wxHyperlinkEvent follow(dialog->lblInfo, dialog->lblInfo->GetId(), "");
    dialog->lblInfo->ProcessWindowEvent(follow);
    EXPECT_EQ(host.log, Lines{"perform: open | https://orvane.example/"});
}

TEST_F(Tank, ToolsNeedAPathThatIsNotBlank) {
    folder.put(L"mor.his", "old.dsres\r\n");
    open();
    expectTools(false);
    type(L"a");
    expectTools(true);
    type(L"   ");
    expectTools(false);
    dialog->cboTankFilename->onEnter();
    EXPECT_EQ(host.log, Lines{});
    dialog->cboTankFilename->SetSelection(0);
    wxCommandEvent chosen(wxEVT_COMBOBOX, dialog->cboTankFilename->GetId());
    chosen.SetInt(0);
    dialog->cboTankFilename->ProcessWindowEvent(chosen);
    expectTools(true);
}

TEST_F(Tank, ListsTheNamesOrEverything) {
    open();
    type(L"  " + archive + L" ");
    const std::string head = "Filename: " + shown(archive) + "\\r\\n" + kTime;
    host.answers = {Answer::yes, Answer::no};
    const auto [caption, names] = report(frmTank::kList);
    EXPECT_EQ(caption, "Tank List: " + shown(archive));
    EXPECT_EQ(names, head +
                         "Name: \\tart\\r\\nPath: \\t\\Root\\r\\nIsDirectory: \\tYes\\r\\n\\r\\n"
                         "Name: \\ta.gas\\r\\nPath: \\t\\Root\\art\\r\\nIsDirectory: \\tNo\\r\\n"
                         "\\r\\n");
    const std::string full = report(frmTank::kList).second;
    EXPECT_NE(full.find("\\r\\nCRC: \\t-5\\r\\n"), full.npos) << full;
    EXPECT_EQ(host.logged("ask"),
              Lines(2,
                    "ask: Which list do you want?\\r\\nSelect Yes for a 'Name List', No for a "
                    "'Full List', or Cancel to exit. | Kestrel | question | yesNoCancel"));
}

TEST_F(Tank, CancelledListQuestionRunsNothing) {
    open();
    type(archive);
    for (const bool byKey : {false, true}) {
        host.log.clear();
        host.answers = {Answer::cancel};
        byKey ? dialog->cboTankFilename->onEnter() : press(frmTank::kList);
        EXPECT_EQ(host.log.size(), 1U) << host.log.back();
        EXPECT_EQ(host.logged("ask: Which list").size(), 1U);
    }
}

TEST_F(Tank, FindRemembersWhatItFound) {
    open();
    type(L" " + archive);
    host.prompts = {L"A.GAS", L"nowhere", std::nullopt, L""};
    const auto [caption, text] = report(frmTank::kFind);
    EXPECT_EQ(caption, "Tank List:  " + shown(archive));
    EXPECT_EQ(text, std::string("Searched For: A.GAS\\r\\n") + kTime +
                        "Name: \\ta.gas\\r\\nPath: \\t\\Root\\art\\r\\nSize: \\t3 (bytes)\\r\\n"
                        "CompSize: \\t2 (bytes)\\r\\nCRC: \\t-5\\r\\nFlags: \\t0\\r\\n"
                        "Format: \\tZLib\\r\\nIsDirectory: \\tNo\\r\\n\\r\\n"
                        "Data follows(3 bytes): \\r\\n+++++++++++++++++++++++++\\r\\nx\\x00 \\r\\n"
                        "+++++++++++++++++++++++++");
    for (int i = 0; i < 3; ++i) press(frmTank::kFind);
    const std::string question =
        "prompt: Please enter the name of the Child (i.e. object or template name) to search "
        "for:\\r\\n\\r\\nNote: This sub-string search is not case sensitive and does not support "
        "regular expressions or wildcards. Only the first find will be returned. | Find Child | ";
    EXPECT_EQ(host.logged("prompt"),
              (Lines{question, question + "A.GAS", question + "A.GAS", question + "A.GAS"}));
    EXPECT_EQ(host.logged("ask"),
              Lines{"ask: Search name not found! | Kestrel | exclamation | ok"});
}

TEST_F(Tank, TestsTheArchive) {
    open();
    type(archive);
    press(frmTank::kTest);
    type(files.put(L"empty.dsres", "tank\n"));
    press(frmTank::kTest);
    EXPECT_EQ(host.log, (Lines{"ask: Tank test passed. | Kestrel | information | ok",
                               "ask: Tank test failed! | Kestrel | exclamation | ok"}));
}

TEST_F(Tank, AnArchiveThatDoesNotOpenIsToldByEachTool) {
    open();
    type(files.path(L"missing.dsres"));
    press(frmTank::kTest);
    press(frmTank::kList);
    host.prompts = {L"a"};
    press(frmTank::kFind);
    const Lines asked = host.logged("ask");
    ASSERT_EQ(asked.size(), 4U);
    EXPECT_EQ(asked[0], "ask: Tank test failed! | Kestrel | exclamation | ok");
    EXPECT_EQ(asked[2], "ask: Tank list failed! | Kestrel | exclamation | ok");
    EXPECT_EQ(asked[3], "ask: Search name not found! | Kestrel | exclamation | ok");
    EXPECT_EQ(host.liveDialogs, 0U);
    EXPECT_TRUE(dialog->IsEnabled());
}

TEST_F(Tank, AMissingLibraryIsReportedAndTheWindowLivesOn) {
    library = makeTankLibrary({files.path()});
    gProgram().host.tank = library.get();
    open();
    type(archive);
    press(frmTank::kTest);
    ASSERT_EQ(host.log.size(), 2U);
    EXPECT_NE(host.log[0].find(shown(files.path())), std::string::npos) << host.log[0];
    EXPECT_EQ(host.log[1], "ask: Tank test failed! | Kestrel | exclamation | ok");
    expectTools(true);
}

TEST_F(Tank, ShowsTheFilesProperties) {
    open();
    type(L" " + archive);
    press(frmTank::kProperties);
    EXPECT_EQ(host.log, Lines{"properties: " + shown(archive) + " | owner"});
}

TEST_F(Tank, ThePickedFileGoesIntoTheHistory) {
    folder.put(L"mor.his", "old.dsres\r\n");
    open();
    EXPECT_EQ(dialog->cboTankFilename->text(), L"");
    host.files = {std::nullopt, archive, std::nullopt};
    press(frmTank::kPick);
    expectTools(false);
    press(frmTank::kPick);
    press(frmTank::kPick);
    EXPECT_EQ(dialog->cboTankFilename->text(), archive);
    expectTools(true);
    EXPECT_EQ(host.log.front(),
              "open: Select a TANK File to view | Tank Files(*.ds*)| *.ds*|All files (*.*)|*.* | " +
                  shown(folder.path()));
    press(frmTank::kDone);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(folder.bytes(L"mor.his"), toUtf8(archive) + "\r\nold.dsres\r\n");
}

TEST_F(Tank, ADroppedFileIsTheArchive) {
    open();
    EXPECT_FALSE(dialog->drop(files.path()));
    EXPECT_FALSE(dialog->drop(files.path(L"missing.dsres")));
    EXPECT_TRUE(dialog->drop(archive));
    EXPECT_EQ(dialog->cboTankFilename->text(), archive);
    expectTools(true);
}

TEST_F(Tank, KeysReachThePathAndCloseTheDialog) {
    open();
    type(archive);
    dialog->cmdCommands[frmTank::kTest]->SetFocus();
    settle();
    key(*dialog->cmdCommands[frmTank::kTest], 'S', wxMOD_ALT);
    EXPECT_TRUE(dialog->cboTankFilename->HasFocus());
    for (const int other : {'X', '&'}) key(*dialog->cmdCommands[frmTank::kTest], other, wxMOD_ALT);
    EXPECT_TRUE(dialog->cmdCommands[frmTank::kTest]->HasFocus());
    key(*dialog->cboTankFilename, 'T', wxMOD_ALT);
    EXPECT_EQ(host.log, Lines{"ask: Tank test passed. | Kestrel | information | ok"});
    gProgram().progressShowing = true;
    key(*dialog->cboTankFilename, WXK_ESCAPE);
    EXPECT_TRUE(isOpen()) << "not while a report is made";
    gProgram().progressShowing = false;
    key(*dialog->cmdCommands[frmTank::kList], WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
}

TEST_F(Tank, MinimisingItMinimisesTheMainWindow) {
    open();
    auto* main = dynamic_cast<wxFrame*>(dialog->GetParent());
    wxIconizeEvent event(dialog->GetId(), true);
    dialog->ProcessWindowEvent(event);
    waitUntil("the main window is minimised", [&] { return main->IsIconized(); });
}

TEST_F(Tank, OnlyItsWidthGrows) {
    open();
    const wxSize before = dialog->GetClientSize();
    const int box = dialog->cboTankFilename->GetSize().x;
    dialog->SetClientSize(before.x + 200, before.y);
    waitUntil("the box has grown",
              [&] { return dialog->cboTankFilename->GetSize().x == box + 200; });
    EXPECT_EQ(dialog->GetMaxClientSize().y, before.y);
}

}  // namespace
}  // namespace kestrel::test
