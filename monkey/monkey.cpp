#include "monkey/monkey.h"

#include <wx/app.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "monkey/memory.h"
#include "ui/frmProgress/frmProgress.h"

namespace kestrel::test {
namespace {

constexpr int kRestEvery = 250;  // steps
constexpr std::size_t kTold = 40;
// The first part of a run fills caches and histories.
constexpr int kWarmUp = 2'000;
constexpr std::size_t kMostGrowth = 1'000'000;  // bytes

Monkey*& running() {
    static Monkey* monkey = nullptr;
    return monkey;
}

}  // namespace

void fail(const std::string& text) {
    const std::string story = running() == nullptr ? "" : running()->story();
    std::fprintf(stderr, "FAILED: %s\n%s\n", text.c_str(), story.c_str());
    std::fflush(nullptr);
    std::_Exit(1);
}

Monkey::Monkey(int steps, std::uint64_t seed, bool tells)
    : steps_(steps),
      seed_(seed),
      tells_(tells),
      random_(seed),
      host_(random_, files_),
      dialogs_(random_),
      nextRest_(kRestEvery) {
    running() = this;
    gProgram().folder = files_.profile();
    gProgram().settings.zeltor = L"" KESTREL_STUB_BUILDER;
    gProgram().host = host_.interfaces();
    // Names that are typed without a folder stay among the files.
    std::filesystem::current_path(files_.folder());
    dialogs_.Register();
}

Monkey::~Monkey() {
    dialogs_.Unregister();
    running() = nullptr;
    gProgram().host = {};
}

void Monkey::start() {
    wxTheApp->Bind(wxEVT_IDLE, [this](wxIdleEvent& event) {
        event.Skip();
        if (!IsRunning()) StartOnce(1);
    });
    openMain(files_.source(random_));
}

void Monkey::openMain(const std::wstring& file) {
    auto* window = new frmMain;
    main_ = window;
    wxTheApp->SetTopWindow(window);
    window->Show();
    window->start(file);
    // The settings that were just read may name anything.
    gProgram().settings.zeltor = random_.oneIn(8) ? L"" : L"" KESTREL_STUB_BUILDER;
}

void Monkey::note(const std::string& text) {
    last_.push_back(std::to_string(step_) + " " + text);
    if (last_.size() > kTold) last_.pop_front();
    if (tells_) std::fprintf(stderr, "%s\n", last_.back().c_str());
}

std::string Monkey::story() const {
    std::string text = "seed " + std::to_string(seed_) + ", step " + std::to_string(step_) + "\n";
    for (const std::string& line : last_) text += "  " + line + "\n";
    return text;
}

wxTopLevelWindow* Monkey::front() const {
    return dialogs_.top() != nullptr ? static_cast<wxTopLevelWindow*>(dialogs_.top()) : main_.get();
}

// What a handler throws ends where the toolkit ends it, not in the loops below.
void Monkey::Notify() {
    try {
        step();
    } catch (...) {
        wxTheApp->OnExceptionInMainLoop();
    }
    wxWakeUpIdle();
}

void Monkey::step() {
    check();
    deepest_ = std::max(deepest_, dialogs_.count());
    if (phase_ != Phase::playing) return rest();
    ++step_;
    if (step_ >= steps_) {
        phase_ = Phase::ending;
    } else if (step_ >= nextRest_) {
        nextRest_ += kRestEvery;
        phase_ = Phase::resting;
    } else {
        play();
    }
}

void Monkey::play() {
    if (!main_) return openMain(random_.oneIn(2) ? files_.source(random_) : std::wstring());
    if (frmProgress::current() != nullptr) return actInProgress();
    wxTopLevelWindow* const window = front();
    // Nobody reaches a window that has been closed.
    if (wxPendingDelete.Member(window)) return;
    dialogs_.top() == nullptr ? actInMain() : actInDialog(*window);
}

bool Monkey::cleared() {
    if (frmProgress::current() != nullptr) return false;
    if (wxDialog* dialog = dialogs_.top()) {
        dialog->Close(true);
        return false;
    }
    if (main_) main_->Close(true);
    return wxTopLevelWindows.empty();
}

// From time to time the program stands as at its start, so that its memory can be
// compared.
void Monkey::rest() {
    constexpr int kSettle = 10;  // steps, for what windows do late
    constexpr int kPatience = 3'000;
    if (settling_ == 0 && !cleared()) {
        if (++waiting_ > kPatience) fail("the windows do not close");
        return;
    }
    waiting_ = 0;
    if (phase_ == Phase::ending) {
        Stop();
        checkMemory();
        return wxTheApp->ExitMainLoop();
    }
    if (settling_++ == 0) return openMain(files_.folder() + L"/single.gas");
    if (settling_ < kSettle) return;
    settling_ = 0;
    samples_.push_back({step_, heapBytes(), residentBytes()});
    if (filesAtFirst_ == 0) filesAtFirst_ = openFiles();
    // A builder that still runs holds the ends of its pipes.
    if (openFiles() > filesAtFirst_ + 8) fail("files are left open");
    phase_ = Phase::playing;
}

namespace {

std::size_t middle(std::vector<std::size_t> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

}  // namespace

// Compares the first half of what was sampled after the warm-up with the second.
void Monkey::checkMemory() const {
    std::vector<std::size_t> heap[2];
    const int half = kWarmUp + (steps_ - kWarmUp) / 2;
    for (const Sample& sample : samples_) {
        if (sample.step >= kWarmUp) heap[sample.step >= half].push_back(sample.heap);
    }
    if (heap[0].size() < 3 || heap[1].size() < 3) return;
    if (middle(heap[1]) > middle(heap[0]) + kMostGrowth) fail("memory grows\n" + summary());
}

std::string Monkey::summary() const {
    std::string text = std::to_string(step_) + " steps, seed " + std::to_string(seed_) +
                       ", dialogs up to " + std::to_string(deepest_) + " deep\n";
    for (const Sample& sample : samples_) {
        if (sample.step % (4 * kRestEvery) != 0) continue;
        text += "  step " + std::to_string(sample.step) + ": heap " +
                std::to_string(sample.heap / 1000) + " kB, resident " +
                std::to_string(sample.resident / 1000) + " kB\n";
    }
    return text;
}

}  // namespace kestrel::test
