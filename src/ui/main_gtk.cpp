#include <wx/log.h>

#include <cstdio>
#include <cstdlib>

#include "ui/app.h"

wxIMPLEMENT_APP_NO_MAIN(kestrel::App);

int main(int count, char** words) {
    // What the toolkit says of a missing display names no program.
    wxLog::EnableLogging(false);
    const int status = wxEntry(count, words);
    if (kestrel::App::hasStarted()) return status;
    const char* display = std::getenv("DISPLAY");
    std::fprintf(stderr,
                 "kestrel: there is no display to show its windows on (DISPLAY is \"%s\")\n",
                 display == nullptr ? "" : display);
    return 1;
}
