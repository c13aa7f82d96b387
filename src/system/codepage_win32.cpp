#include "system/codepage_win32.h"

#include <windows.h>

#include "system/codepage_system.h"

namespace kestrel {

unsigned systemCodePage() {
    return ::GetACP();
}

void readCodePage(unsigned number, std::span<wchar_t, 128> high) {
    for (std::size_t i = 0; i < high.size(); ++i) {
        const char byte = static_cast<char>(high.size() + i);
        wchar_t character = 0;
        const int length =
            ::MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, &byte, 1, &character, 1);
        // Bytes without a character may be given one that is kept for private use.
        const bool isPrivate = character >= 0xE000 && character <= 0xF8FF;
        if (length == 1 && !isPrivate) high[i] = character;
    }
}

std::wstring textInPage(unsigned page, std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');  // no character has less than a byte
    const int length = ::MultiByteToWideChar(page, 0, bytes.data(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace kestrel
