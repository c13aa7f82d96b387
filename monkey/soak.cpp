// kestrel_soak [STARTS] [FILES]: opens files and main windows again and again, and tells
// what is left of them.
#include <wx/app.h>
#include <wx/init.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "monkey/files.h"
#include "monkey/memory.h"
#include "services/process.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "ui/common/host_wx.h"
#include "ui/events.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostGrowth = 2'000'000;  // bytes

class Soak {
  public:
    Soak() {
        gProgram().folder = files_.profile();
        setTemporaryFolder(files_.folder());
        gProgram().host.progress = &progress_;
        settleProcess();
    }

    bool run(int starts, int files) {
        frmMain* window = open();
        const bool files_ok = repeat("files opened", files, [&] {
            window->openFile(files_.source(random_));
            settle();
        });
        close(*window);
        const bool starts_ok = repeat("starts and ends", starts, [&] {
            frmMain* one = open();
            one->start(files_.source(random_));
            settle();
            close(*one);
        });
        return files_ok && starts_ok;
    }

  private:
    frmMain* open() {
        auto* window = new frmMain;
        window->Show();
        settle();
        return window;
    }

    void close(frmMain& window) {
        window.Close();
        while (wxTopLevelWindows.GetCount() > 0) settle();
    }

    // Runs `job` so often after a warm-up; tells what has grown, and whether that is little.
    template <class Job>
    bool repeat(const char* what, int times, Job job) {
        const int warmUp = std::max(100, times / 10);
        for (int i = 0; i < warmUp; ++i) once(job);
        const std::size_t heap = heapBytes();
        const std::size_t resident = residentBytes();
        const std::size_t descriptors = openFiles();
        const std::size_t temporary = temporaryFiles();
        for (int i = 0; i < times; ++i) once(job);
        const auto growth = [](std::size_t now, std::size_t before) {
            return static_cast<long long>(now) - static_cast<long long>(before);
        };
        std::printf(
            "%d %s: heap %+lld kB, resident %+lld kB, descriptors %+lld, "
            "temporary files %+lld, ended children %zu\n",
            times, what, growth(heapBytes(), heap) / 1000, growth(residentBytes(), resident) / 1000,
            growth(openFiles(), descriptors), growth(temporaryFiles(), temporary), zombies());
        return heapBytes() < heap + kMostGrowth && openFiles() <= descriptors &&
               temporaryFiles() <= temporary && zombies() == 0;
    }

    template <class Job>
    void once(Job job) {
        job();
        host_.log.clear();
    }

    // They are also beside the files that the program writes.
    std::size_t temporaryFiles() const {
        std::size_t count = 0;
        for (const fs::path folder : {files_.profile(), files_.folder()}) {
            for (const auto& entry : fs::directory_iterator(folder)) {
                const std::string name = entry.path().filename().string();
                count += name.starts_with("gsv") || name.ends_with(".tmp");
            }
        }
        return count;
    }

    RecordingHost host_;
    ProgressMakerWx progress_;
    MonkeyFiles files_;
    Random random_{1};
};

class SoakApp final : public wxApp {
  public:
    SoakApp(int starts, int files) : starts_(starts), files_(files) { SetExitOnFrameDelete(false); }

    bool OnInit() override {
        CallAfter([this] {
            holds = Soak().run(starts_, files_);
            ExitMainLoop();
        });
        return true;
    }

    bool holds = false;

  private:
    int starts_;
    int files_;
};

}  // namespace
}  // namespace kestrel::test

int main(int count, char** words) {
    const int starts = count > 1 ? std::atoi(words[1]) : 1'000;
    const int files = count > 2 ? std::atoi(words[2]) : 10'000;
    auto* app = new kestrel::test::SoakApp(starts, files);
    wxApp::SetInstance(app);
    int none = 1;
    if (!wxEntryStart(none, words)) {
        std::fputs("the soak needs a display\n", stderr);
        return 2;
    }
    app->CallOnInit();
    app->OnRun();
    const bool holds = app->holds;
    app->OnExit();
    wxEntryCleanup();
    return holds ? 0 : 1;
}
