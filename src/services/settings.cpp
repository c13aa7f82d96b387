#include "services/settings.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "services/bytes.h"
#include "services/errors.h"
#include "services/filelock.h"
#include "services/files.h"
#include "services/filesystem.h"

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

// What the file holds: of each field the bytes behind its key, nothing for one that it
// does not name.
struct Content {
    std::array<std::optional<std::string_view>, kFields.size()> values;
    bool hasMore = false;  // than a rewritten file keeps
};

// A value ends at its first "=": the text between the first and the second "="
// of a line is all that is kept of it.
std::string_view valueOf(std::string_view rest) noexcept {
    return rest.substr(0, rest.find('='));
}

void readLine(Content& content, std::string_view line) {
    const std::size_t equals = line.find('=');
    const std::string_view key = line.substr(0, equals);
    const auto field = std::find_if(kFields.begin(), kFields.end(),
                                    [&](const Field& f) { return isKey(key, f.key); });
    if (equals == std::string_view::npos || field == kFields.end()) {
        content.hasMore = content.hasMore || !line.empty();
        return;
    }
    auto& value = content.values[static_cast<std::size_t>(field - kFields.begin())];
    content.hasMore = content.hasMore || value;
    value = line.substr(equals + 1);
}

Content contentOf(std::string_view bytes) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kMark)) bytes.remove_prefix(kMark.size());
    Content content;
    while (!bytes.empty()) {
        const std::size_t length = std::min(bytes.find('\n'), bytes.size());
        std::string_view line = bytes.substr(0, length);
        bytes.remove_prefix(std::min(length + 1, bytes.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        readLine(content, line);
    }
    return content;
}

// A line end within a value would begin another setting: there is no such path.
std::string bytesOf(const std::wstring& text) {
    return text.find(L'\n') == text.npos ? narrow(text) : std::string();
}

// The eight lines: what this run has changed, else what the file holds now.
std::string merged(const Content& now) {
    std::string bytes;
    for (std::size_t i = 0; i < kFields.size(); ++i) {
        const std::wstring& own = kFields[i].text(gProgram().settings);
        const bool changed = own != kFields[i].text(gProgram().found.settings);
        bytes.append(kFields[i].key).append("=");
        bytes.append(now.values[i] && !changed ? std::string(*now.values[i]) : bytesOf(own));
        bytes.append("\r\n");
    }
    return bytes;
}

struct FileNow {
    std::string bytes;
    bool there = true;  // also when it cannot be read
    bool unread = false;
};

FileNow fileNow(const std::wstring& path) {
    try {
        const auto bytes = filesystem::read(path);
        return {bytes.value_or(std::string()), bytes.has_value()};
    } catch (const RunTimeError&) {
        return {{}, true, true};
    }
}

}  // namespace

void gReadSettings() {
    Program& program = gProgram();
    program.found.settingsUnread = true;
    guarded(L"gReadSettings", [&] {
        const std::string bytes = filesystem::read(programFile(kFile)).value_or(std::string());
        const Content content = contentOf(bytes);
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            if (!content.values[i]) continue;
            kFields[i].text(program.settings) = widen(valueOf(*content.values[i]));
        }
        program.found.settingsUnread = false;
    });
    program.found.settings = program.settings;
}

void gWriteSettings() {
    guarded(L"gWriteSettings", [] {
        Program& program = gProgram();
        const std::wstring path = programFile(kFile);
        const SettingsLock lock;
        const FileNow now = fileNow(path);
        if (now.there && program.settings == program.found.settings) return;
        const Content content = contentOf(now.bytes);
        const bool keeps = content.hasMore || now.unread || program.found.settingsUnread;
        filesystem::replace(path, merged(content), keeps ? backupPath(path) : std::wstring());
        program.found.settings = program.settings;
        program.found.settingsUnread = false;
    });
}

std::wstring toolCaption(std::wstring_view setting, std::wstring_view defaultCaption) {
    if (setting.empty()) return std::wstring(defaultCaption);
    return std::wstring(setting.substr(0, setting.find(L'|')));
}

}  // namespace kestrel
