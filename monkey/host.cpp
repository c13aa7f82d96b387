#include "monkey/host.h"

#include <wx/msgdlg.h>

#include "monkey/monkey.h"
#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "support/shown.h"

namespace kestrel::test {
namespace {

// A dialog that keeps its own choice.
class OwnDialog final : public FileDialog {
  public:
    explicit OwnDialog(MonkeyHost& host) : host_(host) {}
    bool show(const FileQuestion& question) override {
        if (!host_.show(question)) return false;
        chosen_ = host_.path();
        return true;
    }
    std::wstring path() const override { return chosen_; }
    std::unique_ptr<FileDialog> another() const override { return host_.another(); }

  private:
    MonkeyHost& host_;
    std::wstring chosen_;
};

}  // namespace

MonkeyHost::MonkeyHost(Random& random, const MonkeyFiles& files)
    : random_(random),
      files_(files),
      tank_(makeTankLibrary(
          {std::wstring(folderOf(filesystem::absolutePath(fromUtf8(KESTREL_TANK))))})) {}

Host MonkeyHost::interfaces() {
    return {this, &progress_, this, this, this, this, this, tank_.get()};
}

void MonkeyHost::mayFail() {
    if (random_.oneIn(3)) throw RunTimeError(kFileNotFound, L"File not found");
}

Answer MonkeyHost::ask(std::wstring_view text, std::wstring_view title, Icon icon,
                       Buttons buttons) {
    // An exception that nobody expected is a fault, however well it is reported.
    if (text.starts_with(L"Error (51)")) fail(shown(text));
    if (random_.oneIn(4)) return messages_.ask(text, title, icon, buttons);
    static const std::vector<Answer> kAnswers[] = {{Answer::ok},
                                                   {Answer::ok, Answer::cancel},
                                                   {Answer::yes, Answer::no},
                                                   {Answer::yes, Answer::no, Answer::cancel}};
    return random_.of(kAnswers[static_cast<std::size_t>(buttons)]);
}

std::optional<std::wstring> MonkeyHost::prompt(std::wstring_view text, std::wstring_view title,
                                               std::wstring_view initial) {
    if (random_.oneIn(3)) return messages_.prompt(text, title, initial);
    if (random_.oneIn(4)) return std::nullopt;
    return files_.text(random_);
}

bool MonkeyHost::show(const FileQuestion& question) {
    if (random_.oneIn(5)) return false;
    if (question.filter.find(L"Zeltor.exe") != std::wstring::npos) {
        chosen_ = L"" KESTREL_STUB_BUILDER;
    } else if (question.save) {
        chosen_ = files_.target(random_);
    } else if (question.filter.find(L"*.ds") != std::wstring::npos) {
        chosen_ = files_.archive(random_);
    } else {
        chosen_ = files_.source(random_);
    }
    return true;
}

std::unique_ptr<FileDialog> MonkeyHost::another() const {
    return std::make_unique<OwnDialog>(const_cast<MonkeyHost&>(*this));
}

std::optional<std::wstring> MonkeyHost::chooseFolder(std::wstring_view, Owner*) {
    if (random_.oneIn(5)) return std::nullopt;
    return files_.folder();
}

void MonkeyHost::setText(std::wstring_view text) {
    mayFail();
    clipboard_.setText(text);
}

int OpenDialogs::Enter(wxDialog* dialog) {
    const auto* box = dynamic_cast<wxMessageDialog*>(dialog);
    if (box == nullptr) {
        open_.push_back(dialog);
        return wxID_NONE;
    }
    std::vector<int> answers;
    const long style = box->GetMessageDialogStyle();
    if (style & wxYES) answers = {wxID_YES, wxID_NO};
    if (style & wxOK) answers.push_back(wxID_OK);
    if (style & wxCANCEL) answers.push_back(wxID_CANCEL);
    return random_.of(answers);
}

void OpenDialogs::Exit(wxDialog* dialog) {
    if (open_.empty() || open_.back() != dialog) fail("a dialog ended that is not in front");
    open_.pop_back();
}

}  // namespace kestrel::test
