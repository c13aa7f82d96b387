#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "services/host.h"
#include "services/program.h"
#include "support/shown.h"

namespace kestrel::test {

// A fresh program record whose host is this object, for its lifetime. It
// answers from scripts and writes each call into `log`, one line a call.
class RecordingHost final : public Messages,
                            public ProgressMaker,
                            public FileDialog,
                            public FolderPicker,
                            public Shell,
                            public Clipboard,
                            public Clock,
                            public Owner {
  public:
    RecordingHost();

    std::vector<std::string> log;

    // Scripts: each call takes the first element. Without one ask() agrees (OK,
    // or Yes), and all others are cancelled.
    std::deque<Answer> answers;
    std::deque<std::optional<std::wstring>> prompts;
    std::deque<std::optional<std::wstring>> files;
    std::deque<std::optional<std::wstring>> folders;

    // The progress dialog reads as cancelled from this ShowProgress call on.
    std::size_t cancelAt = static_cast<std::size_t>(-1);
    std::size_t cancelAtBreath = static_cast<std::size_t>(-1);  // as above, of breathe()
    std::size_t breaths = 0;
    bool logsProgressSteps = false;  // the ShowProgress calls too
    std::size_t progressSteps = 0;
    std::size_t liveDialogs = 0;

    std::wstring missingProgram;  // is not found, and cannot be run

    std::wstring time = L"10:20:30";
    std::wstring date = L"Friday, 1 March 2002";

    // The lines of the log that begin with `start`.
    std::vector<std::string> logged(std::string_view start) const;

    Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
               Buttons buttons) override;
    std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                       std::wstring_view initial) override;
    std::unique_ptr<Progress> makeProgress() override;
    bool show(const FileQuestion& question) override { return answer(question, chosen_); }
    std::wstring path() const override { return chosen_; }
    std::unique_ptr<FileDialog> another() const override;
    std::optional<std::wstring> chooseFolder(std::wstring_view title, Owner* owner,
                                             std::wstring_view start) override;
    void perform(std::wstring_view file, std::wstring_view verb) override;
    void properties(std::wstring_view path, Owner* owner) override;
    void run(std::wstring_view commandLine, std::wstring_view configured) override;
    bool finds(std::wstring_view name) const override { return name != missingProgram; }
    void setText(std::wstring_view text) override;
    std::wstring longTime() const override { return time; }
    std::wstring longDate() const override { return date; }
    void enable(bool enabled) override;
    void focus() override;

    // Logs the question and takes the next element of `files`; false, and `chosen`
    // as it was, when that is a cancel.
    bool answer(const FileQuestion& question, std::wstring& chosen);

  private:
    void write(std::string_view call, std::initializer_list<std::wstring_view> values);

    ProgramScope program_;
    std::wstring chosen_;
    friend class RecordingProgress;
};

}  // namespace kestrel::test
