#include "ui/frmExport/frmExport.h"

#include <wx/frame.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "ui/common/strings.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr const char* kFile = "[t:template,n:tar]\r\n{\r\na = 1;\r\nb = 2;\r\n}\r\n";
constexpr const char* kTold = " | Kestrel Template Browser | information | ok";

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

// The dialog, modeless, so that the test can use its controls.
class Export : public UiTest {
  protected:
    void open() {
        auto* parent = new wxFrame(nullptr, wxID_ANY, "owner");
        show(*parent);
        dialog = new frmExport(parent);
        show(*dialog);
    }

    // What typing into the box does.
    static void type(HistoryCombo& box, const std::wstring& text) {
        box.SetValue(toWx(text));
        settle();
    }

    void press(frmExport::Command index) { click(*dialog->cmdCommands[index]); }
    bool canConvert() const { return dialog->cmdCommands[frmExport::kConvert]->IsEnabled(); }
    std::string here() const {
        return toUtf8(source.path()) + static_cast<char>(filesystem::separator());
    }

    TempFolder source;
    frmExport* dialog = nullptr;
};

TEST_F(Export, ReadsAsTheProductsTexts) {
    open();
    EXPECT_EQ(dialog->GetTitle(), "Convert Multiple .gas to TAB Delimited");
    const char* const kLabels[] = {
        "&Source Folder", "&Destination Filename", "Title:", "Author:", "Build:", "Copyright:"};
    for (std::size_t i = 0; i < std::size(kLabels); ++i) {
        EXPECT_EQ(dialog->lblGeneric[i]->GetLabel(), kLabels[i]);
    }
    EXPECT_EQ(dialog->fraOptional->GetLabelText(), "Optional");
    EXPECT_EQ(dialog->chkSingleFile->GetLabel(), "Single output file?");
    EXPECT_EQ(dialog->cmdCommands[0]->GetLabel(), "&Done");
    EXPECT_EQ(dialog->cmdCommands[1]->GetLabel(), "&Convert");
    EXPECT_EQ(dialog->cmdCommands[2]->GetToolTipText(), "Open Recent");
    EXPECT_EQ(dialog->cmdCommands[3]->GetToolTipText(), "Open Recent");
}

TEST_F(Export, OnlyTheSourceDecidesWhetherItConverts) {
    open();
    EXPECT_FALSE(canConvert());
    type(*dialog->cboTarget, L"out.tab");
    EXPECT_FALSE(canConvert());
    type(*dialog->cboSourceFolder, L" ");
    EXPECT_TRUE(canConvert()) << "a blank is a text";
    type(*dialog->cboSourceFolder, L"");
    EXPECT_FALSE(canConvert());
    dialog->cboSourceFolder->onEnter();
    EXPECT_EQ(host.log, Lines{});
}

TEST_F(Export, SingleFileModeEnablesItsFields) {
    open();
    const std::vector<const wxWindow*> fields{dialog->lblGeneric[frmExport::lblTarget],
                                              dialog->cboTarget,
                                              dialog->cmdCommands[frmExport::kPickTarget],
                                              dialog->lblGeneric[frmExport::lblTitle],
                                              dialog->txtTitle,
                                              dialog->lblGeneric[frmExport::lblAuthor],
                                              dialog->txtAuthor,
                                              dialog->lblGeneric[frmExport::lblBuild],
                                              dialog->txtBuild,
                                              dialog->lblGeneric[frmExport::lblCopyright],
                                              dialog->txtCopyright};
    for (const bool single : {false, true, false}) {
        if (dialog->chkSingleFile->GetValue() != single) tick(*dialog->chkSingleFile);
        for (const wxWindow* field : fields) EXPECT_EQ(field->IsEnabled(), single);
        EXPECT_TRUE(dialog->cboSourceFolder->IsEnabled());
        EXPECT_TRUE(dialog->cmdCommands[frmExport::kPickSource]->IsEnabled());
    }
}

TEST_F(Export, SamplesGiveTheirGoldenTexts) {
    for (const auto& entry : fs::directory_iterator(KESTREL_SAMPLES "/folder")) {
        fs::copy_file(entry.path(), source.native() / entry.path().filename());
    }
    open();
    type(*dialog->cboTarget, source.path(L"ignored.tab"));
    type(*dialog->cboSourceFolder, source.path());
    press(frmExport::kConvert);
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(KESTREL_SAMPLES "/../tests/golden/folder")) {
        const std::string mods = "C:\\mods\\";
        std::string golden = bytesOf(entry.path());
        golden.replace(golden.find(mods), mods.size(), here());
        EXPECT_EQ(bytesOf(source.native() / entry.path().filename()), golden);
        ++count;
    }
    EXPECT_EQ(source.names().size(), 6 + count) << "nothing else was written";
    EXPECT_EQ(host.logged("ask"),
              Lines{"ask: File conversion complete.\\r\\n\\r\\nFiles processed: 6\\r\\nFiles "
                    "converted: 5\\r\\nOutput folder: " +
                    here() + "\\r\\n" + kTold});
    EXPECT_TRUE(dialog->IsEnabled());
}

TEST_F(Export, SingleFileHasTheHeaderAsTyped) {
    source.put(L"a.gas", kFile);
    open();
    tick(*dialog->chkSingleFile);
    dialog->txtTitle->SetValue(" T ");
    dialog->txtCopyright->SetValue("me");
    type(*dialog->cboSourceFolder, source.path());
    press(frmExport::kConvert);
    const std::string text = source.bytes(L"Converted.tab");
    const std::string head =
        "Title:  T \r\nAuthor: \r\nBuild: \r\nCopyright: me\r\nFiles processed: 1\r\n";
    EXPECT_EQ(text.substr(0, head.size()), head);
    EXPECT_EQ(source.bytes(L"a.tab"), "(missing)");
}

TEST_F(Export, MissingAndEmptyFoldersAreTold) {
    open();
    const std::wstring file = source.put(L"readme.txt", kFile);
    for (const std::wstring& text : {source.path(L"missing"), file, std::wstring(L" ")}) {
        host.log.clear();
        type(*dialog->cboSourceFolder, text);
        press(frmExport::kConvert);
        EXPECT_EQ(host.log,
                  Lines{"ask: Source Folder not found. Please enter a valid Source Folder name and "
                        "try again. | Kestrel Template Browser | exclamation | ok"});
    }
    host.log.clear();
    type(*dialog->cboSourceFolder, source.path());
    press(frmExport::kConvert);
    EXPECT_EQ(
        host.log,
        Lines{std::string("ask: File conversion failed! Please verify source folder contents, "
                          "all other settings and then try again.\\r\\nSee \"\"About\"\" for "
                          "reporting issues") +
              kTold});
}

TEST_F(Export, AnExistingTargetIsReplacedOnlyOnYes) {
    source.put(L"a.gas", kFile);
    const std::wstring target = source.put(L"all.txt", "old");
    open();
    type(*dialog->cboSourceFolder, source.path());
    type(*dialog->cboTarget, target);
    press(frmExport::kConvert);
    EXPECT_EQ(host.logged("ask: Target"), Lines{}) << "no question for a target that is not used";
    tick(*dialog->chkSingleFile);
    for (const Answer answer : {Answer::no, Answer::cancel}) {
        host.log.clear();
        host.answers = {answer};
        press(frmExport::kConvert);
        EXPECT_EQ(host.log,
                  Lines{"ask: Target file already exists, do you wish to overwrite the existing "
                        "file? | Kestrel Template Browser | question | yesNo"});
        EXPECT_EQ(source.bytes(L"all.txt"), "old");
    }
    host.answers = {Answer::yes};
    press(frmExport::kConvert);
    EXPECT_EQ(source.bytes(L"all.txt").substr(0, 7), "Title: ");
}

TEST_F(Export, PickersFillTheBoxesAndTheirHistories) {
    open();
    host.folders = {L"/mods", std::nullopt, L""};
    for (int i = 0; i < 3; ++i) press(frmExport::kPickSource);
    EXPECT_EQ(host.logged("folder").front(),
              "folder: Select the Source Folder that contains your .gas files to be converted.  | "
              "owner");
    EXPECT_EQ(dialog->cboSourceFolder->text(), L"/mods");
    EXPECT_EQ(dialog->cboSourceFolder->count(), 1U);
    EXPECT_TRUE(canConvert());

    tick(*dialog->chkSingleFile);
    host.files = {L"/out/all.tab", std::nullopt};
    press(frmExport::kPickTarget);
    press(frmExport::kPickTarget);
    EXPECT_EQ(host.logged("save").front(),
              "save: Select the Target Filename and Location | Gas Files (*.gas)|*.gas|All files "
              "(*.*)|*.* | /mods");
    EXPECT_EQ(dialog->cboTarget->text(), L"/out/all.tab");
    EXPECT_EQ(dialog->cboTarget->count(), 1U);
}

TEST_F(Export, HistoriesAreReadAndWrittenBack) {
    folder.put(L"cnv1.his", "/one\r\n/two\r\n");
    folder.put(L"cnv2.his", "/one.tab\r\n");
    open();
    EXPECT_EQ(dialog->cboSourceFolder->count(), 2U);
    EXPECT_EQ(dialog->cboSourceFolder->text(), L"");
    EXPECT_EQ(dialog->cboTarget->at(0), L"/one.tab");
    host.folders = {L"/three"};
    press(frmExport::kPickSource);
    press(frmExport::kDone);
    EXPECT_EQ(folder.bytes(L"cnv1.his"), "/three\r\n/one\r\n/two\r\n");
    EXPECT_EQ(folder.bytes(L"cnv1.his.bak"), "/one\r\n/two\r\n");
    EXPECT_EQ(folder.bytes(L"cnv2.his"), "/one.tab\r\n");
}

TEST_F(Export, DroppedFoldersAndFilesBecomeTheSource) {
    const std::wstring gas = source.put(L"a.GAS", kFile);
    const std::wstring other = source.put(L"b.txt", kFile);
    open();
    EXPECT_FALSE(dialog->drop(other));
    EXPECT_FALSE(dialog->drop(source.path(L"missing.gas")));
    EXPECT_FALSE(canConvert());
    EXPECT_TRUE(dialog->drop(gas));
    EXPECT_EQ(dialog->cboSourceFolder->text(), source.path());
    EXPECT_TRUE(dialog->drop(folder.path()));
    EXPECT_EQ(dialog->cboSourceFolder->text(), folder.path());
    EXPECT_TRUE(canConvert());
}

TEST_F(Export, EscapeClosesItButNotAtWork) {
    open();
    gProgram().progressShowing = true;
    key(*dialog->cboSourceFolder, WXK_ESCAPE);
    EXPECT_TRUE(dialog->IsShown());
    gProgram().progressShowing = false;
    key(*dialog->cboSourceFolder, WXK_ESCAPE);
    EXPECT_EQ(wxWindow::FindWindowByName("frmExport"), nullptr);
}

TEST_F(Export, OnlyItsWidthGrows) {
    open();
    const int height = dialog->GetClientSize().y;
    const int box = dialog->cboSourceFolder->GetSize().x;
    dialog->SetClientSize(dialog->GetClientSize().x + 200, height);
    settle();
    EXPECT_EQ(dialog->cboSourceFolder->GetSize().x, box + 200);
    EXPECT_EQ(dialog->GetMaxClientSize().y, height);
    const auto left = [](const wxWindow* control) {
        return control->GetParent()->ClientToScreen(control->GetPosition()).x;
    };
    EXPECT_EQ(left(dialog->cboSourceFolder), left(dialog->txtTitle));
}

}  // namespace
}  // namespace kestrel::test
