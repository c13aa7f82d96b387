#include "ui/frmSpecialize/frmSpecialize.h"

#include <wx/uiaction.h>

#include <filesystem>

#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

using Lines = std::vector<std::string>;
using Tree = std::vector<std::wstring>;

constexpr const char* kQuestion = "ask: Source has been changed. Go on and discard changes?";

class Specialize : public UiTest {
  public:
    Specialize() { gProgram().version.fileDescription = L"Kestrel"; }

    // A copy of a sample, which tests may write over.
    std::wstring sample(const std::wstring& name) {
        std::filesystem::copy_file(std::filesystem::path(KESTREL_SAMPLES) / name,
                                   folder.native(name));
        return folder.path(name);
    }

    void open(std::wstring_view name, std::wstring path) {
        openPath = std::move(path);
        window = new frmSpecialize(nullptr, {[this] { return openPath; }, [this] { ++reloads; }});
        window->BaseTemplateName(name);
        show(*window);
        waitUntil("the tree has the keyboard", [this] { return window->tvwTemplates->HasFocus(); });
    }

    // The labels from the root down.
    Tree labels() const {
        Tree texts;
        for (wxTreeItemId item = window->tvwTemplates->GetRootItem(); item.IsOk();) {
            texts.push_back(fromWx(window->tvwTemplates->GetItemText(item)));
            EXPECT_LE(window->tvwTemplates->GetChildrenCount(item, false), 1U);
            wxTreeItemIdValue cookie;
            item = window->tvwTemplates->GetFirstChild(item, cookie);
        }
        return texts;
    }

    wxTreeItemId node(std::size_t level) const {
        wxTreeItemId item = window->tvwTemplates->GetRootItem();
        wxTreeItemIdValue cookie;
        for (; level > 0; --level) item = window->tvwTemplates->GetFirstChild(item, cookie);
        return item;
    }

    // The button goes down on a node, selected or not.
    void press(std::size_t level) {
        wxRect label;
        ASSERT_TRUE(window->tvwTemplates->GetBoundingRect(node(level), label, true));
        // A tree of the system selects on its own messages, before the event.
        const bool native = wxClassInfo::FindClass("wxGenericTreeCtrl") == nullptr;
        if (native) window->tvwTemplates->SelectItem(node(level));
        press(label.GetPosition() + label.GetSize() / 2);
    }
    void press(wxPoint point) {
        wxMouseEvent event(wxEVT_LEFT_DOWN);
        event.SetPosition(point);
        event.SetEventObject(window->tvwTemplates);
        window->tvwTemplates->ProcessWindowEvent(event);
        settle();
    }

    void type(const char* text) {
        window->txtView->AddText(text);
        key(*window->txtView, WXK_SHIFT);
    }

    bool isOpen() const {
        settle();
        return wxTopLevelWindows.Find(window) != nullptr;
    }

    frmSpecialize* window = nullptr;
    std::wstring openPath;
    int reloads = 0;
};

TEST_F(Specialize, TheChainGrowsOverFilesThatTheUserShows) {
    const std::wstring a = sample(L"chain-a.gas");
    const std::wstring b = sample(L"chain-b.gas");
    open(L"dinghy_tender", a);
    EXPECT_EQ(window->GetTitle(), "Specializes Browser");
    EXPECT_EQ(labels(), (Tree{L"Tender of the cutter", L"dinghy_painted"}));
    EXPECT_EQ(window->tvwTemplates->GetSelection(), node(0));
    EXPECT_TRUE(window->TextBlock().starts_with(L"[t:template,n:dinghy_tender]\r\n{"));
    waitUntil("its node is in view", [this] { return window->tvwTemplates->IsVisible(node(1)); });

    host.files = {std::nullopt, b};
    wxUIActionSimulator().Char(WXK_DOWN);
    waitUntil("the next node is selected",
              [this] { return window->tvwTemplates->GetSelection() == node(1); });
    EXPECT_EQ(window->TextBlock(), L"Source not available.");
    EXPECT_EQ(host.log, Lines{"open: Select the node's source file | All files (*.*)|*.* | " +
                              shown(folder.path())});
    press(1);
    EXPECT_EQ(host.log.size(), 2U);
    EXPECT_EQ(labels(), (Tree{L"Tender of the cutter", L"dinghy_painted", L"dinghy_plain"}));
    EXPECT_TRUE(window->TextBlock().starts_with(L"[t:template,n:dinghy_painted]\r\n{"));
    EXPECT_FALSE(window->TextBlockChanged());
    waitUntil("its node is in view", [this] { return window->tvwTemplates->IsVisible(node(2)); });

    key(*window->tvwTemplates, WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(folder.bytes(L"spec.his"), shown(a) + "\r\n" + shown(b));
}

TEST_F(Specialize, ResetAsksAndKeepsTheNameAlone) {
    open(L"dinghy_tender", sample(L"chain-a.gas"));
    EXPECT_EQ(window->cmdCommands[6]->GetLabel(), "&Reset File List");
    host.answers = {Answer::yes};
    click(*window->cmdCommands[6]);
    EXPECT_EQ(host.log, Lines{"ask: Really reset the list of files that are searched for source? | "
                              "Kestrel | question | yesNo"});
    window->Close();
    settle();
    EXPECT_EQ(folder.bytes(L"spec.his"), "dinghy_tender");
}

TEST_F(Specialize, AFileThatCannotBeLoadedLeavesBothSidesEmpty) {
    open(L"a", folder.path(L"none.gas"));
    EXPECT_FALSE(window->tvwTemplates->GetRootItem().IsOk());
    EXPECT_EQ(window->TextBlock(), L"");
    EXPECT_EQ(host.log.back(), "ask: Error loading gas file! | Kestrel | exclamation | ok");
    press(wxPoint(10, 10));
    key(*window->tvwTemplates, WXK_ESCAPE);
    EXPECT_FALSE(isOpen());
}

TEST_F(Specialize, SavesOverTheOpenFile) {
    const std::string text = "[t:template,n:a]\r\n{\r\n}\r\n";
    open(L"a", folder.put(L"open.gas", text));
    EXPECT_EQ(window->GetTitle(), "Specializes Browser");
    type("x");
    EXPECT_EQ(window->GetTitle(), "Specializes Browser *");
    host.files = {openPath};
    key(*window->txtView, 'S', wxMOD_CONTROL);
    EXPECT_EQ(folder.bytes(L"open.gas"), "x" + text);
    EXPECT_EQ(reloads, 1);
}

TEST_F(Specialize, AsksBeforeANodeReplacesAChangedText) {
    open(L"a", folder.put(L"a.gas",
                          "[t:template,n:a]\r\n{\r\nspecializes = b;\r\n}\r\n"
                          "[t:template,n:b]\r\n{\r\n}\r\n"));
    type("x");
    host.answers = {Answer::no, Answer::yes};
    press(1);
    EXPECT_TRUE(window->TextBlock().starts_with(L"x[t:template,n:a]"));
    EXPECT_EQ(window->tvwTemplates->GetSelection(), node(0));
    press(1);
    EXPECT_TRUE(window->TextBlock().starts_with(L"[t:template,n:b]"));
    EXPECT_EQ(window->GetTitle(), "Specializes Browser");
    EXPECT_EQ(host.logged(kQuestion).size(), 2U);

    type("x");
    host.answers = {Answer::no};
    click(*window->cmdCommands[0]);
    EXPECT_TRUE(isOpen());
    window->CanEdit(false);
    press(0);
    EXPECT_TRUE(window->TextBlock().starts_with(L"[t:template,n:a]"));
    EXPECT_EQ(host.logged(kQuestion).size(), 2U);
    click(*window->cmdCommands[0]);
    EXPECT_FALSE(isOpen());
}

TEST_F(Specialize, TreeAndTextShareTheWindowAboveOneRowOfButtons) {
    open(L"dinghy_tender", sample(L"chain-a.gas"));
    for (const wxSize size : {wxSize(10, 10), wxSize(900, 700)}) {
        resize(*window, size);
        EXPECT_GE(window->GetSize().x, fromTwips(*window, 5000));
        EXPECT_GE(window->GetSize().y, fromTwips(*window, 5000));
        const wxRect tree = window->tvwTemplates->GetRect();
        const wxRect text = window->txtView->GetRect();
        EXPECT_GT(text.width, 0);
        EXPECT_GT(text.x, tree.GetRight());
        EXPECT_EQ(text.y, tree.y);
        EXPECT_EQ(text.height, tree.height);
        EXPECT_EQ(window->GetClientSize().x - text.GetRight() - 1, tree.x);
        int right = 0;
        for (const std::size_t index : {6U, 5U, 3U, 4U, 2U, 1U, 0U}) {
            const wxRect button = window->cmdCommands[index]->GetRect();
            EXPECT_GT(button.x, right);
            EXPECT_GT(button.y, text.GetBottom());
            EXPECT_EQ(button.y, window->cmdCommands[0]->GetRect().y);
            right = button.GetRight();
        }
        EXPECT_EQ(right, text.GetRight());
    }
}

}  // namespace
}  // namespace kestrel::test
