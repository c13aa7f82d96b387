#include "support/recordinghost.h"

#include "services/errors.h"

#include <array>
#include <cstdio>

#include "services/bytes.h"

namespace kestrel::test {

namespace {

template <class Value>
std::optional<Value> next(std::deque<Value>& script) {
    if (script.empty()) return std::nullopt;
    Value value = std::move(script.front());
    script.pop_front();
    return value;
}

constexpr std::array<std::wstring_view, 4> kIcons{L"none", L"information", L"question",
                                                  L"exclamation"};
constexpr std::array<std::wstring_view, 6> kButtons{
    L"ok", L"okCancel", L"yesNo", L"yesNoCancel", L"noYes", L"openDiscardLater"};

std::wstring_view ownerName(const Owner* owner) {
    return owner == nullptr ? L"none" : L"owner";
}

}  // namespace

std::string shown(std::wstring_view text) {
    std::string result;
    for (char c : toUtf8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            result += c;
        } else if (c == '\r' || c == '\n' || c == '\t') {
            result += c == '\r' ? "\\r" : c == '\n' ? "\\n" : "\\t";
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
            result += escape;
        }
    }
    return result;
}

class RecordingProgress final : public Progress {
  public:
    explicit RecordingProgress(RecordingHost& host) : host_(host) { ++host_.liveDialogs; }
    ~RecordingProgress() override {
        --host_.liveDialogs;
        host_.write("unload", {});
    }

    void show(Owner* owner) override { host_.write("show", {ownerName(owner)}); }
    void Process(std::wstring_view text) override { host_.write("Process", {text}); }
    void SubProcess(std::wstring_view text) override { host_.write("SubProcess", {text}); }
    void ShowProgress(int percentage, std::wstring_view message) override {
        cancelled_ = cancelled_ || ++host_.progressSteps > host_.cancelAt;
        if (!host_.logsProgressSteps) return;
        host_.write("ShowProgress", {std::to_wstring(percentage), message});
    }
    void breathe() override { cancelled_ = cancelled_ || ++host_.breaths > host_.cancelAtBreath; }
    void Overall(std::wstring_view text) override { host_.write("Overall", {text}); }
    void CanCancel(bool can) override { host_.write("CanCancel", {can ? L"true" : L"false"}); }
    bool DidCancel() const override { return cancelled_; }

  private:
    RecordingHost& host_;
    bool cancelled_ = false;
};

RecordingHost::RecordingHost() {
    gProgram().host = {this, this, this, this, this, this, this};
}

std::vector<std::string> RecordingHost::logged(std::string_view start) const {
    std::vector<std::string> lines;
    for (const std::string& line : log) {
        if (line.starts_with(start)) lines.push_back(line);
    }
    return lines;
}

void RecordingHost::write(std::string_view call, std::initializer_list<std::wstring_view> values) {
    std::string line(call);
    std::string_view separator = ": ";
    for (std::wstring_view value : values) {
        line.append(separator).append(shown(value));
        separator = " | ";
    }
    log.push_back(std::move(line));
}

Answer RecordingHost::ask(std::wstring_view text, std::wstring_view title, Icon icon,
                          Buttons buttons) {
    write("ask", {text, title, kIcons[static_cast<std::size_t>(icon)],
                  kButtons[static_cast<std::size_t>(buttons)]});
    const bool plain = buttons == Buttons::ok || buttons == Buttons::okCancel;
    return next(answers).value_or(plain ? Answer::ok : Answer::yes);
}

std::optional<std::wstring> RecordingHost::prompt(std::wstring_view text, std::wstring_view title,
                                                  std::wstring_view initial) {
    write("prompt", {text, title, initial});
    return next(prompts).value_or(std::nullopt);
}

std::unique_ptr<Progress> RecordingHost::makeProgress() {
    return std::make_unique<RecordingProgress>(*this);
}

bool RecordingHost::answer(const FileQuestion& question, std::wstring& chosen) {
    write(question.save ? "save" : "open", {question.title, question.filter, question.start});
    const auto file = next(files).value_or(std::nullopt);
    if (file) chosen = *file;
    return file.has_value();
}

// A dialog that asks the same script and keeps its own choice.
class OtherDialog final : public FileDialog {
  public:
    explicit OtherDialog(RecordingHost& host) : host_(host) {}
    bool show(const FileQuestion& question) override { return host_.answer(question, chosen_); }
    std::wstring path() const override { return chosen_; }
    std::unique_ptr<FileDialog> another() const override { return host_.another(); }

  private:
    RecordingHost& host_;
    std::wstring chosen_;
};

std::unique_ptr<FileDialog> RecordingHost::another() const {
    return std::make_unique<OtherDialog>(const_cast<RecordingHost&>(*this));
}

std::optional<std::wstring> RecordingHost::chooseFolder(std::wstring_view title, Owner* owner,
                                                        std::wstring_view start) {
    write("folder", {title, ownerName(owner), start});
    return next(folders).value_or(std::nullopt);
}

void RecordingHost::perform(std::wstring_view file, std::wstring_view verb) {
    write("perform", {verb, file});
}

void RecordingHost::run(std::wstring_view commandLine, std::wstring_view configured) {
    write("run", {commandLine, configured});
    if (!missingProgram.empty() && commandLine.starts_with(missingProgram)) {
        throw RunTimeError(kFileNotFound, L"File not found");
    }
}

void RecordingHost::properties(std::wstring_view file, Owner* owner) {
    write("properties", {file, ownerName(owner)});
}

void RecordingHost::setText(std::wstring_view text) {
    write("clipboard", {text});
}

void RecordingHost::enable(bool enabled) {
    write(enabled ? "enable" : "disable", {});
}

void RecordingHost::focus() {
    write("focus", {});
}

}  // namespace kestrel::test
