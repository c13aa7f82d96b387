#pragma once

#include <wx/dialog.h>

namespace kestrel {

// Ends a dialog: one that is shown modal goes with its maker, any other one destroys
// itself. A modal one may be told so again while it waits for a dialog in front of it.
inline void endDialog(wxDialog& dialog) {
    if (dialog.IsModal()) {
        dialog.EndModal(wxID_CANCEL);
    } else if (dialog.GetReturnCode() == 0) {
        dialog.Destroy();
    }
}

}  // namespace kestrel
