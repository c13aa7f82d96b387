#pragma once

#include <wx/modalhook.h>

#include <vector>

#include "monkey/files.h"
#include "ui/common/host_wx.h"

namespace kestrel::test {

// A host whose questions are answered at random, some of them by windows of the
// toolkit. What it starts or opens outside the program does nothing, or fails.
class MonkeyHost final : public Messages,
                         public FileDialog,
                         public FolderPicker,
                         public Shell,
                         public Clipboard,
                         public Clock {
  public:
    MonkeyHost(Random& random, const MonkeyFiles& files);

    Host interfaces();

    Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
               Buttons buttons) override;
    std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                       std::wstring_view initial) override;
    bool show(const FileQuestion& question) override;
    std::wstring path() const override { return chosen_; }
    std::unique_ptr<FileDialog> another() const override;
    std::optional<std::wstring> chooseFolder(std::wstring_view title, Owner* owner) override;
    void perform(std::wstring_view, std::wstring_view) override { mayFail(); }
    void run(std::wstring_view, std::wstring_view) override { mayFail(); }
    bool finds(std::wstring_view) const override { return random_.oneIn(2); }
    void properties(std::wstring_view, Owner*) override { mayFail(); }
    void setText(std::wstring_view text) override;
    std::wstring longTime() const override { return L"10:20:30"; }
    std::wstring longDate() const override { return L"Friday, 1 March 2002"; }

  private:
    void mayFail();

    Random& random_;
    const MonkeyFiles& files_;
    MessagesWx messages_;
    ProgressMakerWx progress_;
    ClipboardWx clipboard_;
    std::unique_ptr<TankLibrary> tank_;
    std::wstring chosen_;
};

// The modal dialogs that are open. Those that the system draws are answered at
// random instead.
class OpenDialogs final : public wxModalDialogHook {
  public:
    explicit OpenDialogs(Random& random) : random_(random) {}

    // The one in front; null when there is none.
    wxDialog* top() const { return open_.empty() ? nullptr : open_.back(); }
    std::size_t count() const noexcept { return open_.size(); }

  protected:
    int Enter(wxDialog* dialog) override;
    void Exit(wxDialog* dialog) override;

  private:
    Random& random_;
    std::vector<wxDialog*> open_;
};

}  // namespace kestrel::test
