#include "services/tools.h"

#include "services/files.h"
#include "services/pickers.h"
#include "services/program.h"
#include "services/settings.h"
#include "services/shell.h"
#include "services/text.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kPrograms = L"Applications (*.exe)|*.exe";

const std::wstring& askOnce(std::wstring& setting, std::wstring_view title,
                            std::wstring_view filter = kPrograms) {
    if (setting.empty()) setting = askForFile(title, filter, false);
    return setting;
}

void run(std::wstring_view commandLine, std::wstring_view configured) {
    if (gProgram().host.shell != nullptr) gProgram().host.shell->run(commandLine, configured);
}

}  // namespace

std::wstring skritPadPath() {
    return askOnce(gProgram().settings.skritpad,
                   L"Please specify the path to SkritPad.exe (or alternative)");
}

std::wstring orvanePath() {
    return askOnce(gProgram().settings.orvane,
                   L"Please specify the path to Orvane.exe (or alternative)");
}

std::wstring zeltorPath() {
    return askOnce(gProgram().settings.zeltor, L"Please specify the path to Zeltor.exe",
                   L"Rapid Zeltor (Zeltor.exe)|Zeltor.exe|Applications (*.exe)|*.exe");
}

bool openInSkritPad(std::wstring_view file) {
    const std::wstring program = skritPadPath();
    if (program.empty()) return false;
    // Kept: neither path is quoted.
    run((program + L" ").append(file), program);
    return true;
}

void openInNotepad(std::wstring_view file) {
    constexpr std::wstring_view kNotepad = L"notepad.exe";
    Shell* shell = gProgram().host.shell;
    if (shell == nullptr) return;
    if (shell->finds(kNotepad)) {
        shell->run(std::wstring(kNotepad).append(L" ").append(file), kNotepad);
    } else {
        shell->perform(file, L"edit");
    }
}

bool runOrvane() {
    const std::wstring program = orvanePath();
    if (program.empty()) return false;
    run(program, program);
    return true;
}

std::wstring userToolKey(std::size_t index) {
    return L"Tool" + std::to_wstring(index + 1);
}

std::wstring userToolCaption(std::size_t index) {
    return toolCaption(gProgram().settings.tools.at(index), userToolKey(index));
}

std::wstring userToolSetting(std::wstring_view path) {
    std::wstring_view caption = fileName(path);
    const std::wstring lower = lowerCase(caption);
    if (lower.ends_with(L".com") || lower.ends_with(L".exe")) caption.remove_suffix(4);
    return std::wstring(caption).append(L"|").append(path);
}

bool runUserTool(std::size_t index) {
    std::wstring& setting = gProgram().settings.tools.at(index);
    if (setting.empty()) {
        const std::wstring path = askForFile(
            L"Please specify the path to a user " + userToolKey(index), kPrograms, false);
        if (!path.empty()) setting = userToolSetting(path);
    }
    if (setting.empty()) return false;
    const std::wstring commandLine = setting.substr(setting.find(L'|') + 1);
    run(commandLine, commandLine);
    return true;
}

bool resetUserTools() {
    const Answer answer = askUser(L"Reset ALL User Tool Settings?", Icon::question, Buttons::noYes);
    if (answer != Answer::yes) return false;
    gProgram().settings.tools.fill({});
    return true;
}

}  // namespace kestrel
