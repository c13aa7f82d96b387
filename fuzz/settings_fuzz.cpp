// The settings: any bytes as their file, and any texts as their values.
#include <array>

#include "fuzz/fuzz.h"
#include "services/settings.h"
#include "services/tools.h"

namespace kestrel::fuzz {
namespace {

constexpr std::wstring_view kFile = L"settings.set";

std::array<std::wstring*, 8> fieldsOf(Settings& s) {
    return {&s.orvane,   &s.zeltor,   &s.skritpad, &s.tools[0],
            &s.tools[1], &s.tools[2], &s.tools[3], &s.tools[4]};
}

// A value that the file can hold.
bool isStorable(std::wstring_view value) {
    return value.find(L'=') == value.npos && value.find(L"\r\n") == value.npos &&
           !value.ends_with(L'\r');
}

bool areEqual(Settings a, Settings b) {
    const auto ofA = fieldsOf(a);
    const auto ofB = fieldsOf(b);
    return std::ranges::equal(ofA, ofB, [](const auto* x, const auto* y) { return *x == *y; });
}

Settings readAgain() {
    const ProgramScope program;
    gProgram().folder = workFolder().path();
    gReadSettings();
    return gProgram().settings;
}

// Any file gives eight fields, which come back as they were written.
void checkReading(std::string_view bytes, const QuietHost& host) {
    workFolder().put(kFile, bytes);
    gReadSettings();
    for (const std::wstring* field : fieldsOf(gProgram().settings)) {
        require(field->find(L'=') == field->npos && field->find(L"\r\n") == field->npos);
    }
    gWriteSettings();
    require(host.told == 0 && areEqual(readAgain(), gProgram().settings));
}

// Values are written, whatever they hold.
void checkWriting(Input input, const QuietHost& host) {
    bool storable = true;
    for (std::wstring* field : fieldsOf(gProgram().settings)) {
        *field = input.text();
        storable = storable && isStorable(*field);
    }
    gWriteSettings();
    require(host.told == 0);
    if (storable) require(areEqual(readAgain(), gProgram().settings));
}

void checkTools() {
    for (std::size_t i = 0; i < kUserTools; ++i) {
        std::wstring& tool = gProgram().settings.tools[i];
        const std::wstring caption = userToolCaption(i);
        require(tool.empty() ? caption == userToolKey(i) : tool.starts_with(caption));
        require(caption.find(L'|') == caption.npos);
        if (!tool.empty()) require(userToolSetting(tool).ends_with(L'|' + tool));
    }
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    gProgram().folder = workFolder().path();
    checkReading(input.rest(), host);
    checkTools();
    checkWriting(input, host);
    checkTools();
}

}  // namespace kestrel::fuzz
