#include "services/program.h"

#include <cstdlib>

#include "base/bytes.h"
#include "services/version.h"

namespace kestrel {

namespace {

Program*& current() {
    static Program first;
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the only one.
    static Program* program = &first;
    return program;
}

}  // namespace

Version Program::defaultVersion() {
    return {L"Kestrel Template Browser", L"Kestrel", KESTREL_VERSION_MAJOR, KESTREL_VERSION_MINOR,
            KESTREL_VERSION_REVISION};
}

Program& gProgram() {
    return *current();
}

ProgramScope::ProgramScope() : before_(current()) {
    current() = &fresh_;
}

ProgramScope::~ProgramScope() {
    current() = before_;
}

void tellUser(std::wstring_view text, Icon icon) {
    const Program& program = gProgram();
    if (program.host.messages == nullptr) return;
    program.host.messages->tell(text, program.version.fileDescription, icon);
}

std::wstring promptUser(std::wstring_view text, std::wstring_view title,
                        std::wstring_view initial) {
    Messages* messages = gProgram().host.messages;
    if (messages == nullptr) return {};
    return messages->prompt(text, title, initial).value_or(std::wstring());
}

Answer askUser(std::wstring_view text, Icon icon, Buttons buttons) {
    const Program& program = gProgram();
    if (program.host.messages != nullptr) {
        return program.host.messages->ask(text, program.version.fileDescription, icon, buttons);
    }
    if (buttons == Buttons::ok) return Answer::ok;
    const bool yesOrNo = buttons == Buttons::yesNo || buttons == Buttons::noYes;
    return yesOrNo ? Answer::no : Answer::cancel;
}

std::wstring useCodePage(std::wstring_view number) {
    std::wstring known;
    for (const unsigned one : CodePage::kNumbers) {
        const std::wstring name = std::to_wstring(one);
        if (name == number) {
            gProgram().codePage = gProgram().sourcePage = CodePage::find(one);
            return {};
        }
        known.append(known.empty() ? L"" : L", ").append(name);
    }
    return L"There is no code page \"" + std::wstring(number) + L"\"; there are " + known;
}

std::wstring settleCodePage() {
    const char* number = std::getenv("KESTREL_CODEPAGE");
    if (number == nullptr || *number == '\0') return {};
    const std::wstring problem = useCodePage(fromUtf8(number));
    return problem.empty() ? problem : L"KESTREL_CODEPAGE: " + problem;
}

}  // namespace kestrel
