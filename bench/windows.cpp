// How long the windows keep a user waiting, beside the least that could be done.

#include <benchmark/benchmark.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "gas/load.h"
#include "services/program.h"
#include "starts.h"
#include "ui/common/strings.h"
#include "ui/frmMain/frmMain.h"
#include "ui/frmView/frmView.h"
#include "ui/frmZeltor/frmZeltor.h"
#include "ui/host/host_wx.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;
using Job = std::function<void()>;
using Steady = std::chrono::steady_clock;

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

std::string templates(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        const std::string id = std::to_string(i * 7919LL % count);
        text += "[t:template,n:thing_" + id + "]\r\n{\r\n\tdoc = \"Thing " + id +
                "\";\r\n\tspecializes = \"base\";\r\n\t[look]\r\n\t{\r\n\t\tmodel = m_" + id +
                ";\r\n\t}\r\n}\r\n";
    }
    return text;
}

// One template with `count` properties in a hundred blocks.
std::string properties(int count) {
    std::string text = "[t:template,n:wide]\r\n{\r\n";
    for (int i = 0; i < count; ++i) {
        if (i % (count / 100) == 0) {
            text += (i == 0 ? "[block" : "}\r\n[block") + std::to_string(i) + "]\r\n{\r\n";
        }
        text +=
            "property_" + std::to_string(i * 7919LL % count) + " = " + std::to_string(i) + ";\r\n";
    }
    return text + "}\r\n}\r\n";
}

class Windows {
  public:
    Windows() : folder_(fs::temp_directory_path() / "kestrel-bench-windows") {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        gProgram().folder = folder_.wstring();
        host_.interfaces();
        gProgram().host.clipboard = &host_.clipboard;
        gProgram().host.messages = &answers_;
        window_ = new frmMain;
        window_->Show();
        settle();
    }
    ~Windows() {
        window_->Destroy();
        settle();
        fs::remove_all(folder_);
    }

    // In the order in which they run: each finds what the ones before have opened.
    void addAll() {
        const std::wstring large = put("large.gas", templates(95'000));
        const std::wstring huge = put("huge.gas", templates(1'000'000));
        const std::wstring wide = put("wide.gas", properties(100'000));
        add("loading a 10 MB file alone", [large] {
            std::wstring path = large;
            std::vector<GasTemplate> records;
            gblnLoadGas(path, records, nullptr);
        });
        add("opening 1,000,000 templates", [this, huge] { window_->openFile(huge); });
        add("opening the 10 MB file", [this, large] { window_->openFile(large); });
        add("selecting one of its templates", [this] { select(*window_->lvwTemplates); });
        answers_.text = L"nowhere to be found";
        add("finding no template", [this] { window_->findTemplateName(); });
        add(
            "a viewer on its text", [this] { view(); }, [this] { close(); });
        add("finding nothing in the viewer", [this] { viewer_->txtView->find(answers_.text); });
        add("a letter typed there", [this] { viewer_->txtView->AddText("x"); });
        add(
            "selecting a template of 100,000 properties",
            [this] { window_->lvwTemplates->onSelect(); },
            [this, wide] {
                close();
                if (window_->document().path != wide) window_->openFile(wide);
            });
        for (const bool filters : {true, false}) {
            add(
                filters ? "a click on its tree, which filters" : "a click on its tree",
                [this] { nextNode(); }, [this, filters] { window_->chkTree->SetValue(filters); });
        }
        add("finding no property", [this] { window_->findPropertyName(); });
        add("selecting one of its properties", [this] { select(*window_->lvwProperties); });
        benchmark::RegisterBenchmark("a builder that writes all it can",
                                     [this](auto& state) {
                                         for (auto _ : state) runBuilder(state);
                                     })
            ->Iterations(1)
            ->Repetitions(1)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }

  private:
    class Answers final : public Messages {
      public:
        Answer ask(std::wstring_view, std::wstring_view, Icon, Buttons) override {
            return Answer::ok;
        }
        std::optional<std::wstring> prompt(std::wstring_view, std::wstring_view,
                                           std::wstring_view) override {
            return text;
        }
        std::wstring text;
    };

    std::wstring put(const char* name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return (folder_ / name).wstring();
    }

    // The CPU time of `job` until everything is painted; `before` is not timed.
    static void add(const char* name, Job job, Job before = {}) {
        benchmark::RegisterBenchmark(name,
                                     [job, before](benchmark::State& state) {
                                         for (auto _ : state) {
                                             state.PauseTiming();
                                             if (before) before();
                                             settle();
                                             state.ResumeTiming();
                                             job();
                                             settle();
                                         }
                                     })
            ->Iterations(1)
            ->Repetitions(7)
            ->Unit(benchmark::kMillisecond)
            ->ComputeStatistics("longest", [](const std::vector<double>& times) {
                return *std::max_element(times.begin(), times.end());
            });
    }

    void view() {
        std::wstring text;
        for (const GasTemplate& record : window_->document().templates) text += record.Text.wide();
        viewer_ = new frmView(window_, {});
        viewer_->TextBlock(text);
        viewer_->Show();
    }

    // The longest that the windows were not asked for anything new while a builder writes
    // as fast as it can, and how long its log takes to close while it writes nothing.
    void runBuilder(benchmark::State& state) {
        gProgram().settings.zeltor = L"" KESTREL_STUB_BUILDER;
        const double flood = build("flood", [this] { return !builder_.running(); });
        state.counters["MB/s"] = static_cast<double>(logged_) * 1e-3 / flood;
        state.counters["longest pause, ms"] = longest_;
        build("wait", [this] { return logged_ > 0; });
        state.counters["closing a silent log, ms"] = closing_;
        std::ofstream(folder_ / "out.dsres.go") << "go";
        while (builder_.running()) settle();
    }

    // The milliseconds until `done`, from the click on; its log is then closed.
    double build(const char* part, const std::function<bool()>& done) {
        frmZeltor dialog(window_, builder_, {});
        dialog.cboSourceFolder->SetValue(toWx(folder_.wstring()));
        dialog.cboTarget->SetValue(toWx((folder_ / "out.dsres").wstring()));
        dialog.txtTitle->SetValue(part);
        dialog.txtBuild->SetValue("100");
        dialog.Show();
        settle();
        const auto begin = Steady::now();
        double took = 0;
        Steady::time_point last = begin;
        Steady::time_point escape;
        wxTimer timer;
        timer.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
            longest_ = std::max(longest_, since(last));
            last = Steady::now();
            auto* log = dynamic_cast<frmView*>(wxTopLevelWindows.GetLast()->GetData());
            if (log == nullptr) return;
            logged_ = static_cast<std::size_t>(log->txtView->GetLength());
            if (!done()) return;
            timer.Stop();
            took = since(begin);
            escape = Steady::now();
            pressEscape(*log->txtView);
        });
        logged_ = 0;
        longest_ = 0;
        timer.Start(1);
        wxButton& create = *dialog.cmdCommands[frmZeltor::kCreate];
        wxCommandEvent press(wxEVT_BUTTON, create.GetId());
        create.ProcessWindowEvent(press);
        closing_ = since(escape);
        return took;
    }

    static double since(Steady::time_point begin) {
        return std::chrono::duration<double, std::milli>(Steady::now() - begin).count();
    }

    static void pressEscape(wxWindow& window) {
        for (const wxEventType type : {wxEVT_CHAR_HOOK, wxEVT_KEY_DOWN, wxEVT_KEY_UP}) {
            wxKeyEvent event(type);
            event.m_keyCode = WXK_ESCAPE;
            event.SetEventObject(&window);
            window.ProcessWindowEvent(event);
        }
    }

    void select(ReportList& list) {
        row_ = (row_ + 37'441) % list.rows().size();
        list.selectRow(row_);
    }

    void nextNode() {
        NodeTree& tree = *window_->tvwInfo;
        tree.select(tree.selected().value_or(0) % 100 + 1);
        tree.onSelect();
    }

    void close() {
        if (viewer_ != nullptr) viewer_->Destroy();
        viewer_ = nullptr;
        settle();
    }

    fs::path folder_;
    HostWx host_;
    Answers answers_;
    frmMain* window_;
    frmView* viewer_ = nullptr;
    TimedLauncher builder_;
    std::size_t logged_ = 0;  // characters
    double closing_ = 0;      // milliseconds
    double longest_ = 0;      // of the pauses, too
    std::size_t row_ = 0;
};

class BenchApp final : public wxApp {
  public:
    bool OnInit() override {
        SetExitOnFrameDelete(false);
        CallAfter([this] {
            Windows windows;
            windows.addAll();
            benchmark::RunSpecifiedBenchmarks();
            ExitMainLoop();
        });
        return true;
    }
};

}  // namespace
}  // namespace kestrel::bench

// kestrel_bench_windows [OPTION...]; with "start WHO [FILE]" it is one of the starts that it
// compares.
int main(int count, char** words) {
    using namespace kestrel::bench;
    if (count > 2 && std::string(words[1]) == "start") {
        const std::string who = words[2];
        std::rotate(words + 1, words + 3, words + count);
        return startAs(who, count - 2, words);
    }
    benchmark::Initialize(&count, words);
    addStarts(words[0]);
    wxApp::SetInstance(new BenchApp);
    return wxEntry(count, words);
}
