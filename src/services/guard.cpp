#include "services/guard.h"

#include <utility>

namespace kestrel {

KeptFailure::KeptFailure() : before_(std::exchange(gProgram().silenced, &failure_)) {}

KeptFailure::~KeptFailure() {
    gProgram().silenced = before_;
}

Silence::Silence() : messages_(std::exchange(gProgram().host.messages, nullptr)) {}

Silence::~Silence() {
    gProgram().host.messages = messages_;
}

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
        const RunTimeError error = currentError();
        std::optional<RunTimeError>* silenced = gProgram().silenced;
        if (silenced == nullptr) return reportError(error.number(), error.description());
        if (!*silenced) *silenced = error;
    } catch (...) {
        // Nothing is left to tell the user with.
    }
}

}  // namespace kestrel
