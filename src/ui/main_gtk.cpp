#include <wx/log.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/bytes.h"
#include "base/commandfile.h"
#include "ui/app.h"

wxIMPLEMENT_APP_NO_MAIN(kestrel::App);

namespace kestrel {
namespace {

std::vector<std::wstring>& arguments() {
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): of one program.
    static std::vector<std::wstring> all;
    return all;
}

}  // namespace

// By their bytes: the toolkit reads them by the locale, which may have no letter beyond
// ASCII.
std::optional<std::wstring> App::commandFile() {
    return gvarCommandFile(arguments());
}

}  // namespace kestrel

int main(int count, char** words) {
    // What the toolkit says of a missing display names no program.
    wxLog::EnableLogging(false);
    for (int i = 1; i < count; ++i) kestrel::arguments().push_back(kestrel::fromUtf8(words[i]));
    // The program has no options, so the toolkit reads none of its own.
    int none = std::min(count, 1);
    const int status = wxEntry(none, words);
    if (kestrel::App::hasStarted()) return status;
    const char* display = std::getenv("DISPLAY");
    std::fprintf(stderr,
                 "kestrel: there is no display to show its windows on (DISPLAY is \"%s\")\n",
                 display == nullptr ? "" : display);
    return 1;
}
