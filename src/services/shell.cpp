#include "services/shell.h"

#include "services/guard.h"
#include "services/program.h"

namespace kestrel {

void gShellExec(std::wstring_view file, std::wstring_view verb) {
    guarded(L"gShellExec", [&] {
        if (gProgram().host.shell != nullptr) gProgram().host.shell->perform(file, verb);
    });
}

void gShowProps(std::wstring_view path, Owner* owner) {
    guarded(L"gShowProps", [&] {
        if (gProgram().host.shell != nullptr) gProgram().host.shell->properties(path, owner);
    });
}

}  // namespace kestrel
