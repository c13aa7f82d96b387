// kestrel_monkey [STEPS] [SEED] [tell]: random use of all windows.
#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "monkey/memory.h"
#include "monkey/monkey.h"
#include "services/errors.h"
#include "services/process.h"
#include "services/program.h"

namespace kestrel::test {
namespace {

class FailingLog final : public wxLog {
  protected:
    void DoLogTextAtLevel(wxLogLevel level, const wxString& text) override {
        if (level <= wxLOG_Warning) fail("logged: " + text.utf8_string());
    }
};

class MonkeyApp final : public wxApp {
  public:
    MonkeyApp(int steps, std::uint64_t seed, bool tells) {
        SetExitOnFrameDelete(false);
        make_ = [=] { return std::make_unique<Monkey>(steps, seed, tells); };
    }
    bool OnInit() override {
        monkey_ = make_();
        CallAfter([this] { monkey_->start(); });
        return true;
    }
    int OnExit() override {
        std::fputs(monkey_->summary().c_str(), stdout);
        std::fflush(stdout);
        monkey_.reset();
        return wxApp::OnExit();
    }
    bool OnExceptionInMainLoop() override {
        reportCurrentException(gProgram().routine);
        return true;
    }
    void OnAssertFailure(const wxChar* file, int line, const wxChar* function,
                         const wxChar* condition, const wxChar* message) override {
        // A display gives the mouse to no window that it has not shown yet. Nobody could
        // click there.
        if (wxString(message).EndsWith("CaptureMouse() failed")) return;
        fail("assert in " + wxString(file).utf8_string() + ":" + std::to_string(line) + " " +
             wxString(function).utf8_string() + ": " + wxString(condition).utf8_string() + " " +
             wxString(message).utf8_string());
    }

  private:
    std::function<std::unique_ptr<Monkey>()> make_;
    std::unique_ptr<Monkey> monkey_;
};

// What ended must have been asked for within a second.
bool leavesNothing() {
    for (int i = 0; i < 100 && zombies() > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (zombies() == 0) return true;
    std::fprintf(stderr, "FAILED: %zu ended children are left\n", zombies());
    return false;
}

int run(int count, char** words) {
    const int steps = count > 1 ? std::atoi(words[1]) : 10'000;
    const std::uint64_t seed = count > 2 ? std::strtoull(words[2], nullptr, 10) : 1;
    const bool tells = count > 3 && std::string_view(words[3]) == "tell";
    settleProcess();
    wxApp::SetInstance(new MonkeyApp(steps, seed, tells));
    int none = 1;
    if (!wxEntryStart(none, words)) {
        std::fputs("the monkey needs a display\n", stderr);
        return 2;
    }
    delete wxLog::SetActiveTarget(new FailingLog);
    wxTheApp->CallOnInit();
    wxTheApp->OnRun();
    wxTheApp->OnExit();
    wxEntryCleanup();
    return leavesNothing() ? 0 : 1;
}

}  // namespace
}  // namespace kestrel::test

int main(int count, char** words) {
    return kestrel::test::run(count, words);
}
