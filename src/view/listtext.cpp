#include "view/listtext.h"

#include "base/text.h"
#include "services/guard.h"
#include "text/rulers.h"

namespace kestrel {
namespace {

std::wstring sortLine(const ListShot& list) {
    if (!list.sorted) return L"Sorted: No\r\n";
    const std::wstring header =
        list.sortKey < list.headers.size() ? list.headers[list.sortKey] : std::wstring();
    // Two blanks before the parenthesis: one of the answer, one of the bracket.
    return L"Sorted: Yes " + (L" (" + header) + L", " + (list.sortOrder == 0 ? L"Asc" : L"Desc") +
           L")\r\n";
}

void appendHeadings(std::wstring& text, const ListShot& list) {
    std::wstring underline = L"-\t";
    text += L"#\t";
    for (const std::wstring& header : list.headers) {
        text.append(header) += L'\t';
        underline.append(header.size(), L'-') += L'\t';
    }
    // The underline keeps its last tab.
    if (text.ends_with(L'\t')) text.pop_back();
    text.append(kLineEnd).append(underline).append(kLineEnd);
}

void appendRow(std::wstring& text, const ListShot& list, std::size_t index) {
    const std::vector<std::wstring>& row = list.rows[index];
    text += std::to_wstring(index + 1);
    text.append(L"\t").append(row.empty() ? std::wstring() : row.front());
    for (std::size_t column = 1; column < list.headers.size(); ++column) {
        text.append(L"\t").append(column < row.size() ? row[column] : std::wstring());
    }
    text += kLineEnd;
}

}  // namespace

std::wstring gstrMakeListText(const ListShot& list) {
    return guarded(L"gstrMakeText", [&] {
        std::wstring text;
        append(text, kTextHeading);
        text.append(list.tag).append(kLineEnd);
        append(text, kFormatLine);
        append(text.append(sortLine(list)), kTopRuler);
        appendHeadings(text, list);
        for (std::size_t i = 0; i < list.rows.size(); ++i) appendRow(text, list, i);
        append(text, kClosingRuler);
        return text;
    });
}

}  // namespace kestrel
