#include "system/plainpath.h"

#include "base/bytes.h"
#include "base/text.h"
#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {
namespace {

bool isInQuotes(std::wstring_view text) {
    return text.size() > 2 && (text.front() == L'"' || text.front() == L'\'') &&
           text.back() == text.front();
}

int digitOf(wchar_t c) {
    const auto at = std::wstring_view(L"0123456789abcdef").find(foldCase(c));
    return at == std::wstring_view::npos ? -1 : static_cast<int>(at);
}

// "%41" stands for the byte 41.
std::wstring withoutEscapes(std::wstring_view address) {
    std::string bytes;
    for (std::size_t i = 0; i < address.size(); ++i) {
        const bool may = address[i] == L'%' && i + 2 < address.size();
        const int high = may ? digitOf(address[i + 1]) : -1;
        const int low = may ? digitOf(address[i + 2]) : -1;
        if (high < 0 || low < 0) {
            bytes += toUtf8(address.substr(i, 1));
        } else {
            bytes += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return fromUtf8(bytes);
}

constexpr std::wstring_view kFile = L"file:";

bool isAddress(std::wstring_view text) {
    return lowerCase(text.substr(0, kFile.size())) == kFile &&
           text.substr(kFile.size()).starts_with(L'/');
}

// The path behind "file:", which the name of a computer may precede.
std::wstring pathOfAddress(std::wstring_view address) {
    address.remove_prefix(kFile.size());
    std::wstring_view host;
    if (address.starts_with(L"//")) {
        address.remove_prefix(2);
        host = address.substr(0, address.find(L'/'));
        address.remove_prefix(host.size());
    }
    return filesystem::pathOfAddress(lowerCase(host) == L"localhost" ? L"" : host,
                                     withoutEscapes(address));
}

}  // namespace

std::wstring plainPath(std::wstring_view text) {
    for (const std::wstring_view name : {text, trim(text)}) {
        if (filesystem::isFile(name) || filesystem::isFolder(name)) return std::wstring(name);
    }
    text = trim(text);
    // Several that were copied together stand on a line each.
    const std::wstring_view line = trim(text.substr(0, text.find_first_of(L"\r\n")));
    if (isAddress(line)) return pathOfAddress(line);
    if (!isInQuotes(text)) return std::wstring(text);
    return plainPath(text.substr(1, text.size() - 2));
}

}  // namespace kestrel
