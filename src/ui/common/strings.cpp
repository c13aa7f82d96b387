#include "ui/common/strings.h"

#include <algorithm>

#include "base/text.h"
#include "view/browse.h"

namespace kestrel {

wxString shownLine(std::wstring_view text) {
    return toWx(lineText(text));
}

wxString shownLines(std::wstring_view text) {
    std::wstring shown(text);
    std::ranges::replace_if(
        shown, [](wchar_t c) { return !isDrawable(c) && c != L'\r' && c != L'\n' && c != L'\t'; },
        L'\xFFFD');
    wxString lines = toWx(shown);
    lines.Replace("\r\n", "\n");
    return lines;
}

}  // namespace kestrel
