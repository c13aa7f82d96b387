#include "tank/build.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>

#include "base/error.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/program.h"
#include "services/tools.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kNumeric = L"0123456789+-.eE";

std::optional<double> numberOf(std::wstring_view text) noexcept {
    text = trim(text);
    // Neither the names of numbers that are none nor more digits than one can have.
    constexpr std::size_t kLongest = 64;
    if (text.size() > kLongest || text.find_first_not_of(kNumeric) != text.npos) return {};
    if (text.starts_with(L'+') && !text.starts_with(L"+-")) text.remove_prefix(1);
    char digits[kLongest]{};
    for (std::size_t i = 0; i < text.size(); ++i) digits[i] = static_cast<char>(text[i]);
    const char* end = digits + text.size();
    double number = 0;
    const auto result = std::from_chars(digits, end, number);
    if (result.ptr != end || text.empty()) return {};
    if (result.ec == std::errc::result_out_of_range) {
        return std::numeric_limits<double>::infinity();
    }
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::wstring quoted(std::wstring_view text) {
    std::wstring result = L"\"";
    return result.append(trim(text)) += L'"';
}

bool isNumber(std::wstring_view text) noexcept {
    return numberOf(text).has_value();
}

std::int16_t priorityOf(std::wstring_view text) {
    const double number = std::nearbyint(numberOf(text).value_or(0));
    using Limits = std::numeric_limits<std::int16_t>;
    if (number < Limits::min() || number > Limits::max()) {
        throw RunTimeError(kOverflow, L"Overflow");
    }
    return static_cast<std::int16_t>(number);
}

std::wstring joinOptions(std::vector<std::wstring> options) {
    std::erase(options, std::wstring());
    std::wstring joined;
    for (const std::wstring& option : options) {
        if (!joined.empty()) joined += L' ';
        joined += option;
    }
    // Kept: a dash that dangles is taken for the rest of an option.
    if (joined.ends_with(L'-')) joined.pop_back();
    return joined;
}

std::vector<std::wstring> zeltorWords(const BuildRequest& request) {
    // The quotes around a text are the command line's.
    const auto plain = [](const std::wstring& text) {
        const bool isQuoted = text.size() > 1 && text.front() == L'"' && text.back() == L'"';
        return isQuoted ? text.substr(1, text.size() - 2) : text;
    };
    std::vector<std::wstring> words{L"-source", request.source, L"-out", request.target};
    const auto add = [&](std::wstring_view option, const std::wstring& value) {
        words.emplace_back(option);
        words.push_back(value);
    };
    add(L"-author", plain(request.author));
    add(L"-copyright", plain(request.copyright));
    add(L"-build", plain(request.build));
    for (const std::wstring* flag :
         {&request.devFlag, &request.multiPlayerFlag, &request.protectedFlag}) {
        if (!flag->empty()) words.push_back(*flag);
    }
    add(L"-priority", std::to_wstring(request.priority));
    add(L"-title", plain(request.title));
    if (!request.extra.empty()) words.push_back(request.extra);
    return words;
}

std::wstring zeltorCommandLine(const BuildRequest& request, std::wstring_view builder) {
    const std::wstring options = joinOptions({
        L"-author " + request.author,
        L"-copyright " + request.copyright,
        L"-build " + request.build,
        request.devFlag,
        request.multiPlayerFlag,
        request.protectedFlag,
        L"-priority " + std::to_wstring(request.priority),
        L"-title " + request.title,
        request.extra,
    });
    return std::wstring(builder) + L" -source " + request.source + L" -out " + request.target +
           L' ' + options;
}

std::vector<std::wstring> valuesToBeCut(const BuildRequest& request, const std::wstring& builder) {
    std::vector<std::wstring> values;
    if (!startsByLine()) return values;
    std::ranges::copy_if(std::array{builder, request.source, request.target},
                         std::back_inserter(values),
                         [](const std::wstring& value) { return value.find(L' ') != value.npos; });
    return values;
}

void gExecZeltor(BuildRequest& request, Launcher& launcher) {
    guarded(L"gExecZeltor", [&] {
        request.extra.clear();
        const std::wstring& builder = gProgram().settings.zeltor;
        Launcher::Result result{};
        do {
            result =
                launcher.start(zeltorCommandLine(request, builder), builder, zeltorWords(request));
        } while (result == Launcher::kRefused && replaceZeltor(launcher.errorText()));
        if (result == Launcher::kStillRunning) {
            throw RunTimeError(kLaunchError, L"App is already running!");
        }
    });
}

}  // namespace kestrel
