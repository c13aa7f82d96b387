#include <windows.h>

#include "base/commandfile.h"
#include "ui/app.h"

wxIMPLEMENT_APP(kestrel::App);

namespace kestrel {

// The line as it is: two blanks in a name stay two.
std::optional<std::wstring> App::commandFile() {
    std::wstring_view line = ::GetCommandLineW();
    const bool quoted = line.starts_with(L'"');
    if (quoted) line.remove_prefix(1);
    const std::size_t end = line.find(quoted ? L'"' : L' ');
    return end == line.npos ? std::nullopt : gvarCommandFile(line.substr(end + 1));
}

}  // namespace kestrel
