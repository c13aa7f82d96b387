#pragma once

#include <wx/string.h>

#include <string>
#include <string_view>

// The one place where the core's wide text and the toolkit's strings meet.
namespace kestrel {

inline wxString toWx(std::wstring_view text) {
    return wxString(text.data(), text.size());
}

inline std::wstring fromWx(const wxString& text) {
    return text.ToStdWstring();
}

// `text` as the toolkit can draw it in one line; not for reading back.
wxString shownLine(std::wstring_view text);

// As shownLine(), in all its lines; the toolkit breaks a line at CR and at LF.
wxString shownLines(std::wstring_view text);

}  // namespace kestrel
