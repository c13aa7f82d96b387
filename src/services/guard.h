#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/error.h"
#include "services/program.h"

namespace kestrel {

// The shared error report: a message box with the exclamation icon and the
// application's title that reads "Error (number): description in 'routine'",
// where the routine is the current routine name, or `source` when that is empty.
void reportError(int number, std::wstring_view description, std::wstring_view source = L"Kestrel");

// Reports the exception that is being handled as a failure of `routine`.
void reportCurrentException(std::wstring_view routine) noexcept;

// While it lives, nobody is told of anything: of the failures that guards catch the first is
// kept here for who tells them in his own way, and other messages are lost.
class Silence {
  public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    const std::optional<RunTimeError>& failure() const noexcept { return failure_; }

  private:
    Messages* messages_;
    std::optional<RunTimeError>* before_;
    std::optional<RunTimeError> failure_;
};

// The guard of a public routine: records `routine` as the current routine name
// and runs `body`. Whatever body throws is reported once, and the result is
// then a default one (empty text, false, 0).
template <class Body>
auto guarded(std::wstring_view routine, Body&& body) -> std::invoke_result_t<Body> {
    using Result = std::invoke_result_t<Body>;
    gProgram().routine = routine;
    try {
        return body();
    } catch (...) {
        reportCurrentException(routine);
    }
    if constexpr (!std::is_void_v<Result>) return Result{};
}

}  // namespace kestrel
