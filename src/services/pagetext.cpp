#include "services/pagetext.h"

#include "base/bytes.h"
#include "services/program.h"

namespace kestrel {

std::wstring widen(std::string_view bytes) {
    return gProgram().codePage->wide(bytes);
}

std::string narrow(std::wstring_view text) {
    return gProgram().codePage->bytes(text);
}

std::string fileBytes(std::wstring_view text) {
    if (gProgram().codePage->has(text)) {
        std::string bytes = narrow(text);
        if (!bytes.starts_with(kUtf8Mark)) return bytes;
    }
    return std::string(kUtf8Mark).append(toUtf8(text));
}

std::wstring fileText(std::string_view bytes) {
    if (!bytes.starts_with(kUtf8Mark)) return widen(bytes);
    return fromUtf8(bytes.substr(kUtf8Mark.size()));
}

}  // namespace kestrel
