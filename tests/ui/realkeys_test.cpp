#include <wx/uiaction.h>
#include <wx/utils.h>

#include "ui/common/strings.h"
#include "ui/frmMain/frmMain.h"
#include "ui/frmView/frmView.h"
#include "ui/harness.h"

// Keys as the display sends them, from the first to the last window that hears
// them.
namespace kestrel::test {
namespace {

class RealKeys : public UiTest {
  protected:
    static void activate(wxTopLevelWindow& window) {
        show(window);
        wxUIActionSimulator().MouseMove(1, 1);
        settle();
    }

    static void press(int code, int modifiers = wxMOD_NONE) {
        wxUIActionSimulator().Char(code, modifiers);
        settle();
    }
};

TEST_F(RealKeys, FindInTheMainWindow) {
    auto* window = new frmMain;
    ASSERT_TRUE(window->openFile(folder.put(
        L"a.gas", "[t:template,n:a]\r\n{\r\none = 1;\r\ntwo = 2;\r\nonce = 3;\r\n}\r\n")));
    activate(*window);
    window->lvwProperties->SetFocus();
    host.prompts = {L"on"};
    press('F', wxMOD_CONTROL);
    waitUntil("Ctrl+F asks", [&] { return !host.logged("prompt").empty(); });
    EXPECT_EQ(window->lvwProperties->selectedRow(), 1U);
    press(WXK_F3);
    waitUntil("F3 finds the next one", [&] { return window->lvwProperties->selectedRow() == 3U; });
    press(WXK_ESCAPE);
    waitUntil("Esc closes the window", [] { return wxTopLevelWindows.empty(); });
}

TEST_F(RealKeys, SaveEditAndLeaveAViewer) {
    const TemporaryFilesIn here(folder);
    auto* viewer = new frmView(nullptr, {});
    viewer->TextBlock(L"one two one");
    viewer->SetTitle("Edit");
    activate(*viewer);
    viewer->txtView->SetFocus();
    host.files = {folder.path(L"saved.txt"), L"/opt/pad"};
    press('S', wxMOD_CONTROL);
    waitUntil("Ctrl+S saves", [&] { return folder.bytes(L"saved.txt") == "one two one"; });
    press('E', wxMOD_CONTROL);
    waitUntil("Ctrl+E starts the editor", [&] { return !host.logged("run").empty(); });
    host.prompts = {L"ONE"};
    press('F', wxMOD_CONTROL);
    waitUntil("Ctrl+F asks", [&] { return !host.logged("prompt").empty(); });
    press(WXK_F3);
    waitUntil("F3 selects the next one",
              [&] { return fromWx(viewer->stbMain->GetStatusText(2)) == L"Char: 11"; });
    press(WXK_ESCAPE);
    waitUntil("Esc closes the viewer", [] { return wxTopLevelWindows.empty(); });
}

}  // namespace
}  // namespace kestrel::test
