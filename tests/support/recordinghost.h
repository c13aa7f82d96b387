#pragma once

#include <chrono>
#include <deque>

#include "services/program.h"
#include "support/shown.h"

namespace kestrel::test {

using Lines = std::vector<std::string>;

// A fresh program record whose host is this object, for its lifetime. It
// answers from scripts and writes each call into `log`, one line a call.
class RecordingHost final : public Messages,
                            public ProgressMaker,
                            public FolderPicker,
                            public Shell,
                            public Clipboard,
                            public Clock,
                            public Owner {
  public:
    RecordingHost() { gProgram().host = {this, this, &files_, this, this, this, this}; }

    Lines log;

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
    std::chrono::steady_clock::time_point cancelledAt;  // of the last that was
    bool logsProgressSteps = false;                     // the ShowProgress calls too
    std::size_t progressSteps = 0;
    std::size_t liveDialogs = 0;

    std::wstring missingProgram;  // is not found, and cannot be run

    // The lines of the log that begin with `start`.
    Lines logged(std::string_view start) const {
        Lines lines = log;
        std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(start); });
        return lines;
    }

    Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
               Buttons buttons) override {
        constexpr std::wstring_view kIcons[] = {L"none", L"information", L"question",
                                                L"exclamation"};
        constexpr std::wstring_view kButtons[] = {
            L"ok",    L"okCancel",         L"yesNo",          L"yesNoCancel",
            L"noYes", L"openDiscardLater", L"leaveStopCancel"};
        write("ask", {text, title, kIcons[static_cast<std::size_t>(icon)],
                      kButtons[static_cast<std::size_t>(buttons)]});
        const bool plain = buttons == Buttons::ok || buttons == Buttons::okCancel;
        return next(answers, plain ? Answer::ok : Answer::yes);
    }
    std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                       std::wstring_view initial) override {
        write("prompt", {text, title, initial});
        return next(prompts, {});
    }
    std::unique_ptr<Progress> makeProgress() override { return std::make_unique<Dialog>(*this); }
    std::optional<std::wstring> chooseFolder(std::wstring_view title, Owner* owner,
                                             std::wstring_view start) override {
        write("folder", {title, nameOf(owner), start});
        return next(folders, {});
    }
    void perform(std::wstring_view file, std::wstring_view verb) override {
        write("perform", {verb, file});
    }
    void properties(std::wstring_view path, Owner* owner) override {
        write("properties", {path, nameOf(owner)});
    }
    void run(std::wstring_view commandLine, std::wstring_view configured) override {
        write("run", {commandLine, configured});
        if (!missingProgram.empty() && commandLine.starts_with(missingProgram)) {
            throw RunTimeError(kFileNotFound, L"File not found");
        }
    }
    bool finds(std::wstring_view name) const override { return name != missingProgram; }
    void setText(std::wstring_view text) override { write("clipboard", {text}); }
    std::wstring longTime() const override { return L"10:20:30"; }
    std::wstring longDate() const override { return L"Friday, 1 March 2002"; }
    void enable(bool enabled) override { write(enabled ? "enable" : "disable"); }
    void focus() override { write("focus"); }

  private:
    class Dialog final : public Progress {
      public:
        explicit Dialog(RecordingHost& host) : host_(host) { ++host_.liveDialogs; }
        ~Dialog() override {
            --host_.liveDialogs;
            host_.write("unload");
        }

        void show(Owner* owner) override { host_.write("show", {nameOf(owner)}); }
        void Process(std::wstring_view text) override { host_.write("Process", {text}); }
        void SubProcess(std::wstring_view text) override { host_.write("SubProcess", {text}); }
        void ShowProgress(int percentage, std::wstring_view message) override {
            cancelled_ = cancelled_ || ++host_.progressSteps > host_.cancelAt;
            if (!host_.logsProgressSteps) return;
            host_.write("ShowProgress", {std::to_wstring(percentage), message});
        }
        void breathe() override {
            if (cancelled_ || ++host_.breaths <= host_.cancelAtBreath) return;
            cancelled_ = true;
            host_.cancelledAt = std::chrono::steady_clock::now();
        }
        void Overall(std::wstring_view text) override { host_.write("Overall", {text}); }
        void CanCancel(bool can) override { host_.write("CanCancel", {can ? L"true" : L"false"}); }
        bool DidCancel() const override { return cancelled_; }

      private:
        RecordingHost& host_;
        bool cancelled_ = false;
    };

    // Its others ask the same script, and keep their own choice.
    class Files final : public FileDialog {
      public:
        explicit Files(RecordingHost& host) : host_(host) {}
        bool show(const FileQuestion& question) override {
            host_.write(question.save ? "save" : "open",
                        {question.title, question.filter, question.start});
            const auto file = next(host_.files, {});
            chosen_ = file.value_or(chosen_);
            return file.has_value();
        }
        std::wstring path() const override { return chosen_; }
        std::unique_ptr<FileDialog> another() const override {
            return std::make_unique<Files>(host_);
        }

      private:
        RecordingHost& host_;
        std::wstring chosen_;
    };

    template <class Value>
    static Value next(std::deque<Value>& script, Value otherwise) {
        if (script.empty()) return otherwise;
        otherwise = std::move(script.front());
        script.pop_front();
        return otherwise;
    }

    static std::wstring_view nameOf(const Owner* owner) {
        return owner == nullptr ? L"none" : L"owner";
    }

    void write(std::string line, std::initializer_list<std::wstring_view> values = {}) {
        const char* separator = ": ";
        for (const std::wstring_view value : values) {
            line.append(std::exchange(separator, " | ")).append(shown(value));
        }
        log.push_back(std::move(line));
    }

    ProgramScope program_;
    Files files_{*this};
};

}  // namespace kestrel::test
