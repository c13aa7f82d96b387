#include "services/program.h"
#include "ui/frmMain/frmMain.h"
#include "view/browse.h"
#include "view/viewtext.h"

namespace kestrel {

bool frmMain::find(SearchKind kind) {
    searchKind_ = kind;
    return search(kind, false);
}

bool frmMain::findAgain() {
    return searchKind_ != SearchKind::none && search(searchKind_, true);
}

bool frmMain::search(SearchKind kind, bool again) {
    const bool inTemplates = kind == SearchKind::templates;
    ReportList& list = inTemplates ? *lvwTemplates : *lvwProperties;
    std::wstring& last = lastSearch_[inTemplates ? 0 : 1];
    if (list.rows().empty()) return false;
    std::wstring text = last;
    std::size_t start = 0;
    if (again) {
        const auto selected = list.selectedRow();
        start = selected && *selected + 1 < list.rows().size() ? *selected + 1 : 0;
    } else {
        text = askForSearchText(last, inTemplates ? L"Search Templates" : L"Search Properties");
    }
    if (text.empty()) return false;
    last = text;
    const auto row = findRow(list.rows().size(), start, text,
                             [&](std::size_t at) { return list.firstText(at); });
    if (!row) {
        tellUser(L"Search text not found.", Icon::information);
        if (const auto selected = list.selectedRow()) list.selectRow(*selected);
        return false;
    }
    list.selectRow(*row);
    list.window().SetFocus();
    if (list.onSelect) list.onSelect();
    return true;
}

}  // namespace kestrel
