#include "services/progress.h"

#include <cmath>

#include "services/program.h"

namespace kestrel {

namespace {

// A step of the clean-up must not keep the next one from running.
template <class Step>
void attempt(Step step) noexcept {
    try {
        step();
    } catch (...) {
        // The failure that ended the operation is the one to report.
    }
}

}  // namespace

ProgressScope::ProgressScope(Progress* given, Owner* owner,
                             std::optional<std::wstring_view> process)
    : owner_(owner), before_(gProgram().progress), dialog_(given) {
    ProgressMaker* maker = gProgram().host.progress;
    if (given != nullptr || maker == nullptr) return;
    own_ = maker->makeProgress();
    dialog_ = own_.get();
    if (dialog_ == nullptr) return;
    gProgram().progress = dialog_;
    try {
        if (owner_ != nullptr) owner_->enable(false);
        if (process) dialog_->Process(*process);
        dialog_->SubProcess({});
        dialog_->show(owner_);
    } catch (...) {
        release();
        throw;
    }
}

ProgressScope::~ProgressScope() {
    if (own_) release();
}

void ProgressScope::release() noexcept {
    own_.reset();
    gProgram().progress = before_;
    if (owner_ == nullptr) return;
    attempt([this] { owner_->enable(true); });
    attempt([this] { owner_->focus(); });
}

void ProgressScope::process(std::wstring_view text) {
    if (dialog_ != nullptr) dialog_->Process(text);
}

void ProgressScope::show(int percentage, std::wstring_view message) {
    if (dialog_ != nullptr) dialog_->ShowProgress(percentage, message);
}

void ProgressScope::overall(std::wstring_view text) {
    if (dialog_ != nullptr) dialog_->Overall(text);
}

bool ProgressScope::goesOn() {
    if (dialog_ != nullptr) dialog_->breathe();
    return !didCancel();
}

bool ProgressScope::didCancel() const {
    return dialog_ != nullptr && dialog_->DidCancel();
}

int percentage(std::size_t index, std::size_t count) noexcept {
    if (count == 0) return 0;
    const double share = static_cast<double>(index) / static_cast<double>(count);
    return static_cast<int>(std::lrint(share * 100.0));
}

}  // namespace kestrel
