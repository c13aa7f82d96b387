#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/thread.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <thread>

#include "ui/harness.h"

namespace {

using namespace std::chrono_literals;

// Longer than any window test may take.
constexpr auto kHung = 110s;

// What the toolkit would show a user as an error is a failure of the test.
class FailingLog final : public wxLog {
  protected:
    void DoLogTextAtLevel(wxLogLevel level, const wxString& text) override {
        if (level <= wxLOG_Warning) ADD_FAILURE() << "logged: " << text;
    }
};

// Ends a run that hangs, with the windows that are open.
class Watchdog final : public testing::EmptyTestEventListener {
  public:
    Watchdog() : thread_([this] { watch(); }) {}
    ~Watchdog() override {
        {
            const std::lock_guard lock(mutex_);
            ended_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }

  private:
    void OnTestStart(const testing::TestInfo&) override { moveOn(); }
    void OnTestEnd(const testing::TestInfo&) override { moveOn(); }

    void moveOn() {
        const std::lock_guard lock(mutex_);
        ++step_;
        changed_.notify_all();
    }

    void watch() {
        std::unique_lock lock(mutex_);
        while (!ended_) {
            const int step = step_;
            if (changed_.wait_for(lock, kHung, [&] { return ended_ || step_ != step; })) continue;
            std::fprintf(stderr, "the test hangs; %s\n", kestrel::test::openWindows().c_str());
            std::fflush(stderr);
            std::_Exit(3);
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int step_ = 0;
    bool ended_ = false;
    std::thread thread_;
};

class TestApp final : public wxApp {
  public:
    bool OnInit() override {
        SetExitOnFrameDelete(false);
        CallAfter([this] {
            result_ = RUN_ALL_TESTS();
            ExitMainLoop();
        });
        return true;
    }
    int OnRun() override {
        wxApp::OnRun();
        return result_;
    }
    bool OnExceptionInMainLoop() override { throw; }
    void OnAssertFailure(const wxChar* file, int line, const wxChar* function,
                         const wxChar* condition, const wxChar* message) override {
        ADD_FAILURE() << "assert in " << wxString(file) << ":" << line << " " << wxString(function)
                      << ": " << wxString(condition) << " " << wxString(message);
    }

  private:
    int result_ = 1;
};

bool onlyLists(int count, char** words) {
    for (int i = 1; i < count; ++i) {
        if (std::string_view(words[i]).starts_with("--gtest_list_tests")) return true;
    }
    return false;
}

}  // namespace

int main(int count, char** words) {
    const bool lists = onlyLists(count, words);
    testing::InitGoogleTest(&count, words);
    if (lists) return RUN_ALL_TESTS();
    testing::UnitTest::GetInstance()->listeners().Append(new Watchdog);
    wxApp::SetInstance(new TestApp);
    if (!wxEntryStart(count, words)) {
        std::fputs("the window tests need a display\n", stderr);
        return 2;
    }
    wxTheApp->CallOnInit();
    delete wxLog::SetActiveTarget(new FailingLog);
    kestrel::test::DialogGuard dialogs;
    dialogs.Register();
    const int result = wxTheApp->OnRun();
    dialogs.Unregister();
    wxEntryCleanup();
    return result;
}
