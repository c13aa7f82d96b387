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

// While it lives, the first of the failures that guards catch is kept here for who tells it in
// his own way, and the others are lost.
class KeptFailure {
  public:
    KeptFailure();
    ~KeptFailure();
    KeptFailure(const KeptFailure&) = delete;
    KeptFailure& operator=(const KeptFailure&) = delete;

    const std::optional<RunTimeError>& failure() const noexcept { return failure_; }

  private:
    std::optional<RunTimeError>* before_;
    std::optional<RunTimeError> failure_;
};

// As KeptFailure; nobody is told or asked anything else either.
class Silence : public KeptFailure {
  public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    Messages* messages_;
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
