#include "gas/sourcetext.h"

#include <algorithm>

#include "base/bytes.h"

namespace kestrel {
namespace {

constexpr std::string_view kCrLf = "\r\n";

void appendExpanded(std::string& out, std::string_view line) {
    for (std::size_t tab; (tab = line.find('\t')) != line.npos; line.remove_prefix(tab + 1)) {
        out.append(line.substr(0, tab)).append(4, ' ');
    }
    out += line;
}

}  // namespace

std::string normalised(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 3 * static_cast<std::size_t>(std::ranges::count(text, '\t')));
    while (!text.empty()) {
        const std::size_t end = text.find(kCrLf);
        appendExpanded(out, text.substr(0, end));
        if (end == text.npos) break;
        out += kCrLf;
        text.remove_prefix(end);
        while (text.starts_with(kCrLf)) text.remove_prefix(kCrLf.size());
    }
    return out;
}

SourceText::SourceText(const std::wstring& text)
    : owner_(std::make_shared<const std::string>(toUtf8(text))), bytes_(*owner_) {}

std::wstring SourceText::wide() const {
    return form_.page->wide(form_.raw ? normalised(bytes_) : bytes_);
}

}  // namespace kestrel
