#include "ui/harness.h"

#include <wx/app.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/log.h>
#include <wx/toplevel.h>
#include <wx/utils.h>

#include <chrono>

#include "ui/common/strings.h"

namespace kestrel::test {
namespace {

using namespace std::chrono_literals;
constexpr auto kLimit = 5s;

std::vector<ExpectDialog*>& expected() {
    static std::vector<ExpectDialog*> dialogs;
    return dialogs;
}

bool usable(const wxWindow& window) {
    return window.IsShownOnScreen() && window.IsEnabled();
}

bool sendKey(wxWindow& window, wxEventType type, int code, int modifiers) {
    wxKeyEvent event = keyEvent(window, type, code, modifiers);
    return window.ProcessWindowEvent(event);
}

}  // namespace

UiTest::UiTest() {
    gProgram().folder = folder.path();
}

UiTest::~UiTest() {
    std::vector<wxWindow*> windows(wxTopLevelWindows.begin(), wxTopLevelWindows.end());
    for (wxWindow* window : windows) {
        if (wxTopLevelWindows.Find(window) != nullptr) window->Destroy();
    }
    settle();
    EXPECT_TRUE(wxTopLevelWindows.empty()) << openWindows();
}

void waitUntil(const char* what, const std::function<bool()>& holds) {
    const auto limit = std::chrono::steady_clock::now() + kLimit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > limit) {
            ADD_FAILURE() << "did not happen: " << what << "\n" << openWindows();
            return;
        }
        runEvents();
    }
    settle();
}

void show(wxTopLevelWindow& window) {
    window.Show();
    auto raised = std::chrono::steady_clock::now();
    waitUntil("the window manager has placed the window", [&] {
        constexpr int kNone = 30;  // less than what any placed window reads
        const bool placed = window.GetSize().x > kNone && window.GetSize().y > kNone;
        // One that opens while another closes may come up behind, without the keyboard.
        if (placed && !window.IsActive() && std::chrono::steady_clock::now() - raised > 200ms) {
            window.Raise();
            raised = std::chrono::steady_clock::now();
        }
        return placed && window.IsActive();
    });
}

void resize(wxTopLevelWindow& window, const wxSize& size) {
    wxSize wanted = size;
    wanted.IncTo(window.GetMinSize());
    window.SetSize(size);
    waitUntil("the window has its size", [&] { return window.GetSize() == wanted; });
}

void click(wxButton& button) {
    ASSERT_TRUE(usable(button)) << "nobody can press " << button.GetLabel();
    send(button, wxEVT_BUTTON);
    settle();
}

void tick(wxWindow& checkBox) {
    ASSERT_TRUE(usable(checkBox)) << "nobody can tick " << checkBox.GetLabel();
    auto& box = dynamic_cast<wxCheckBox&>(checkBox);
    box.SetValue(!box.GetValue());
    send(box, wxEVT_CHECKBOX, box.GetValue() ? 1 : 0);
    settle();
}

void key(wxWindow& focused, int code, int modifiers) {
    ASSERT_TRUE(usable(focused)) << "nobody can type into " << focused.GetName();
    focused.SetFocus();
    settle();
    if (!sendKey(focused, wxEVT_CHAR_HOOK, code, modifiers)) {
        sendKey(focused, wxEVT_KEY_DOWN, code, modifiers);
    }
    sendKey(focused, wxEVT_KEY_UP, code, modifiers);
    settle();
}

ExpectDialog::ExpectDialog(std::function<int(wxDialog&)> answer) : answer_(std::move(answer)) {
    expected().push_back(this);
}

ExpectDialog::~ExpectDialog() {
    EXPECT_TRUE(seen_) << "no dialog was shown";
    std::erase(expected(), this);
}

int DialogGuard::Enter(wxDialog* dialog) {
    for (ExpectDialog* expectation : expected()) {
        if (expectation->seen_) continue;
        expectation->seen_ = true;
        return expectation->answer_(*dialog);
    }
    ADD_FAILURE() << "an unexpected dialog: " << dialog->GetTitle();
    return wxID_CANCEL;
}

std::string openWindows() {
    std::string text = "open windows:";
    for (const wxWindow* window : wxTopLevelWindows) {
        const wxSize size = window->GetSize();
        text +=
            "\n  " + window->GetName().utf8_string() + ": " + window->GetLabel().utf8_string() +
            " (" + std::to_string(size.x) + " x " + std::to_string(size.y) +
            (window->HasFocus() || window->IsDescendant(wxWindow::FindFocus()) ? ", active)" : ")");
    }
    return text;
}

}  // namespace kestrel::test
