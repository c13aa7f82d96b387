#include "services/errors.h"

#include <new>
#include <stdexcept>

#include "services/bytes.h"

namespace kestrel {

namespace {

void reportHandled() {
    try {
        throw;
    } catch (const RunTimeError& error) {
        reportError(error.number(), error.description());
    } catch (const std::bad_alloc&) {
        reportError(kOutOfMemory, L"Out of memory");
    } catch (const std::length_error&) {
        // A text longer than the address space allows.
        reportError(kOutOfMemory, L"Out of memory");
    } catch (const std::exception& error) {
        reportError(kInternalError, fromUtf8(error.what()));
    } catch (...) {
        reportError(kInternalError, L"Internal error");
    }
}

}  // namespace

void reportError(int number, std::wstring_view description, std::wstring_view source) {
    const Program& program = gProgram();
    if (program.host.messages == nullptr) return;
    const std::wstring_view routine =
        program.routine.empty() ? source : std::wstring_view(program.routine);
    std::wstring text = L"Error (" + std::to_wstring(number) + L"): ";
    text.append(description).append(L" in '").append(routine).append(L"'");
    program.host.messages->tell(text, program.version.title, Icon::exclamation);
}

void reportCurrentException(std::wstring_view routine) noexcept {
    try {
        gProgram().routine = routine;
        reportHandled();
    } catch (...) {
        // Nothing is left to tell the user with.
    }
}

}  // namespace kestrel
