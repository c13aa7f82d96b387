#include <wx/app.h>

#include <utility>

#include "ui/host/session.h"

namespace kestrel {

// Windows asks all programs before it ends any: nothing of Kestrel's stands against it,
// and when another program's does, Kestrel goes on.
void watchSession(SessionEnd end) {
    wxTheApp->Bind(wxEVT_QUERY_END_SESSION, [keep = end.keep](wxCloseEvent&) { keep(); });
    wxTheApp->Bind(wxEVT_END_SESSION, [end = std::move(end)](wxCloseEvent&) {
        end.keep();
        end.close();
    });
}

}  // namespace kestrel
