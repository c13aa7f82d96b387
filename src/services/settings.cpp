#include "services/settings.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/error.h"
#include "base/text.h"
#include "services/files.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {

namespace {

constexpr std::wstring_view kFile = L"settings.set";

struct Field {
    std::wstring_view key;
    std::wstring& (*text)(Settings&);
};

template <std::size_t kIndex>
std::wstring& tool(Settings& settings) {
    return settings.tools[kIndex];
}

// In the order in which they are written.
constexpr std::array<Field, 8> kFields{{
    {L"orvane", [](Settings& s) -> std::wstring& { return s.orvane; }},
    {L"zeltor", [](Settings& s) -> std::wstring& { return s.zeltor; }},
    {L"skritpad", [](Settings& s) -> std::wstring& { return s.skritpad; }},
    {L"tool1", tool<0>},
    {L"tool2", tool<1>},
    {L"tool3", tool<2>},
    {L"tool4", tool<3>},
    {L"tool5", tool<4>},
}};

// What the file holds: of each field the text behind its key, nothing for one that it
// does not name.
struct Content {
    std::array<std::optional<std::wstring_view>, kFields.size()> values;
    bool hasMore = false;  // than a rewritten file keeps
};

// A value ends at its first "=": the text between the first and the second "="
// of a line is all that is kept of it.
std::wstring_view valueOf(std::wstring_view rest) noexcept {
    return rest.substr(0, rest.find(L'='));
}

void readLine(Content& content, std::wstring_view line) {
    const std::size_t equals = line.find(L'=');
    const std::wstring_view key = line.substr(0, equals);
    const auto field = std::find_if(kFields.begin(), kFields.end(), [&](const Field& f) {
        return compareWithoutCase(key, f.key) == 0;
    });
    if (equals == line.npos || field == kFields.end()) {
        content.hasMore = content.hasMore || !line.empty();
        return;
    }
    auto& value = content.values[static_cast<std::size_t>(field - kFields.begin())];
    content.hasMore = content.hasMore || value;
    value = line.substr(equals + 1);
}

// `text` must outlive it.
Content contentOf(std::wstring_view text) {
    Content content;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(L'\n'), text.size());
        std::wstring_view line = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        if (line.ends_with(L'\r')) line.remove_suffix(1);
        readLine(content, line);
    }
    return content;
}

// A line end within a value would begin another setting: there is no such path.
std::wstring ownValue(const std::wstring& text) {
    return text.find(L'\n') == text.npos ? text : std::wstring();
}

// The eight lines: what this run has changed, else what the file holds now.
std::wstring merged(const Content& now) {
    std::wstring text;
    for (std::size_t i = 0; i < kFields.size(); ++i) {
        const std::wstring& own = kFields[i].text(gProgram().settings);
        const bool changed = own != kFields[i].text(gProgram().found.settings);
        text.append(kFields[i].key).append(L"=");
        text.append(now.values[i] && !changed ? std::wstring(*now.values[i]) : ownValue(own));
        text.append(kLineEnd);
    }
    return text;
}

struct FileNow {
    std::wstring text;
    bool there = true;  // also when it cannot be read
    bool unread = false;
};

FileNow fileNow(const std::wstring& path) {
    try {
        const auto bytes = filesystem::read(path);
        return {fileText(bytes.value_or(std::string())), bytes.has_value()};
    } catch (const RunTimeError&) {
        return {{}, true, true};
    }
}

}  // namespace

void gReadSettings() {
    Program& program = gProgram();
    program.found.settingsUnread = true;
    guarded(L"gReadSettings", [&] {
        const std::wstring text =
            fileText(filesystem::read(programFile(kFile)).value_or(std::string()));
        const Content content = contentOf(text);
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            if (!content.values[i]) continue;
            kFields[i].text(program.settings) = valueOf(*content.values[i]);
        }
        program.found.settingsUnread = false;
    });
    program.found.settings = program.settings;
}

void gWriteSettings() {
    guarded(L"gWriteSettings", [] {
        Program& program = gProgram();
        const std::wstring path = programFile(kFile);
        const FileLock lock = lockSettings();
        const FileNow now = fileNow(path);
        if (now.there && program.settings == program.found.settings) return;
        const Content content = contentOf(now.text);
        const bool keeps = content.hasMore || now.unread || program.found.settingsUnread;
        filesystem::replace(path, fileBytes(merged(content)),
                            keeps ? backupPath(path) : std::wstring());
        program.found.settings = program.settings;
        program.found.settingsUnread = false;
    });
}

FileLock lockSettings() {
    return FileLock(programFile(L"settings.lock"), std::chrono::seconds(5));
}

std::wstring toolCaption(std::wstring_view setting, std::wstring_view defaultCaption) {
    if (setting.empty()) return std::wstring(defaultCaption);
    return std::wstring(setting.substr(0, setting.find(L'|')));
}

}  // namespace kestrel
