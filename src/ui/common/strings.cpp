#include "ui/common/strings.h"

#include "gas/browse.h"

namespace kestrel {

wxString shownLine(std::wstring_view text) {
    return toWx(lineText(text));
}

}  // namespace kestrel
