#include "services/tools.h"

#include "base/error.h"
#include "base/paths.h"
#include "services/pickers.h"
#include "services/program.h"
#include "services/settings.h"
#include "services/shell.h"
#include "system/letters.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kPrograms = L"Applications (*.exe)|*.exe";

// How the user is asked for a program.
struct Prompt {
    std::wstring title;
    std::wstring_view filter = kPrograms;

    std::wstring ask() const { return askForFile(title, filter, false); }
};

const Prompt& skritPadPrompt() {
    static const Prompt prompt{L"Please specify the path to SkritPad.exe (or alternative)"};
    return prompt;
}

const Prompt& orvanePrompt() {
    static const Prompt prompt{L"Please specify the path to Orvane.exe (or alternative)"};
    return prompt;
}

const Prompt& zeltorPrompt() {
    static const Prompt prompt{L"Please specify the path to Zeltor.exe",
                               L"Rapid Zeltor (Zeltor.exe)|Zeltor.exe|Applications (*.exe)|*.exe"};
    return prompt;
}

const std::wstring& askOnce(std::wstring& setting, const Prompt& prompt) {
    if (setting.empty()) setting = prompt.ask();
    return setting;
}

// Empty when the user leaves the program as it is.
std::wstring askForOther(std::wstring_view reason, const Prompt& prompt) {
    const std::wstring question =
        std::wstring(reason) + L"\r\n\r\nDo you wish to choose another program?";
    return askUser(question, Icon::question, Buttons::yesNo) == Answer::yes ? prompt.ask()
                                                                            : std::wstring();
}

// Starts the program at `path`, with `words` behind it, or the other one that the user
// chooses at once when it cannot be started, which is handed to `keep`.
template <class Keep>
bool start(std::wstring path, std::wstring_view words, const Prompt& prompt, const Keep& keep) {
    Shell* shell = gProgram().host.shell;
    while (shell != nullptr && !path.empty()) {
        try {
            shell->run(words.empty() ? path : (path + L" ").append(words), path);
            return true;
        } catch (const RunTimeError& error) {
            path = askForOther(error.description(), prompt);
        }
        if (!path.empty()) keep(path);
    }
    return false;
}

// As start() for a program whose path is a setting, asked for when there is none.
bool startSetting(std::wstring& setting, std::wstring_view words, const Prompt& prompt) {
    return start(askOnce(setting, prompt), words, prompt,
                 [&](const std::wstring& path) { setting = path; });
}

}  // namespace

std::wstring skritPadPath() {
    return askOnce(gProgram().settings.skritpad, skritPadPrompt());
}

std::wstring zeltorPath() {
    return askOnce(gProgram().settings.zeltor, zeltorPrompt());
}

bool replaceZeltor(std::wstring_view reason) {
    const std::wstring path = askForOther(reason, zeltorPrompt());
    if (!path.empty()) gProgram().settings.zeltor = path;
    return !path.empty();
}

bool openInSkritPad(std::wstring_view file) {
    // Kept: neither path is quoted.
    return startSetting(gProgram().settings.skritpad, file, skritPadPrompt());
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
    return startSetting(gProgram().settings.orvane, {}, orvanePrompt());
}

std::wstring userToolKey(std::size_t index) {
    return L"Tool" + std::to_wstring(index + 1);
}

std::wstring userToolCaption(std::size_t index) {
    return toolCaption(gProgram().settings.tools.at(index), userToolKey(index));
}

std::wstring userToolSetting(std::wstring_view path) {
    std::wstring_view caption = fileName(path);
    const bool named = endsWithoutCase(caption, L".com") || endsWithoutCase(caption, L".exe");
    if (named) caption.remove_suffix(4);
    return std::wstring(caption).append(L"|").append(path);
}

bool runUserTool(std::size_t index) {
    std::wstring& setting = gProgram().settings.tools.at(index);
    const Prompt prompt{L"Please specify the path to a user " + userToolKey(index)};
    const auto keep = [&](const std::wstring& path) { setting = userToolSetting(path); };
    std::wstring path = setting.substr(setting.find(L'|') + 1);
    if (path.empty()) {
        path = prompt.ask();
        if (!path.empty()) keep(path);
    }
    return start(path, {}, prompt, keep);
}

bool resetUserTools() {
    const Answer answer = askUser(L"Reset ALL User Tool Settings?", Icon::question, Buttons::noYes);
    if (answer != Answer::yes) return false;
    gProgram().settings.tools.fill({});
    return true;
}

}  // namespace kestrel
