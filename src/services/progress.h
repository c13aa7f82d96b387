#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "services/host.h"

namespace kestrel {

// The progress dialog of one long operation: the caller's own, or one made here
// when the caller has none. One made here is shown with `process` as its text
// (with nothing, it keeps the text that it was made with) while `owner` (may be
// null) is disabled and the program's progress flag is set; the end of the scope
// unloads it, sets the flag back to what it was, and enables and focuses the
// owner, on every path out. The caller's own is left as it is.
class ProgressScope {
  public:
    ProgressScope(Progress* given, Owner* owner, std::optional<std::wstring_view> process);
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    // The dialog; null when the host cannot make one.
    Progress* dialog() const noexcept { return dialog_; }
    void process(std::wstring_view text);
    void show(int percentage, std::wstring_view message);
    void overall(std::wstring_view text);
    // Between two items: lets events run. False once the dialog was cancelled.
    bool goesOn();
    bool didCancel() const;

  private:
    void release() noexcept;

    Owner* owner_;
    Progress* before_;
    std::unique_ptr<Progress> own_;
    Progress* dialog_;
};

// `index` / `count` as a whole percentage; halves go to the even neighbour.
int percentage(std::size_t index, std::size_t count) noexcept;

}  // namespace kestrel
