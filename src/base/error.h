#pragma once

#include <exception>
#include <string>
#include <utility>

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

}  // namespace kestrel
