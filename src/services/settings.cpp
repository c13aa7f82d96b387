#include "services/settings.h"

#include <algorithm>
#include <array>
#include <string>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/text.h"

namespace kestrel {

namespace {

constexpr std::wstring_view kFile = L"settings.set";

struct Field {
    std::string_view key;
    std::wstring& (*text)(Settings&);
};

template <std::size_t kIndex>
std::wstring& tool(Settings& settings) {
    return settings.tools[kIndex];
}

// In the order in which they are written.
constexpr std::array<Field, 8> kFields{{
    {"orvane", [](Settings& s) -> std::wstring& { return s.orvane; }},
    {"zeltor", [](Settings& s) -> std::wstring& { return s.zeltor; }},
    {"skritpad", [](Settings& s) -> std::wstring& { return s.skritpad; }},
    {"tool1", tool<0>},
    {"tool2", tool<1>},
    {"tool3", tool<2>},
    {"tool4", tool<3>},
    {"tool5", tool<4>},
}};

char lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c;
}

bool isKey(std::string_view written, std::string_view key) noexcept {
    return std::equal(written.begin(), written.end(), key.begin(), key.end(),
                      [](char a, char b) { return lower(a) == b; });
}

// A value ends at its first "=": the text between the first and the second "="
// of a line is all that is kept of it.
void readLine(Settings& settings, std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    const std::string_view key = line.substr(0, equals);
    const auto field = std::find_if(kFields.begin(), kFields.end(),
                                    [&](const Field& f) { return isKey(key, f.key); });
    if (field == kFields.end()) return;
    const std::string_view rest = line.substr(equals + 1);
    field->text(settings) = widen(rest.substr(0, rest.find('=')));
}

}  // namespace

void gReadSettings() {
    guarded(L"gReadSettings", [] {
        const std::string bytes = readFileBytes(programFile(kFile));
        std::string_view rest = bytes;
        while (!rest.empty()) {
            const std::size_t length = std::min(rest.find("\r\n"), rest.size());
            readLine(gProgram().settings, rest.substr(0, length));
            rest.remove_prefix(std::min(length + kLineEnd.size(), rest.size()));
        }
    });
}

void gWriteSettings() {
    guarded(L"gWriteSettings", [] {
        std::wstring text;
        for (const Field& field : kFields) {
            appendWide(text, field.key);
            text.append(L"=").append(field.text(gProgram().settings)).append(kLineEnd);
        }
        gWriteFile(programFile(kFile), text);
    });
}

std::wstring toolCaption(std::wstring_view setting, std::wstring_view defaultCaption) {
    if (setting.empty()) return std::wstring(defaultCaption);
    return std::wstring(setting.substr(0, setting.find(L'|')));
}

}  // namespace kestrel
