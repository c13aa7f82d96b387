// How long the windows keep a user waiting, beside the least that could be done.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <wx/evtloop.h>
#include <wx/stopwatch.h>

#include <fstream>
#include <functional>

#include "common.h"
#include "gas/load.h"
#include "services/program.h"
#include "services/progress.h"
#include "ui/app.h"
#include "ui/common/strings.h"
#include "ui/frmArchive/frmArchive.h"
#include "ui/frmMain/frmMain.h"
#include "ui/frmView/frmView.h"
#include "ui/frmZeltor/builderlog.h"
#include "ui/frmZeltor/frmZeltor.h"
#include "ui/host/host_wx.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;
using Job = std::function<void()>;

// Lets the windows paint and do what they put off, until nothing is left.
void settle() {
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    for (int quiet = 0; quiet < 3; ++quiet) {
        while (loop->Pending()) {
            loop->Dispatch();
            quiet = 0;
        }
        wxTheApp->ProcessPendingEvents();
        loop->ProcessIdle();
    }
}

// A user who searches for what is not there.
class Answers final : public Messages {
    Answer ask(std::wstring_view, std::wstring_view, Icon, Buttons) override { return Answer::ok; }
    std::optional<std::wstring> prompt(std::wstring_view, std::wstring_view,
                                       std::wstring_view) override {
        return L"nowhere to be found";
    }
};

class Windows {
  public:
    explicit Windows(const fs::path& folder) : folder_(folder) {
        gProgram().folder = folder.wstring();
        gProgram().settings.zeltor = L"" KESTREL_STUB_BUILDER;
        gProgram().host.messages = &answers_;
        gProgram().host.progress = &progress_;
        gProgram().host.tank = tank_.get();
        window_->Show();
        addAll();
        Report report;
        benchmark::RunSpecifiedBenchmarks(&report);
        window_->Destroy();
        settle();
    }

  private:
    // In the order in which they run: each finds what the ones before have opened.
    void addAll() {
        const std::string thing =
            "[t:template,n:thing_#]\r\n{\r\n\tdoc = \"Thing #\";\r\n\tspecializes = \"base\";\r\n"
            "\t[look]\r\n\t{\r\n\t\tmodel = m_#;\r\n\t}\r\n}\r\n";
        const std::string block =
            "[block#]\r\n{\r\n" + numbered("property_# = #;\r\n", 1'000) + "}\r\n";
        const std::wstring large = put("large.gas", numbered(thing, 95'000));
        const std::wstring huge = put("huge.gas", numbered(thing, 1'000'000));
        const std::wstring wide =
            put("wide.gas", "[t:template,n:wide]\r\n{\r\n" + numbered(block, 100) + "}\r\n");
        const Job openWide = [this, wide] {
            close();
            if (window_->document().path != wide) window_->openFile(wide);
        };
        const Job filter = [this] { window_->chkTree->SetValue(true); };
        const Job doNotFilter = [this] { window_->chkTree->SetValue(false); };
        add("loading a 10 MB file alone", nullptr, [large] {
            std::wstring path = large;
            std::vector<GasTemplate> records;
            gblnLoadGas(path, records, nullptr);
        });
        add("opening 1,000,000 templates", nullptr, [this, huge] { window_->openFile(huge); });
        add("opening the 10 MB file", nullptr, [this, large] { window_->openFile(large); });
        add("selecting one of its templates", nullptr, [this] { select(*window_->lvwTemplates); });
        add("finding no template", nullptr, [this] { window_->findTemplateName(); });
        add(
            "a viewer on its text", [this] { close(); }, [this] { view(); });
        add("finding nothing in the viewer", nullptr,
            [this] { viewer_->txtView->find(L"nowhere"); });
        add("a letter typed there", nullptr, [this] { viewer_->txtView->AddText("x"); });
        add("selecting a template of 100,000 properties", openWide,
            [this] { window_->lvwTemplates->onSelect(); });
        add("a click on its tree, which filters", filter, [this] { clickNode(); });
        add("a click on its tree", doNotFilter, [this] { clickNode(); });
        add("finding no property", nullptr, [this] { window_->findPropertyName(); });
        add("selecting one of its properties", nullptr,
            [this] { select(*window_->lvwProperties); });
        for (const char* part : {"flood", "wait"}) {
            const auto run = [this, part](benchmark::State& state) { build(state, part); };
            addSingle(std::string("the log of a builder, ") + part, 1, run)->UseRealTime();
        }
        const std::wstring archive =
            put("large.dsres",
                "tank\n" + numbered("file|name=thing_#.gas|size=9|repeat=1000\n", 1'000));
        addSingle("an archive of 1,000,000 files", 1, [this, archive](benchmark::State& state) {
            for (auto _ : state) browse(state, archive);
        })->UseRealTime();
    }

    // The longest time that the windows are not asked for anything new, in ms.
    static double longestPause(const Job& job) {
        long longest = 0;
        wxStopWatch pause;
        wxTimer timer;
        const auto beat = [&] {
            longest = std::max(longest, pause.Time());
            pause.Start();
        };
        timer.Bind(wxEVT_TIMER, [&](wxTimerEvent&) { beat(); });
        timer.Start(1);
        settle();
        longest = 0;
        pause.Start();
        job();
        settle();
        beat();
        return static_cast<double>(longest);
    }

    void browse(benchmark::State& state, const std::wstring& path) {
        std::unique_ptr<TankContents> contents;
        const auto tell = [&](const char* what, const Job& job) {
            state.counters[what] = longestPause(job);
        };
        tell("listing, ms", [&] {
            const ProgressScope scope(nullptr, nullptr, L"Listing");
            contents = std::make_unique<TankContents>(path, scope.dialog());
        });
        frmArchive* archive = nullptr;
        tell("showing, ms", [&] {
            archive = new frmArchive(window_, std::move(contents), {});
            archive->Show();
        });
        tell("filtering, ms", [&] { archive->txtFilter->SetValue("g"); });
        tell("filtering more, ms", [&] { archive->txtFilter->SetValue("g_77"); });
        tell("all again, ms", [&] { archive->txtFilter->SetValue(""); });
        for (std::size_t column : {0, 2}) {
            tell(column == 0 ? "sorting by name, ms" : "by size, ms", [&] {
                archive->lvwFiles->order({true, column, true});
            });
        }
        archive->Destroy();
    }

    std::wstring put(const char* name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return (folder_ / name).wstring();
    }

    // The CPU time of `job` until everything is painted; `before` is not timed.
    static void add(const char* name, const Job& before, const Job& job) {
        const auto run = [before, job](benchmark::State& state) {
            if (before) before();
            settle();
            for (auto _ : state) {
                job();
                settle();
            }
        };
        addSingle(name, 7, run)->ComputeStatistics("longest", [](const std::vector<double>& times) {
            return *std::ranges::max_element(times);
        });
    }

    void select(ReportList& list) {
        row_ = (row_ + 37'441) % list.rows().size();
        list.selectRow(row_);
        list.onSelect();
    }

    void clickNode() {
        NodeTree& tree = *window_->tvwInfo;
        tree.select(tree.selected().value_or(0) % 100 + 1);
        tree.onSelect();
    }

    void view() {
        std::wstring text;
        for (const GasTemplate& record : window_->document().templates) text += record.Text.wide();
        viewer_ = new frmView(window_, {});
        viewer_->TextBlock(text);
        viewer_->Show();
    }

    void close() {
        if (viewer_ != nullptr) viewer_->Destroy();
        viewer_ = nullptr;
        settle();
    }

    // From the click on until the log of a builder is closed by Esc. It plays a part: to
    // write as fast as it can and end ("flood"), or to write a line and be silent ("wait").
    // A pause is how long the windows are not asked for anything new.
    void build(benchmark::State& state, const std::string& part) {
        TimedLauncher builder;
        frmZeltor dialog(window_, builder, {});
        dialog.cboSourceFolder->SetValue(toWx(folder_.wstring()));
        dialog.cboTarget->SetValue(toWx((folder_ / part).wstring()));
        dialog.txtTitle->SetValue(part);
        dialog.txtBuild->SetValue("100");
        dialog.Show();
        settle();
        int logged = 0;
        long longest = 0;
        wxStopWatch pause;
        wxStopWatch closing;
        wxTimer timer;
        timer.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
            longest = std::max(longest, pause.Time());
            pause.Start();
            auto* log = dynamic_cast<BuilderLog*>(wxTopLevelWindows.GetLast()->GetData());
            if (log == nullptr) return;
            logged = log->txtView->GetLength();
            if (part == "wait" ? logged == 0 : !log->isDone()) return;
            timer.Stop();
            closing.Start();
            pressEscape(*log->txtView);
        });
        for (auto _ : state) {
            pause.Start();
            timer.Start(1);
            wxCommandEvent press(wxEVT_BUTTON);
            dialog.cmdCommands[frmZeltor::kCreate]->ProcessWindowEvent(press);
            state.counters["closing, ms"] = static_cast<double>(closing.Time());
        }
        state.counters["longest pause, ms"] = static_cast<double>(longest);
        state.SetBytesProcessed(logged);
        std::ofstream(folder_ / (part + ".go")) << "go";
        while (builder.running()) settle();
    }

    static void pressEscape(wxWindow& window) {
        for (const wxEventType type : {wxEVT_CHAR_HOOK, wxEVT_KEY_UP}) {
            wxKeyEvent event(type);
            event.m_keyCode = WXK_ESCAPE;
            event.SetEventObject(&window);
            window.ProcessWindowEvent(event);
        }
    }

    fs::path folder_;
    Answers answers_;
    ProgressMakerWx progress_;
    std::unique_ptr<TankLibrary> tank_ = makeTankLibrary(
        {fs::path(KESTREL_STUB_TANK).parent_path().wstring()}, L"" KESTREL_TANK_HOST);
    frmMain* window_ = new frmMain;
    frmView* viewer_ = nullptr;
    std::size_t row_ = 0;
};

// Runs an application that does `work`.
int runApp(int count, char** words, const Job& work) {
    wxApp::SetInstance(new wxApp);
    if (!wxEntryStart(count, words)) return 1;
    wxTheApp->SetExitOnFrameDelete(false);
    wxTheApp->CallAfter(work);
    return wxTheApp->OnRun();
}

// Ends the process when something was painted and nothing is left to be done.
class EndOncePainted final : public wxEventFilter {
    int FilterEvent(wxEvent& event) override {
        if (event.GetEventType() == wxEVT_PAINT) painted_ = true;
        if (event.GetEventType() == wxEVT_IDLE && painted_) std::_Exit(0);
        return Event_Skip;
    }

    bool painted_ = false;
};

// The time until a start by this `program`, as a process that is called `name` and opens
// `file`, is painted.
void addStart(const char* what, const char* program, std::string name, std::string file) {
    const auto run = [=](benchmark::State& state) mutable {
        char* const words[] = {name.data(), file.empty() ? nullptr : file.data(), nullptr};
        pid_t child = 0;
        int status = 1;
        rusage used{};
        for (auto _ : state) {
            posix_spawn(&child, program, nullptr, nullptr, words, environ);
            wait4(child, &status, 0, &used);
        }
        if (status != 0) state.SkipWithError("a start failed");
        const auto sum = [](long user, long system) { return static_cast<double>(user + system); };
        state.counters["CPU ms"] = 1e3 * sum(used.ru_utime.tv_sec, used.ru_stime.tv_sec) +
                                   1e-3 * sum(used.ru_utime.tv_usec, used.ru_stime.tv_usec);
    };
    addSingle(what, 15, run)->UseRealTime();
}

}  // namespace
}  // namespace kestrel::bench

// The file of a start.
std::optional<std::wstring> kestrel::App::commandFile() {
    const auto words = wxTheApp->argv.GetArguments();
    return words.size() > 1 ? std::optional(words[1].ToStdWstring()) : std::nullopt;
}

// kestrel_bench_windows [OPTION...]. Called kestrel or empty it is one of the starts that it
// compares: of the program, or of an empty window.
int main(int count, char** words) {
    using namespace kestrel::bench;
    const std::string_view name = words[0];
    EndOncePainted end;
    if (name == "kestrel" || name == "empty") wxEvtHandler::AddFilter(&end);
    if (name == "kestrel") {
        wxApp::SetInstance(new kestrel::App);
        return wxEntry(count, words);
    }
    if (name == "empty") {
        return runApp(count, words, [] { (new wxFrame(nullptr, wxID_ANY, "empty"))->Show(); });
    }
    benchmark::Initialize(&count, words);
    const Folder folder;
    const fs::path file = folder.path / "small.gas";
    std::ofstream(file) << "[t:template,n:small]\r\n{\r\n\tdoc = \"Small\";\r\n}\r\n";
    addStart("a start of an empty window", words[0], "empty", "");
    addStart("a start", words[0], "kestrel", "");
    addStart("a start with a small file", words[0], "kestrel", file.string());
    return runApp(count, words, [&] {
        Windows measured(folder.path);
        wxTheApp->ExitMainLoop();
    });
}
