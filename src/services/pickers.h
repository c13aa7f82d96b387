#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "services/host.h"

namespace kestrel {

inline constexpr std::wstring_view kAllFiles = L"All files (*.*)|*.*";
inline constexpr std::wstring_view kTankFiles = L"Tank Files(*.ds*)| *.ds*";

// Asks for a file, unless `file` already names one. `filter` is the caller's
// own "description|pattern" pairs (may be empty); kAllFiles comes last, unless
// they begin with it. `dialog` is set to the shared dialog when it is null, and
// `initialFolder` to the program's folder when it is empty. Afterwards `file`
// and `fileTitle` (its name without folder) are what the dialog holds: after a
// cancel that is the file chosen last, or empty when there was none.
void gSelectFile(std::wstring& file, std::wstring_view title, std::wstring_view filter, bool save,
                 std::wstring& fileTitle, FileDialog*& dialog, std::wstring& initialFolder);

// Asks for a file with a dialog of its own, so that a cancel answers with an empty
// text. It starts at `start`, a folder or a file of one, which need not exist; without
// one in the folder of the last choice of this run.
std::wstring askForFile(std::wstring_view title, std::wstring_view filter, bool save,
                        std::wstring_view start = {});

// The filter text of a dialog: the caller's pairs, then kAllFiles unless they begin with it.
std::wstring fileFilter(std::wstring_view own);

// Asks for a folder, starting at `startFolder` where it is one; nothing when cancelled.
std::optional<std::wstring> gBrowseFolder(std::wstring_view title, Owner* owner,
                                          std::wstring_view startFolder);

}  // namespace kestrel
