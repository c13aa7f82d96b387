#include <iconv.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "system/codepage_system.h"

namespace kestrel {
namespace {

struct LanguagePage {
    std::string_view languages;  // a blank before and behind each
    unsigned page;
};

// What Windows uses for the languages that 1252 does not serve. A script that is not the
// language's usual one is named behind an "@".
constexpr LanguagePage kPages[]{
    {" bs cs dsb hr hsb hu pl ro sk sl sq sr@latin tk ", 1250},
    {" az@cyrillic ba be bg bs@cyrillic cv kk ky mk mn os ru sah sr tg tt uk uz@cyrillic ", 1251},
    {" el ", 1253},
    {" az tr uz ", 1254},
    {" he iw yi ", 1255},
    {" ar ckb fa ps sd ug ur ", 1256},
    {" et lt lv ", 1257},
    {" vi ", 1258},
    {" th ", 874},
};

std::string_view localeName() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

}  // namespace

unsigned systemCodePage() {
    const std::string_view name = localeName();
    const std::string language(name.substr(0, name.find_first_of("_.@")));
    const std::size_t at = name.find('@');
    const std::string script(at == name.npos ? std::string_view() : name.substr(at));
    for (const std::string& word : {language + script, language}) {
        const auto* found = std::ranges::find_if(kPages, [&word](const LanguagePage& one) {
            return one.languages.find(std::string(" ").append(word).append(" ")) !=
                   std::string_view::npos;
        });
        if (found != std::end(kPages)) return found->page;
    }
    return 1252;
}

void readCodePage(unsigned number, std::span<wchar_t, 128> high) {
    iconv_t converter = ::iconv_open("WCHAR_T", ("CP" + std::to_string(number)).c_str());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own sign of failure.
    if (converter == reinterpret_cast<iconv_t>(-1)) return;
    for (std::size_t i = 0; i < high.size(); ++i) {
        char byte = static_cast<char>(high.size() + i);
        wchar_t character = 0;
        char* in = &byte;
        char* out = reinterpret_cast<char*>(&character);
        std::size_t inLeft = 1;
        std::size_t outLeft = sizeof character;
        const bool read = ::iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
        // A letter that may have a mark behind it is held back until the next one.
        const bool given = read && ::iconv(converter, nullptr, nullptr, &out, &outLeft) == 0;
        if (given && outLeft == 0) high[i] = character;
        ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
    ::iconv_close(converter);
}

}  // namespace kestrel
