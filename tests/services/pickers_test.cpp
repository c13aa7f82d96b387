#include "services/pickers.h"

#include <gtest/gtest.h>

#include "services/shell.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Lines = std::vector<std::string>;

class Pickers : public testing::Test {
  protected:
    Pickers() { gProgram().folder = L"/own"; }

    void select(bool save = false) {
        gSelectFile(file, L"Title", L"Gas files (*.gas)|*.gas", save, fileTitle, dialog, folder);
    }

    test::RecordingHost host;
    std::wstring file;
    std::wstring fileTitle = L"before";
    std::wstring folder;
    FileDialog* dialog = nullptr;
};

TEST_F(Pickers, TheSharedDialogStartsInTheProgramsFolder) {
    host.files = {L"/some/a.gas"};
    select();
    EXPECT_EQ(file, L"/some/a.gas");
    EXPECT_EQ(fileTitle, L"a.gas");
    EXPECT_EQ(dialog, &host);
    EXPECT_EQ(fileFilter(L""), L"All files (*.*)|*.*");
    EXPECT_EQ(folder, L"/own");
    const Lines once{"open: Title | Gas files (*.gas)|*.gas|All files (*.*)|*.* | /own"};
    EXPECT_EQ(host.log, once);
    fileTitle = L"before";
    select();
    EXPECT_EQ(host.log, once) << "a file that is named already is kept";
    EXPECT_EQ(fileTitle, L"before");
}

TEST_F(Pickers, ACancelledDialogHandsBackItsLastChoice) {
    select(true);
    EXPECT_EQ(file, L"");
    EXPECT_EQ(fileTitle, L"");
    host.files = {L"/some/a.gas", std::nullopt};
    select(true);
    file.clear();
    fileTitle.clear();
    select(true);
    EXPECT_EQ(file, L"/some/a.gas");
    EXPECT_EQ(fileTitle, L"a.gas");
    EXPECT_EQ(host.logged("save").size(), 3U);
}

TEST_F(Pickers, ADialogThatFailsIsReportedAndItsChoiceStillRead) {
    class Broken final : public FileDialog {
      public:
        bool show(const FileQuestion&) override { throw std::runtime_error("no display"); }
        std::wstring path() const override { return L"/last/b.gas"; }
        std::unique_ptr<FileDialog> another() const override { return nullptr; }
    } broken;
    dialog = &broken;
    folder = L"/elsewhere";
    select();
    EXPECT_EQ(file, L"/last/b.gas");
    EXPECT_EQ(folder, L"/elsewhere");
    EXPECT_EQ(host.log, Lines{"ask: Error (51): no display in 'gSelectFile' | Kestrel | "
                              "exclamation | ok"});
}

TEST_F(Pickers, ADialogOfItsOwnAnswersACancelWithNothing) {
    host.files = {L"/shared/a.gas", std::nullopt, L"/own/b.gas"};
    select();
    EXPECT_EQ(askForFile(L"Where?", L"Text|*.txt", true), L"") << "not what another dialog chose";
    EXPECT_EQ(askForFile(L"Where?", L"Text|*.txt", true, L"/start"), L"/own/b.gas");
    EXPECT_EQ(host.log.back(), "save: Where? | Text|*.txt|All files (*.*)|*.* | /start");
    EXPECT_EQ(host.path(), L"/shared/a.gas");
}

TEST_F(Pickers, Folder) {
    host.folders = {L"/some/folder", std::wstring(L"/cut\0here", 9), std::nullopt};
    EXPECT_EQ(gBrowseFolder(L"Where?", &host, L"/start"), L"/some/folder");
    EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L""), L"/cut");
    EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L""), std::nullopt);
    EXPECT_EQ(host.log, (Lines{"folder: Where? | owner | /start", "folder: Where? | none | ",
                               "folder: Where? | none | "}));
    gProgram().host = {};
    EXPECT_EQ(gBrowseFolder(L"Where?", nullptr, L""), std::nullopt);
    select();
    EXPECT_EQ(file, L"");
}

TEST_F(Pickers, ShellRequests) {
    gShellExec(L"mailto:someone", L"open");
    EXPECT_EQ(gProgram().routine, L"gShellExec");
    gShowProps(L"/some/a.gas", &host);
    EXPECT_EQ(gProgram().routine, L"gShowProps");
    EXPECT_EQ(host.log,
              (Lines{"perform: open | mailto:someone", "properties: /some/a.gas | owner"}));
    gProgram().host = {};
    gShellExec(L"file", L"open");
    gShowProps(L"file", nullptr);
}

}  // namespace
}  // namespace kestrel
