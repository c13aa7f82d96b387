#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "services/program.h"

namespace kestrel {

// Numbers of run-time errors, as the shared error report shows them.
enum ErrorNumber : int {
    kInvalidCall = 5,
    kOverflow = 6,
    kOutOfMemory = 7,
    kInternalError = 51,
    kFileNotFound = 53,
    kDeviceError = 57,
    kDiskFull = 61,
    kTooManyFiles = 67,
    kPermissionDenied = 70,
    kPathError = 75,
};

// A failure inside a routine. It never leaves a public routine: its guard
// reports it.
class RunTimeError : public std::exception {
  public:
    RunTimeError(int number, std::wstring description)
        : number_(number), description_(std::move(description)) {}
    int number() const noexcept { return number_; }
    const std::wstring& description() const noexcept { return description_; }
    const char* what() const noexcept override { return "run-time error"; }

  private:
    int number_;
    std::wstring description_;
};

// The exception that is being handled, as a run-time error.
RunTimeError currentError();

// Throws the RunTimeError of an operating-system error code (errno, or the
// Windows error): `action` is what failed ("Cannot write"), `path` the file. The
// system's files implement it, since the codes are the system's.
[[noreturn]] void throwSystemError(int code, std::wstring_view action, std::wstring_view path);

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
