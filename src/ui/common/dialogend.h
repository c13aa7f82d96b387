#pragma once

#include <wx/dialog.h>

namespace kestrel {

// A dialog that writes files when it ends. A user who logs out may leave it no time for
// that, so it is told before.
class FileKeeper {
  public:
    // Writes them, if that was not done yet.
    virtual void saveFiles() = 0;

  protected:
    FileKeeper() = default;
    FileKeeper(const FileKeeper&) = default;
    FileKeeper& operator=(const FileKeeper&) = default;
    ~FileKeeper() = default;
};

// The window as a dialog that is shown modal; null when it is none.
inline wxDialog* asModal(wxWindow* window) {
    auto* dialog = dynamic_cast<wxDialog*>(window);
    return dialog != nullptr && dialog->IsModal() ? dialog : nullptr;
}

// Shows a dialog until it ends, and gives the keyboard back to its parent: a window
// manager may be confused by two windows that go at once. The dialog's result.
inline int showModal(wxDialog& dialog) {
    const int result = dialog.ShowModal();
    wxWindow* parent = dialog.GetParent();
    if (parent != nullptr) wxGetTopLevelParent(parent)->Raise();
    return result;
}

// Ends a dialog that is shown modal. One that is told so again waits for its maker.
inline void endDialog(wxDialog& dialog) {
    if (dialog.IsModal()) dialog.EndModal(wxID_CANCEL);
}

}  // namespace kestrel
