#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/gauge.h>
#include <wx/stattext.h>

#include <chrono>
#include <string>
#include <string_view>

#include "services/host.h"

namespace kestrel {

// The window "Please wait..." of a long operation. It never stops the work: the
// worker asks whether Cancel was pressed.
class frmProgress final : public wxDialog {
  public:
    explicit frmProgress(wxWindow* parent);
    ~frmProgress() override;

    // The dialog that is up; null when there is none.
    static frmProgress* current();

    void showPainted();
    // Takes the dialog away, and with it what it was told.
    void unload();
    void setProcess(std::wstring_view text);
    void setSubProcess(std::wstring_view text);
    void showProgress(int percentage, std::wstring_view message);
    // Lets events run, when the last ones are some time ago.
    void breathe();
    void setOverall(std::wstring_view text);
    void setCanCancel(bool can);
    bool didCancel() const noexcept { return didCancel_; }

    wxStaticText* lblProces;
    wxStaticText* lblSubProcess;
    wxStaticText* lblOverall;  // hidden while it says nothing
    wxGauge* prbMain;
    wxButton* cmdCommands[1];  // 0: Cancel

  private:
    using Time = std::chrono::steady_clock;

    bool isDue() const;
    void layOut();
    void forget();
    void cancel();
    void pump();

    bool canCancel_ = true;
    bool didCancel_ = false;
    bool painted_ = false;
    bool pumping_ = false;
    Time::time_point pumped_{};  // when events were let through last
};

// The dialog as the core sees it; unloads the window at the end of its life.
class ProgressWindow final : public Progress {
  public:
    ProgressWindow();
    ~ProgressWindow() override;
    ProgressWindow(const ProgressWindow&) = delete;
    ProgressWindow& operator=(const ProgressWindow&) = delete;

    void show(Owner* owner) override;
    void Process(std::wstring_view text) override { window_->setProcess(text); }
    void SubProcess(std::wstring_view text) override { window_->setSubProcess(text); }
    void ShowProgress(int percentage, std::wstring_view message) override {
        window_->showProgress(percentage, message);
    }
    void breathe() override { window_->breathe(); }
    void Overall(std::wstring_view text) override { window_->setOverall(text); }
    void CanCancel(bool can) override { window_->setCanCancel(can); }
    bool DidCancel() const override { return window_->didCancel(); }

  private:
    frmProgress* window_;
};

}  // namespace kestrel
