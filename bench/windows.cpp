// How long the windows keep a user waiting, beside the least that could be done.

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
#include <utility>
#include <vector>

#include "gas/load.h"
#include "measure.h"
#include "services/program.h"
#include "starts.h"
#include "table.h"
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

constexpr int kRuns = 7;

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

    std::string run() {
        const std::wstring large = put("large.gas", templates(95'000));
        const std::wstring wide = put("wide.gas", properties(100'000));
        openLarge(large);
        row("selecting one of its templates", time([&] { select(*window_->lvwTemplates); }), "100");
        search();
        viewLarge();
        browseWide(wide);
        runBuilder();
        return markdown(rows_);
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

    // The median of the CPU milliseconds, until everything is painted, of `job`; `before` is not
    // timed.
    double time(const Job& job, const Job& before = {}) const {
        std::vector<double> times;
        for (int run = 0; run < kRuns; ++run) {
            if (before) before();
            settle();
            const double start = cpuSeconds();
            job();
            settle();
            times.push_back(1000 * (cpuSeconds() - start));
        }
        longest_ = *std::max_element(times.begin(), times.end());
        return median(times);
    }

    void row(const std::string& name, double milliseconds, const std::string& goal) {
        rows_.push_back({name, fixed(milliseconds, 1), fixed(longest_, 1), goal});
    }

    void openLarge(const std::wstring& large) {
        std::vector<GasTemplate> records;
        const double load = time([&] {
            std::wstring path = large;
            gblnLoadGas(path, records, nullptr);
        });
        row("loading a 10 MB file alone", load, "");
        records = {};
        const double open = time([&] { window_->openFile(large); });
        row("opening it, until it is painted (" + fixed(open / load, 2) + " times the load)", open,
            "2.5 times, 1 s");
    }

    void search() {
        answers_.text = L"nowhere to be found";
        row("finding no template", time([&] { window_->findTemplateName(); }), "100");
    }

    void viewLarge() {
        std::wstring text;
        for (const GasTemplate& record : window_->document().templates) text += record.Text;
        const double time_ = time(
            [&] {
                viewer_ = new frmView(window_, {});
                viewer_->TextBlock(text);
                viewer_->Show();
            },
            [&] { close(); });
        row("a viewer on its text", time_, "1 s");
        answers_.text = L"nowhere to be found";
        row("finding nothing in the viewer",
            time([&] { viewer_->txtView->find(L"nowhere to be found"); }), "100");
        row("a letter typed there", time([&] { viewer_->txtView->AddText("x"); }), "100");
        close();
    }

    void browseWide(const std::wstring& wide) {
        window_->openFile(wide);
        row("selecting a template of 100,000 properties",
            time([&] { window_->lvwTemplates->onSelect(); }), "100");
        window_->chkTree->SetValue(true);
        row("a click on its tree, which filters", time([&] { nextNode(); }), "50");
        window_->chkTree->SetValue(false);
        row("a click on its tree, without filter", time([&] { nextNode(); }), "50");
        row("finding no property", time([&] { window_->findPropertyName(); }), "100");
        row("selecting one of its properties", time([&] { select(*window_->lvwProperties); }),
            "100");
    }

    // The longest that the windows were not asked for anything new while a builder writes
    // as fast as it can, and how long its log takes to close while it writes nothing.
    void runBuilder() {
        gProgram().settings.zeltor = L"" KESTREL_STUB_BUILDER;
        longest_ = 0;
        const double flood = build("flood", [this] { return !builder_.running(); });
        const auto megabytes = static_cast<double>(logged_) / 1e6;
        row("the log of a builder that writes all it can, " + fixed(megabytes, 0) + " MB at " +
                fixed(1e3 * megabytes / flood, 0) + " MB/s",
            flood, "20 MB/s");
        row("the longest pause of it", longest_, "100");
        build("wait", [this] { return logged_ > 0; });
        longest_ = closing_;
        row("closing the log of a silent builder by Esc", closing_, "200");
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
    std::size_t row_ = 0;
    mutable double longest_ = 0;
    std::vector<std::vector<std::string>> rows_{{"What", "CPU ms", "longest", "goal, ms"}};
};

class BenchApp final : public wxApp {
  public:
    bool OnInit() override {
        SetExitOnFrameDelete(false);
        CallAfter([this] {
            std::fputs(Windows().run().c_str(), stdout);
            ExitMainLoop();
        });
        return true;
    }
};

}  // namespace
}  // namespace kestrel::bench

// kestrel_bench_windows: the tables.
// kestrel_bench_windows start WHO [FILE]: one of the starts that it compares.
int main(int count, char** words) {
    using namespace kestrel::bench;
    if (count > 2) {
        const std::string who = words[2];
        std::rotate(words + 1, words + 3, words + count);
        return startAs(who, count - 2, words);
    }
    std::puts(startsTable(words[0]).c_str());
    wxApp::SetInstance(new BenchApp);
    return wxEntry(count, words);
}
