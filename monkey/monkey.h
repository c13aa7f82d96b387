#pragma once

#include <wx/timer.h>
#include <wx/weakref.h>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "monkey/files.h"
#include "monkey/host.h"
#include "monkey/random.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel::test {

// Ends the run as failed, with the seed, the step and what was done last.
[[noreturn]] void fail(const std::string& text);

// Does what no user would: one random thing after the other in whatever window is
// in front, also in dialogs and while something works. A step begins when the
// program has nothing else to do, in whatever event loop that is.
class Monkey final : private wxTimer {
  public:
    Monkey(int steps, std::uint64_t seed, bool tells);
    ~Monkey() override;

    // Begins; leaves the program's event loop when all steps are done.
    void start();

    // What was done, for a failure and for the end.
    std::string story() const;
    std::string summary() const;

  private:
    friend class Actions;
    enum class Phase { playing, resting, ending };

    void Notify() override;
    void step();
    void play();
    // Closes what is open until the main window alone is left; true then.
    bool cleared();
    void rest();
    void openMain(const std::wstring& file);
    void checkMemory() const;
    void note(const std::string& text);
    wxTopLevelWindow* front() const;

    // actions.cpp
    void actInMain();
    void actInDialog(wxTopLevelWindow& window);
    void actInProgress();
    void actAnywhere(wxTopLevelWindow& window);
    void runCommand();
    void openAny();
    void selectRow();
    void selectNode();
    void logOut();
    void press(wxTopLevelWindow& window);
    void tick(wxTopLevelWindow& window);
    void type(wxTopLevelWindow& window);
    void choose(wxTopLevelWindow& window);
    void hitKey(wxTopLevelWindow& window);
    void mouse(wxTopLevelWindow& window);
    void reshape(wxTopLevelWindow& window);
    void drop(wxTopLevelWindow& window);
    template <class Kind>
    Kind* any(wxWindow& window);

    // checks.cpp
    void check() const;
    void checkWindows() const;
    void checkMain() const;
    template <class Viewer>
    void checkViewer(const Viewer& viewer) const;

    struct Sample {
        int step;
        std::size_t heap;
        std::size_t resident;
    };

    const int steps_;
    const std::uint64_t seed_;
    const bool tells_;
    Random random_;
    MonkeyFiles files_;
    MonkeyHost host_;
    OpenDialogs dialogs_;
    wxWeakRef<frmMain> main_;
    Phase phase_ = Phase::playing;
    int step_ = 0;
    int nextRest_;
    int settling_ = 0;
    int waiting_ = 0;
    std::size_t deepest_ = 0;
    std::size_t filesAtFirst_ = 0;
    std::deque<std::string> last_;
    std::vector<Sample> samples_;
};

}  // namespace kestrel::test
