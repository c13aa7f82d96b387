#pragma once

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/testing.h>
#include <wx/toplevel.h>
#include <wx/window.h>

#include <functional>
#include <string>
#include <vector>

#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "ui/events.h"

namespace kestrel::test {

// A test of windows: a fresh program record with a recording host and a program
// folder of its own. Whatever window the test leaves is destroyed, and an error
// that the toolkit logged fails it.
class UiTest : public testing::Test {
  public:
    UiTest();
    ~UiTest() override;

    RecordingHost host;
    TempFolder folder;
};

// Lets events run until `holds`; fails with `what` when it does not within five
// seconds.
void waitUntil(const char* what, const std::function<bool()>& holds);

// Shows the window and waits until the window manager has placed it: before that
// its size is none that a user sees.
void show(wxTopLevelWindow& window);

// Asks for a size and waits until the window has it, or its least one.
void resize(wxTopLevelWindow& window, const wxSize& size);

// What a user can do with the control that is shown and enabled; the test fails
// when this one is not.
void click(wxButton& button);
void tick(wxWindow& checkBox);
// A key pressed and released while `focused` has the keyboard.
void key(wxWindow& focused, int code, int modifiers = wxMOD_NONE);

// The dialogs that a test expects, each with what to do in it. Any other dialog
// fails the test and is cancelled.
class ExpectDialog {
  public:
    // `answer` gets the dialog that is about to be shown and returns its result.
    explicit ExpectDialog(std::function<int(wxDialog& dialog)> answer);
    ~ExpectDialog();
    ExpectDialog(const ExpectDialog&) = delete;
    ExpectDialog& operator=(const ExpectDialog&) = delete;

    bool seen() const noexcept { return seen_; }

  private:
    friend class DialogGuard;
    std::function<int(wxDialog&)> answer_;
    bool seen_ = false;
};

// Fails tests on unexpected dialogs for as long as it lives.
class DialogGuard final : public wxModalDialogHook {
  protected:
    int Enter(wxDialog* dialog) override;
};

// The names and captions of the open windows, for messages.
std::string openWindows();

}  // namespace kestrel::test
