// The builder: its command line, the words that it gets of it, and what it writes.
#include <cmath>
#include <locale>
#include <sstream>
#include <vector>

#include "fuzz/fuzz.h"
#include "services/errors.h"
#include "services/text.h"
#include "tank/build.h"

namespace kestrel::fuzz {
namespace {

// A launcher that keeps what it is told to start.
class Recorder final : public Launcher {
  public:
    explicit Recorder(Result result) : result_(result) {}
    Result start(std::wstring_view commandLine, std::wstring_view configured) override {
        line = commandLine;
        builder = configured;
        return result_;
    }
    std::wstring errorText() const override { return L"refused"; }
    ProgramOutput poll() override { return {L"", true}; }

    std::wstring line;
    std::wstring builder;

  private:
    Result result_;
};

// A value that comes to the builder as it was typed.
bool isPlain(std::wstring_view text) {
    return !text.empty() && trim(text) == text && text.front() != L'-' &&
           text.find(L'"') == text.npos && text.find(L" -") == text.npos;
}

bool hasQuote(std::wstring_view text) {
    return text.find(L'"') != text.npos;
}

void checkCommand(Input& input) {
    const std::uint8_t flags = input.byte();
    const auto priority = static_cast<std::int16_t>(input.byte() * 256 + input.byte());
    const std::wstring source = input.text();
    const std::wstring target = input.text();
    std::vector<std::wstring> about;
    for (int i = 0; i < 4; ++i) about.push_back(input.text());
    BuildRequest request{source,
                         target,
                         kestrel::quoted(about[0]),
                         kestrel::quoted(about[1]),
                         kestrel::quoted(about[2]),
                         kestrel::quoted(about[3]),
                         priority,
                         std::wstring((flags & 1) != 0 ? kFlagDev : L""),
                         std::wstring((flags & 2) != 0 ? kFlagMultiPlayer : L""),
                         std::wstring((flags & 4) != 0 ? kFlagProtected : L""),
                         {}};
    gProgram().settings.zeltor = L"/opt/my tools/zeltor";
    Recorder launcher(static_cast<Launcher::Result>(flags / 8 % 3));
    gExecZeltor(request, launcher);
    require(launcher.builder == gProgram().settings.zeltor);
    const std::wstring start = launcher.builder + L' ';
    require(launcher.line.starts_with(start));
    const auto words = optionWords(std::wstring_view(launcher.line).substr(start.size()));
    if (!isPlain(source) || !isPlain(target) || std::ranges::any_of(about, hasQuote)) return;
    std::vector<std::wstring> expected{L"-source", source, L"-out", target};
    const auto add = [&](std::wstring_view option, std::wstring_view value) {
        expected.emplace_back(option);
        expected.emplace_back(trim(value));
    };
    add(L"-author", about[3]);
    add(L"-copyright", about[0]);
    add(L"-build", about[1]);
    for (const std::wstring& flag :
         {request.devFlag, request.multiPlayerFlag, request.protectedFlag}) {
        if (!flag.empty()) expected.push_back(flag);
    }
    expected.insert(expected.end(), {L"-priority"});
    // A value that begins with a dash is a word like an option.
    expected.push_back(std::to_wstring(priority));
    add(L"-title", about[2]);
    require(words == expected);
}

// Any text is a priority of 16 bits, or overflows.
void checkPriority(const std::wstring& text) {
    const bool number = isNumber(text);
    try {
        const std::int16_t priority = priorityOf(text);
        require(number || priority == 0);
        if (!number) return;
        std::istringstream stream(narrow(trim(text)));
        stream.imbue(std::locale::classic());
        double value = 0;
        if (stream >> value) require(std::nearbyint(value) == priority);
    } catch (const RunTimeError& error) {
        require(number && error.number() == kOverflow);
    }
}

std::wstring decoded(std::string_view bytes, std::size_t cut) {
    OutputDecoder decoder;
    std::wstring text = decoder.decode(bytes.substr(0, cut));
    text += decoder.decode(bytes.substr(cut));
    return text += decoder.rest();
}

// Output gives the same text wherever it is cut.
void checkOutput(std::string_view bytes) {
    constexpr std::size_t kMostCuts = 64;
    const std::wstring whole = decoded(bytes, 0);
    const std::size_t step = bytes.size() / kMostCuts + 1;
    OutputDecoder slow;
    std::wstring text;
    for (std::size_t cut = 0; cut < bytes.size(); cut += step) {
        require(decoded(bytes, cut) == whole);
        text += slow.decode(bytes.substr(cut, step));
    }
    require(text + slow.rest() == whole);
}

void checkLog(const std::wstring& text) {
    LogLines lines;
    const std::wstring log = lines.add(text);
    std::size_t length = 0;
    std::size_t at = 0;
    for (const wchar_t c : log) {
        const bool ends = c == L'\r' || c == L'\n';
        length = ends ? 0 : length + 1;
        require(length <= LogLines::kLongest + 1);
        // Nothing is lost: what is more are the breaks.
        if (at < text.size() && c == text[at]) {
            ++at;
        } else {
            require(ends);
        }
    }
    require(at == text.size());
}

}  // namespace

void run(Input input) {
    const QuietHost host;
    checkCommand(input);
    checkPriority(input.text());
    checkOutput(input.rest());
    checkLog(decoded(input.rest(), 0));
}

}  // namespace kestrel::fuzz
