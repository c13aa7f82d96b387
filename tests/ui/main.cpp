#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>

namespace {

// What the toolkit would show a user as an error is a failure of the test.
class FailingLog final : public wxLog {
  protected:
    void DoLogTextAtLevel(wxLogLevel level, const wxString& text) override {
        if (level <= wxLOG_Warning) ADD_FAILURE() << "logged: " << text;
    }
};

class TestApp final : public wxApp {
  public:
    void OnAssertFailure(const wxChar* file, int line, const wxChar*, const wxChar* condition,
                         const wxChar* message) override {
        ADD_FAILURE() << "assert in " << wxString(file) << ":" << line << ": "
                      << wxString(condition) << " " << wxString(message);
    }
};

}  // namespace

int main(int count, char** words) {
    testing::InitGoogleTest(&count, words);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    wxApp::SetInstance(new TestApp);
    if (!wxEntryStart(count, words)) {
        std::fputs("the window tests need a display\n", stderr);
        return 2;
    }
    wxTheApp->CallOnInit();
    delete wxLog::SetActiveTarget(new FailingLog);
    wxGUIEventLoop loop;
    const wxEventLoopActivator active(&loop);
    return RUN_ALL_TESTS();
}
